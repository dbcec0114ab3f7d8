#include "boot/Bless.h"

#include "boot/Nvram.h"
#include "boot/StartEntries.h"
#include "boot/StartupDisk.h"

#include <DiskArbitration/Disk.h>
#include <Host/HostPath.h>
#include <IOKit/Properties.h>
#include <sys/mount.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <sys/stat.h>

namespace {

constexpr const char* kName = "bless";
constexpr const char* kUsage = R"(usage: bless --info --getBoot [--plist]
       bless --device device --setBoot
       bless --folder folder --setBoot

  --info --getBoot   tell the disk that the computer starts from
  --plist            as a property list
  --setBoot          let it start from another one:
  --device device    a disk or partition, "/dev/disk0s2"
  --folder folder    the one with a folder to start from, "/System/Library/CoreServices"
)";

struct Request {
    bool info = false;
    bool getBoot = false;
    bool plist = false;
    bool setBoot = false;
    std::string device {};
    std::string folder {};

    bool asks() const { return info && getBoot && !setBoot && device.empty() && folder.empty(); }
    bool sets() const { return setBoot && !info && !getBoot && !plist && device.empty() != folder.empty(); }
};

struct Flag {
    const char* name;
    bool Request::*value;
};
constexpr std::array kFlags {
    Flag { "info", &Request::info },
    Flag { "getBoot", &Request::getBoot },
    Flag { "plist", &Request::plist },
    Flag { "setBoot", &Request::setBoot },
};

std::optional<Request> ReadRequest(const Arguments& arguments)
{
    Request request;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (!argument->starts_with('-'))
            return {};
        const std::string name = argument->substr(argument->starts_with("--") ? 2 : 1);
        const auto* const flag = std::find_if(
            kFlags.begin(), kFlags.end(), [&name](const Flag& one) { return one.name == name; });
        if (flag != kFlags.end())
            request.*flag->value = true;
        else if ((name != "device" && name != "folder") || ++argument == arguments.end())
            return {};
        else
            (name == "device" ? request.device : request.folder) = *argument;
    }
    return request.asks() || request.sets() ? std::optional(request) : std::nullopt;
}

/// What is to be started: a medium, and there perhaps a folder, by its path on the volume.
struct Choice {
    iokit::Held media;
    std::string folder {};
};

std::optional<Choice> ChoiceOfDevice(const std::string& device)
{
    const std::string folder = "/dev/";
    Choice choice { device.starts_with(folder) ? da::MediaNamed(device.substr(folder.size()))
                                               : iokit::Held() };
    if (choice.media)
        return choice;
    Complain(kName, device + ": there is no such disk");
    return {};
}

std::optional<Choice> ChoiceOfFolder(const std::string& folder)
{
    const auto refuse = [&folder](const std::string& why) -> std::optional<Choice> {
        Complain(kName, folder + ": " + why);
        return {};
    };
    const std::unique_ptr<char, decltype(&free)> real(realpath(HostPath(folder).c_str(), nullptr), free);
    struct stat info = {};
    struct statfs mount = {};
    if (!real || stat(real.get(), &info) != 0 || statfs(real.get(), &mount) != 0)
        return refuse(std::strerror(errno));
    if (!S_ISDIR(info.st_mode))
        return refuse(std::strerror(ENOTDIR));
    const iokit::Held media = MediaWith(real.get());
    if (!media)
        return refuse("it lies on no disk that is known");
    const std::string top = static_cast<const char*>(mount.f_mntonname);
    return Choice { media, std::string(real.get()).substr(top == "/" ? 0 : top.size()) };
}

int SetBoot(const BlessPlace& place, const Request& request)
{
    const std::optional<Choice> choice
        = request.folder.empty() ? ChoiceOfDevice(request.device) : ChoiceOfFolder(request.folder);
    if (!choice)
        return 1;
    const std::optional<std::string> text = StartupDiskText(*choice->media.entry, choice->folder);
    if (!text)
        return Complain(kName, request.folder + ": such a name cannot be kept");
    int error
        = place.firmware != nullptr ? StartFrom(*place.firmware, StartPartitions(*choice->media.entry)) : 0;
    if (error == ENOENT)
        return Complain(kName, "the firmware has no entry to start from /dev/" + choice->media->bsdName());
    if (error != 0)
        return Complain(kName, "the firmware's order cannot be changed: " + NvramErrorText(error));
    error = place.nvram.set(kStartupDiskVariable, *text);
    return error == 0 ? 0 : Complain(kName, "the choice cannot be kept: " + NvramErrorText(error));
}

/// What is remembered counts only as long as the firmware does that.
bool Counts(const BlessPlace& place, const iokit::Held& media)
{
    return place.firmware == nullptr || StartsFrom(*place.firmware, StartPartitions(*media.entry));
}

int GetBoot(const BlessPlace& place, bool isPropertyList, std::ostream& out)
{
    iokit::NvramVariables variables;
    if (const int error = place.nvram.read(variables))
        return Complain(kName, "the choice cannot be read: " + NvramErrorText(error));
    iokit::Held media;
    if (const auto remembered = variables.find(kStartupDiskVariable); remembered != variables.end()) {
        const std::optional<iokit::Held> chosen = StartupDiskIn(remembered->second);
        if (!chosen)
            return Complain(kName, std::string(kStartupDiskVariable) + " tells of no disk");
        if (!*chosen)
            return Complain(kName, "the disk that was chosen is not there");
        if (Counts(place, *chosen))
            media = *chosen;
    }
    if (!media)
        media = MediaWith(HostPath("/"));
    if (!media)
        return Complain(kName, "no disk was chosen, and the start-up volume lies on none that is known");
    const std::string device = "/dev/" + media->bsdName();
    if (isPropertyList)
        return WritePropertyList(kName, iokit::Properties().text("Boot Volume", device).take().get(), out);
    out << device << '\n';
    return 0;
}

}

int Bless(const Arguments& arguments)
{
    const HostTree host;
    const iokit::EfiVariables firmware(host, iokit::EfiVariables::kGlobal);
    const std::unique_ptr<iokit::Nvram> nvram = iokit::StartupVolumesNvram(host);
    return BlessAt({ *nvram, iokit::IsNvramFirmwares(host) ? &firmware : nullptr }, arguments, std::cout);
}

int BlessAt(const BlessPlace& place, const Arguments& arguments, std::ostream& out)
{
    if (AnswersHelp(arguments, kUsage))
        return 0;
    const std::optional<Request> request = ReadRequest(arguments);
    if (!request) {
        std::cerr << kUsage;
        return 1;
    }
    return request->setBoot ? SetBoot(place, *request) : GetBoot(place, request->plist, out);
}
