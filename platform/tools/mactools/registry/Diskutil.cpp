#include "registry/Diskutil.h"

#include "registry/DiskList.h"

#include <IOKit/CurrentRegistry.h>

#include <iostream>

namespace {

constexpr const char* kUsage = "Usage:  diskutil <verb> <options>, where <verb> is as follows:\n\n"
                               "     list                 (List the partitions of a disk)\n\n"
                               "diskutil <verb> with no options will provide help on that verb\n";
constexpr const char* kListUsage = "Usage:  diskutil list [-plist] [DiskIdentifier|DeviceNode]\n";

int List(const Arguments& options)
{
    const bool isPropertyList = !options.empty() && options.front() == "-plist";
    const Arguments names(options.begin() + (isPropertyList ? 1 : 0), options.end());
    if (names.size() > 1 || (!names.empty() && names.front().starts_with('-'))) {
        std::cerr << kListUsage;
        return 1;
    }
    std::vector<ListedDisk> disks = DisksOf(iokit::CurrentRegistry());
    if (!names.empty()) {
        disks = DisksNamed(disks, names.front());
        if (disks.empty()) {
            std::cerr << "Could not find disk: " << names.front() << '\n';
            return 1;
        }
    }
    if (isPropertyList)
        return WritePropertyList("diskutil", DisksAsPropertyList(disks).get(), std::cout);
    PrintDisks(std::cout, disks);
    return 0;
}

}

int Diskutil(const Arguments& arguments)
{
    if (arguments.empty() || arguments.front() == "--help") {
        std::cerr << kUsage;
        return arguments.empty() ? 1 : 0;
    }
    if (arguments.front() == "list")
        return List({ arguments.begin() + 1, arguments.end() });
    return Complain(
        "diskutil", "did not recognize verb \"" + arguments.front() + "\"; type \"diskutil\" for a list");
}
