#include "tools/inspect/Commands.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr size_t kAny = SIZE_MAX;

constexpr Command kCommands[] = {
    { "processes", "[--json] [NAME...]",
        "running processes, or those whose short name is one of these;\n"
        "an application also has the name that its user knows it by",
        0, kAny, false, FindProcesses, nullptr },
    { "files", "[--json] [PATH...]",
        "files and folders; of a bundle its program, version and whether its\n"
        "signature holds, of a volume its system and its space.\n"
        "Without a path, the folders that every system has",
        0, kAny, false, FindFiles, nullptr },
    { "disks", "[--registry CAPTURE] [--json] [--watch[=SECONDS]] [BSD-NAME...]",
        "disks and partitions in a table, or all that is known of those with\n"
        "these names. A drive that does not tell what it is is asked by four\n"
        "small reads, if whoever runs this may read it",
        0, kAny, true, FindDisks, WatchDisks },
    { "volumes", "[--registry CAPTURE] [--json] [BSD-NAME|PATH...]",
        "volumes that are mounted or could be in a table, or all that is known\n"
        "of those with these names or mounted at these paths",
        0, kAny, true, FindVolumes, nullptr },
    { "system", "[--registry CAPTURE] [--json]",
        "what the computer is: serial number, model, names, memory, processor,\n"
        "primary network interface, and the start-up volume's system",
        0, 0, true, DescribeComputer, nullptr },
    { "boot", "[--registry CAPTURE] [--json]",
        "what the computer starts from: the firmware's path, the volume that\n"
        "was chosen, and the one that it was started from",
        0, 0, true, FindBootDevice, nullptr },
    { "registry", "[--registry CAPTURE] [--json] [CLASS|BSD-NAME|NAME...]",
        "the tree of the device registry, or the entries that are of these\n"
        "classes or derived ones or have these names, with their properties",
        0, kAny, true, FindRegistryEntries, nullptr },
    { "capture", "[--json] FOLDER",
        "what ioreg, kextstat, diskutil, pmset and system_profiler say, in files\n"
        "of a new folder, or in the place of an earlier capture's. The profile\n"
        "can take minutes",
        1, 1, false, CaptureComputer, nullptr },
};

}

const Command* CommandNamed(const std::string& name)
{
    const auto* const command = std::find_if(
        std::begin(kCommands), std::end(kCommands), [&name](const Command& one) { return one.name == name; });
    return command != std::end(kCommands) ? command : nullptr;
}

std::string UsageText()
{
    std::string text;
    for (const Command& command : kCommands)
        text += std::string(text.empty() ? "usage: " : "       ") + "velmora-inspect " + command.name + ' '
            + command.usage + '\n';
    for (const Command& command : kCommands) {
        std::string help = command.help;
        for (size_t end = help.find('\n'); end != std::string::npos; end = help.find('\n', end + 1))
            help.insert(end + 1, 12, ' ');
        text += '\n' + std::string(command.name) + std::string(12 - std::string(command.name).size(), ' ')
            + help;
    }
    return text
        + "\n\n--json      a JSON array instead of a text for people\n"
          "--registry  looks at a recorded device registry, as \"ioreg -l\" or \"ioreg -a\" printed it on\n"
          "            another computer, in the place of this one's; or a folder that was captured there\n"
          "--watch     shows what disks do from reading to reading, every second or every SECONDS,\n"
          "            until interrupted; each reading is a table, or a line with a JSON array\n"
          "\nThe exit status is 0; 1 when something that was named is not there; 2 for a command line\n"
          "that is not understood.\n";
}
