#include "volume/Journal.h"

#include "HostTool.h"
#include "volume/TargetDevice.h"

#include <Host/HostPath.h>

#include <blkid/blkid.h>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char* kName = "diskutil";

struct Volume {
    std::string type {}; ///< as the host names file systems; "" where it recognises none
    std::string name {};
    bool hasJournal = false; ///< only ext's
};

std::string Probed(blkid_probe probe, const char* key)
{
    const char* value = nullptr;
    return blkid_probe_lookup_value(probe, key, &value, nullptr) == 0 ? CleanLine(value) : "";
}

bool HasJournal(int file)
{
    constexpr off_t features = 1024 + 0x5c; // of the superblock: what others may do without
    constexpr uint8_t journal = 4;
    uint8_t bits = 0;
    return pread(file, &bits, sizeof bits, features) == sizeof bits && (bits & journal) != 0;
}

Volume VolumeOn(int file)
{
    const std::unique_ptr<std::remove_pointer_t<blkid_probe>, decltype(&blkid_free_probe)> probe(
        blkid_new_probe(), blkid_free_probe);
    if (!probe || blkid_probe_set_device(probe.get(), file, 0, 0) != 0
        || blkid_do_safeprobe(probe.get()) != 0)
        return {};
    return { Probed(probe.get(), "TYPE"), Probed(probe.get(), "LABEL"), HasJournal(file) };
}

bool IsFolder(const std::string& path)
{
    struct stat info = {};
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

/// @return the device mounted on a folder; nothing after a complaint.
std::optional<TargetDevice> DeviceMountedOn(const std::string& folder)
{
    const std::optional<HostMount> mount = MountOn(HostPath(folder));
    if (!mount)
        return Complain(kName, folder + ": no volume is mounted there"), std::nullopt;
    TargetDevice device { mount->source, {} };
    const bool isIt = mount->source.starts_with('/') && stat(mount->source.c_str(), &device.info) == 0
        && device.isDevice() && device.info.st_rdev == mount->device;
    if (!isIt)
        return Complain(kName, folder + ": journals of " + mount->type + " volumes cannot be switched here"),
               std::nullopt;
    return device;
}

int Failure(const std::string& target, const std::string& reason)
{
    return Complain(kName, target + ": " + reason);
}

}

int SetJournaling(const std::string& target, bool wanted)
{
    const std::optional<TargetDevice> device = target.starts_with('/') && IsFolder(HostPath(target))
        ? DeviceMountedOn(target)
        : FindTarget(kName, target);
    // What is mounted the host's tool knows, but of images it does not know who else uses them.
    if (!device || (!device->isDevice() && !OpenUnused(kName, target, *device)))
        return 1;
    const Descriptor file(open(device->path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!file)
        return Failure(target, std::strerror(errno));
    const Volume volume = VolumeOn(file.get());
    const std::string type = volume.type.empty() ? "unknown" : volume.type;
    if (type != "ext2" && type != "ext3" && type != "ext4")
        return Failure(target, "journals of " + type + " volumes cannot be switched here");
    const char* const state = wanted ? "enabled" : "disabled";
    const HostTool tool { "tune2fs", "e2fsprogs" };
    const char* const feature = wanted ? "has_journal" : "^has_journal";
    if (volume.hasJournal != wanted
        && RunHostTool(kName, tool, { "-O", feature, device->path }, HostOutput::Hidden) != 0)
        return Failure(target, std::string("journaling could not be ") + state);
    std::cout << "Journaling " << (volume.hasJournal == wanted ? "is already " : "has been ") << state
              << " for volume " << volume.name << (volume.name.empty() ? "on " : " on ") << target << '\n';
    return 0;
}
