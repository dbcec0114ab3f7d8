#include <IOKit/HostRegistry.h>

#include <Host/Computer.h>
#include <IOKit/CurrentRegistry.h>
#include <IOKit/HostDisks.h>
#include <IOKit/Properties.h>

#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace iokit {

namespace {

Entry& AddPlatformExpert(Registry& registry, const HostTree& host)
{
    const std::string model = ComputerModel(host);
    Properties properties;
    properties.textData("manufacturer", Told(host.text("sys/class/dmi/id/sys_vendor")))
        .textData("model", model)
        .textData("product-name", model)
        .text("IOPlatformSerialNumber", ComputerSerialNumber(host))
        .text("IOPlatformUUID", ComputerUUID(host));
    const std::string className = "IOPlatformExpertDevice";
    return registry.add(registry.root(), className, model.empty() ? className : model, "", properties.take());
}

}

Registry ReadHostRegistry(const HostTree& host, uint64_t firstID)
{
    Registry registry(firstID);
    Entry& computer = AddPlatformExpert(registry, host);
    AddHostDisks(registry, computer, host);
    registry.add(computer, "IODTNVRAM", "options", "", nullptr);
    registry.completeDeviceTree();
    return registry;
}

/// The kernel counts the news of its devices; udev writes down what it finds out about them a little later.
std::string HostSource::version()
{
    if (!fNews)
        fNews = Descriptor(
            open(fHost.path("sys/kernel/uevent_seqnum").c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    std::array<char, 24> count {};
    (void)!pread(fNews.get(), count.data(), count.size() - 1, 0);
    struct stat status { };
    stat(fHost.path("run/udev/data").c_str(), &status);
    return std::string(count.data()) + std::to_string(status.st_mtim.tv_sec) + '.'
        + std::to_string(status.st_mtim.tv_nsec);
}

std::shared_ptr<const Registry> HostSource::read()
{
    auto registry = std::make_shared<const Registry>(ReadHostRegistry(fHost, fNextID));
    fNextID += registry->entries().size();
    return registry;
}

}
