// Says whether a file, in the place of a disk that does not tell what it is, is read as fast as a solid-state drive. usage: read_test_probe FILE SIZE

#include "util/Disks.h"
#include "util/MediaTypes.h"
#include "util/RegistryEntries.h"

#include <IOKit/CurrentRegistry.h>
#include <IOKit/Properties.h>
#include <cstdlib>
#include <iostream>

int main(int count, char** values)
{
    if (count != 3)
        return 2;
    iokit::Registry registry;
    iokit::Properties media;
    media.text("BSD Name", "disk7").number("Size", std::strtoull(values[2], nullptr, 10));
    registry.add(registry.root(), "IOMedia", "Disk", "", media.take());
    registry.setDeviceFile("disk7", values[1]);
    iokit::UseSource(std::make_unique<iokit::FixedSource>(std::move(registry)));
    const io_service_t disk = CreateIOKitObjectWithBSDName("disk7");
    std::cout << (TestForSSD_Media(disk, nullptr) ? "fast" : "no") << '\n';
    SafeIOObjectRelease(disk);
    return 0;
}
