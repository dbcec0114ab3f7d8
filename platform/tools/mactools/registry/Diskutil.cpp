#include "registry/Diskutil.h"

#include "registry/DiskList.h"
#include "volume/Journal.h"

#include <IOKit/CurrentRegistry.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <strings.h>

namespace {

constexpr const char* kUsage
    = "Usage:  diskutil <verb> <options>, where <verb> is as follows:\n\n"
      "     list                 (List the partitions of a disk)\n"
      "     enableJournal        (Enable the journal of an ext volume)\n"
      "     disableJournal       (Disable the journal of an ext volume)\n"
      "     apfs                 (Refused here: add a volume to an APFS container)\n\n"
      "diskutil <verb> with no options will provide help on that verb\n";
constexpr const char* kJournalUsage
    = "Usage:  diskutil enableJournal|disableJournal MountPoint|DiskIdentifier|DeviceNode\n";
constexpr const char* kAddVolumeUsage
    = "Usage:  diskutil apfs addVolume DiskIdentifier|DeviceNode APFS name\n"
      "        [-passphrase passphrase [-passphraseHint hint]]\n";
constexpr const char* kListUsage = "Usage:  diskutil list [-plist] [DiskIdentifier|DeviceNode]\n";

/// In verbs capitals do not count.
bool IsSame(const std::string& verb, const char* name) { return strcasecmp(verb.c_str(), name) == 0; }

int MissingDisk(const std::string& name)
{
    std::cerr << "Could not find disk: " << name << '\n';
    return 1;
}

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
        if (disks.empty())
            return MissingDisk(names.front());
    }
    if (isPropertyList)
        return WritePropertyList("diskutil", DisksAsPropertyList(disks).get(), std::cout);
    PrintDisks(std::cout, disks);
    return 0;
}

int EnableOrDisableJournal(const Arguments& options, bool wanted)
{
    if (options.size() == 1)
        return SetJournaling(options.front(), wanted);
    std::cerr << kJournalUsage;
    return 1;
}

int EnableJournal(const Arguments& options) { return EnableOrDisableJournal(options, true); }
int DisableJournal(const Arguments& options) { return EnableOrDisableJournal(options, false); }

/// Of the options after the name nothing is shown: one is a passphrase.
int Apfs(const Arguments& options)
{
    if (options.size() < 4 || !IsSame(options[0], "addVolume") || !IsSame(options[2], "APFS")) {
        std::cerr << kAddVolumeUsage;
        return 1;
    }
    if (DisksNamed(DisksOf(iokit::CurrentRegistry()), options[1]).empty())
        return MissingDisk(options[1]);
    return Complain("diskutil", "nothing on this host can add a volume to an APFS container");
}

constexpr auto kVerbs = std::to_array<Tool>({
    { "apfs", Apfs },
    { "disableJournal", DisableJournal },
    { "enableJournal", EnableJournal },
    { "list", List },
});

}

int Diskutil(const Arguments& arguments)
{
    if (arguments.empty() || arguments.front() == "--help") {
        std::cerr << kUsage;
        return arguments.empty() ? 1 : 0;
    }
    const auto* const verb = std::find_if(kVerbs.begin(), kVerbs.end(),
        [&arguments](const Tool& one) { return IsSame(arguments.front(), one.name); });
    if (verb != kVerbs.end())
        return verb->run({ arguments.begin() + 1, arguments.end() });
    return Complain(
        "diskutil", "did not recognize verb \"" + arguments.front() + "\"; type \"diskutil\" for a list");
}
