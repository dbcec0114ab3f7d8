#include "tools/inspect/Commands.h"
#include "util/BootDevice.h"
#include "util/Volumes.h"

#include <array>
#include <unistd.h>

namespace {

using Buffer = std::array<char, 1024>;

/// The BSD name of the volume that was chosen to start from.
Buffer ChosenVolume()
{
    Buffer name {};
    const pid_t self = getpid();
    const bool isKnown = GetBootVolumeBSD_Name(name.data(), name.size());
    if (getpid() != self)
        _exit(EXIT_SUCCESS); // what was to become the tool, which is not there
    return isKnown ? name : Buffer();
}

void AddChosen(Record& record)
{
    const Buffer name = ChosenVolume();
    Buffer path {};
    Buffer volume {};
    if (GetVolumePathnameWithBSDName(name.data(), path.data(), path.size()))
        ExtractVolumeNameFromPathname(path.data(), volume.data(), volume.size());
    record.push_back({ "chosenName", "Chosen disk", TextOrNone(name.data()) });
    record.push_back({ "chosenVolumePath", "Chosen volume", TextOrNone(path.data()) });
    record.push_back({ "chosenVolumeName", "Chosen volume's name", TextOrNone(volume.data()) });
}

void AddStartupVolume(Record& record)
{
    Buffer name {};
    Buffer volume {};
    GetVolumeBSD_NameWithPathname("/", name.data(), name.size());
    ExtractVolumeNameFromPathname("/", volume.data(), volume.size());
    record.push_back({ "startupName", "Start-up disk", TextOrNone(name.data()) });
    record.push_back({ "startupVolumeName", "Start-up volume's name", TextOrNone(volume.data()) });
}

}

Findings FindBootDevice(const Request& request)
{
    Buffer path {};
    GetBootPath(path.data(), path.size());
    Record record { { "bootPath", "Boot path", TextOrNone(path.data()) } };
    // The rest is not in a registry, and this computer's is not the recorded one's.
    if (!request.capture) {
        AddChosen(record);
        AddStartupVolume(record);
    }
    return { { record } };
}
