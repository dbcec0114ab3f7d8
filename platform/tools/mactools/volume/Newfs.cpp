#include "volume/Newfs.h"

#include "HostTool.h"
#include "volume/TargetDevice.h"

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>
#include <Host/ProgramStart.h>

#include <algorithm>
#include <iostream>
#include <optional>
#include <string_view>
#include <sysexits.h>
#include <unistd.h>

namespace {

struct Maker {
    const char* name;
    const char* usage;
    const char* options; ///< as getopt() takes them; -v is the volume's name in all
    const char* nameOption; ///< of the host's tool
    CFIndex longestName; ///< in UTF-16 units
    bool isFAT;
    HostTool tool;
};

struct Request {
    Arguments options {}; ///< for the host's tool
    std::string name {}; ///< of the volume; "" for none
    std::string device {};
};

bool IsFATSize(const std::string& text) { return text == "12" || text == "16" || text == "32"; }

/// @return whether the request has received what the option says.
bool TakeOption(int letter, const char* value, Request& request)
{
    switch (letter) {
    case 'v':
        request.name = value;
        return true;
    case 'F':
        request.options.insert(request.options.end(), { "-F", value });
        return IsFATSize(value);
    case 'J':
        request.options.emplace_back("-J");
        return true;
    default:
        return letter == 'C';
    }
}

std::optional<Request> ReadRequest(const Maker& maker, Arguments arguments)
{
    arguments.insert(arguments.begin(), maker.name);
    const std::vector<char*> pointers = PointersTo(arguments);
    const int count = static_cast<int>(arguments.size());
    Request request;
    optind = 0;
    opterr = 0; // the usage says it
    for (int letter = 0; (letter = getopt(count, pointers.data(), maker.options)) != -1;) {
        if (!TakeOption(letter, optarg, request))
            return {};
    }
    if (count - optind != 1)
        return {};
    request.device = pointers[static_cast<size_t>(optind)];
    return request;
}

/// FAT has no small letters. What other letters are depends on a code page that nobody notes down.
bool FitsFAT(const std::string& name)
{
    constexpr std::string_view reserved = "\"*+,./:;<=>?[\\]|";
    return !name.starts_with(' ') && std::all_of(name.begin(), name.end(), [&](unsigned char letter) {
        return letter < 0x80 && reserved.find(static_cast<char>(letter)) == std::string_view::npos;
    });
}

bool CanBeNamed(const Maker& maker, const std::string& name)
{
    const cf::Owned<CFStringRef> text(cf::MakeString(name));
    const bool hasControl = std::any_of(
        name.begin(), name.end(), [](unsigned char letter) { return letter < ' ' || letter == 0x7f; });
    return text && CFStringGetLength(text.get()) <= maker.longestName && !hasControl
        && (!maker.isFAT || FitsFAT(name));
}

std::string Capitals(std::string name)
{
    for (char& letter : name) {
        if (letter >= 'a' && letter <= 'z')
            letter = static_cast<char>(letter - 'a' + 'A');
    }
    return name;
}

int Make(const Maker& maker, const Arguments& arguments)
{
    if (AnswersHelp(arguments, maker.usage))
        return 0;
    std::optional<Request> request = ReadRequest(maker, arguments);
    if (!request) {
        std::cerr << maker.usage;
        return EX_USAGE;
    }
    if (!CanBeNamed(maker, request->name))
        return Complain(
            maker.name, "the file system cannot have the name \"" + CleanText(request->name) + '"');
    const std::optional<TargetDevice> target = FindTarget(maker.name, request->device);
    // Closed again: the host's tool wants the device for itself.
    if (!target || !OpenUnused(maker.name, request->device, *target))
        return 1;
    Arguments options = request->options;
    if (!request->name.empty())
        options.insert(
            options.end(), { maker.nameOption, maker.isFAT ? Capitals(request->name) : request->name });
    options.push_back(target->path);
    return RunHostTool(maker.name, maker.tool, options);
}

}

int NewfsApfs(const Arguments& arguments)
{
    constexpr Maker maker { "newfs_apfs",
        "usage: newfs_apfs [-C] [-v volume-name] device\n\n"
        "  -C  make a container; here it always comes with one volume, \"untitled\" unless -v names it\n",
        "+Cv:", "-L", 255, false, { "mkapfs", "apfsprogs" } };
    return Make(maker, arguments);
}

int NewfsExfat(const Arguments& arguments)
{
    constexpr Maker maker { "newfs_exfat", "usage: newfs_exfat [-v volume-name] device\n", "+v:", "-L", 11,
        false, { "mkfs.exfat", "exfatprogs" } };
    return Make(maker, arguments);
}

int NewfsHfs(const Arguments& arguments)
{
    constexpr Maker maker { "newfs_hfs",
        "usage: newfs_hfs [-J] [-v volume-name] device\n\n  -J  with a journal\n", "+Jv:", "-v", 255, false,
        { "mkfs.hfsplus", "hfsprogs, where this system has one" } };
    return Make(maker, arguments);
}

int NewfsMsdos(const Arguments& arguments)
{
    constexpr Maker maker { "newfs_msdos", "usage: newfs_msdos [-F 12 | 16 | 32] [-v volume-name] device\n",
        "+F:v:", "-n", 11, true, { "mkfs.vfat", "dosfstools" } };
    return Make(maker, arguments);
}
