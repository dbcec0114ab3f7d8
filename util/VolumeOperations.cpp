#include "util/VolumeOperations.h"

#include "util/CFRef.h"
#include "util/ChildProcess.h"
#include "util/DeviceNames.h"
#include "util/Disks.h"
#include "util/Files.h"
#include "util/RegistryProperties.h"
#include "util/Volumes.h"

#include <DiskArbitration/DiskArbitration.h>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

/// Receives DiskArbitration's answer. @param context the number of the process that is to blame, 0 for none.
void DADiskCallBack(DADiskRef /*disk*/, DADissenterRef dissenter, void* context)
{
    const auto reasons = CFDynamicCast<CFDictionaryRef>(dissenter, CFDictionaryGetTypeID());
    CFTypeRef const process
        = reasons != nullptr ? CFDictionaryGetValue(reasons, CFSTR("DAProcessID")) : nullptr;
    *static_cast<uint32_t*>(context) = static_cast<uint32_t>(NumberFrom(process).value_or(0));
    CFRunLoopStop(CFRunLoopGetCurrent());
}

/// Issues a request to DiskArbitration with DADiskCallBack() and this context.
using Request = std::function<void(DADiskRef disk, void* context)>;

/// Has DiskArbitration do something and waits for the answer.
/// @return the process because of which it was refused, 0 for none; nothing where the disk is unknown.
std::optional<uint32_t> Ask(const char* bsdName, const Request& request)
{
    uint32_t process = 0;
    const CFRef<DASessionRef> session(DASessionCreate(kCFAllocatorDefault));
    if (bsdName == nullptr || !session)
        return {};
    const CFRef<DADiskRef> disk(DADiskCreateFromBSDName(kCFAllocatorDefault, session.get(), bsdName));
    const IORef media(disk ? DADiskCopyIOMedia(disk.get()) : 0);
    if (!media)
        return {};
    DASessionScheduleWithRunLoop(session.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
    request(disk.get(), &process);
    CFRunLoopRun();
    DASessionUnscheduleFromRunLoop(session.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
    return process;
}

bool HasVolumePath(const char* bsdName)
{
    std::array<char, 1024> path {};
    return GetVolumePathnameWithBSDName(bsdName, path.data(), path.size());
}

/// Two requests, and the first answer counts: where the second one only asks for options, the first has mounted already.
void Mount(DADiskRef disk, const MountUnmountRec& record, void* context)
{
    const DADiskMountOptions options = record.whole ? kDADiskMountOptionWhole : kDADiskMountOptionDefault;
    DADiskMount(disk, nullptr, kDADiskMountOptionDefault, DADiskCallBack, context);
    CFStringRef arguments[] = { CFSTR("perm"), CFSTR("nobrowse"), nullptr };
    if (record.mountWithArguments)
        DADiskMountWithArguments(disk, nullptr, options, DADiskCallBack, context, arguments);
    else
        DADiskMount(disk, nullptr, options, DADiskCallBack, context);
}

DADiskUnmountOptions UnmountOptions(const MountUnmountRec& record)
{
    return (record.force ? kDADiskUnmountOptionForce : kDADiskUnmountOptionDefault)
        | (record.whole ? kDADiskUnmountOptionWhole : kDADiskUnmountOptionDefault);
}

void Store(uint32_t* destination, uint32_t value)
{
    if (destination != nullptr)
        *destination = value;
}

/// Whether it is a name that may reach a tool, of a disk or partition that there is.
bool IsKnownDisk(const char* name)
{
    const IORef media(IsPlainBSDName(name) ? CreateIOKitObjectWithBSDName(name) : 0);
    return media && IOObjectConformsTo(media.get(), "IOMedia");
}

/// The text of a buffer in a record, whether it ends within or not.
template <size_t Size> std::string Text(const char (&buffer)[Size])
{
    return { buffer, strnlen(buffer, Size) };
}

std::vector<std::string> AddVolumeArguments(const CreateFileSystemRec& record, const std::string& bsdName)
{
    std::vector<std::string> arguments { "diskutil", "apfs", "addvolume", bsdName, "apfs",
        Text(record.volumeName) };
    const std::string passphrase = record.encrypt ? Text(record.passphrase) : "";
    const std::string_view hint = record.passphraseHint != nullptr ? record.passphraseHint : "";
    if (!passphrase.empty())
        arguments.insert(arguments.end(), { "-passphrase", passphrase });
    if (!passphrase.empty() && !hint.empty())
        arguments.insert(arguments.end(), { "-passphraseHint", std::string(hint) });
    return arguments;
}

/// @return without a tool for an unknown type of file system.
ToolCall FileSystemTool(const CreateFileSystemRec& record)
{
    const std::string bsdName = Text(record.bsdName);
    const std::string name = Text(record.volumeName);
    std::array<char, 32> device {};
    std::snprintf(device.data(), device.size(), "/dev/r%s", bsdName.c_str());
    switch (record.fileSystemType) {
    case kHFSPlusFileSystem:
        return { "/sbin/newfs_hfs", { "newfs_hfs", "-J", "-v", name, device.data() } };
    case kAPFSFileSystem:
        return { "/usr/sbin/diskutil", AddVolumeArguments(record, bsdName) };
    case kFAT32FileSystem:
        return { "/sbin/newfs_msdos", { "newfs_msdos", "-F", "32", "-v", name, device.data() } };
    case kExFATFileSystem: // this tool alone gets the bare name
        return { "/sbin/newfs_exfat", { "newfs_exfat", "-v", name, bsdName } };
    default:
        return { nullptr, {} };
    }
}

/// Runs a tool and looks at the first of what it says.
/// @param needle what has to be in there. @return whether it is, and the tool succeeded.
bool SucceedsAndSays(ToolCall call, std::string_view needle)
{
    constexpr size_t pieceSize = 256;
    call.statusWithoutTool = EXIT_FAILURE;
    std::string said;
    const ChildEnd end
        = RunToolReading(call, [&said](int output) { said = ReadPieceAndDiscardRest(output, pieceSize); });
    return end.succeeded() && said.find(needle) != std::string::npos;
}

bool EnableDisableJournaling(const char* target, const char* verb)
{
    return target != nullptr && SucceedsAndSays({ "/usr/sbin/diskutil", { "diskutil", verb, target } }, "");
}

bool RunIndexingTool(const std::vector<std::string>& arguments, std::string_view needle)
{
    constexpr const char* tool = "/usr/bin/mdutil";
    ToolCall call { tool, arguments };
    call.prepare = [] { (void)!setuid(0); }; // the tool itself refuses whoever has no right
    return FileOrDirectoryExists(tool, nullptr, nullptr) && SucceedsAndSays(call, needle);
}

bool EnableDisableIndexing(const char* volumePath, const char* state)
{
    return volumePath != nullptr && RunIndexingTool({ "mdutil", "-i", state, volumePath }, "");
}

}

bool MountVolume(const char* bsdName, bool browsable)
{
    MountUnmountRec record { .bsdName = bsdName,
        .dissenterProcessID = 0,
        .mount = true,
        .mountWithArguments = !browsable,
        .force = false,
        .whole = false };
    return MountUnmountVolumeWithRec(&record);
}

bool UnmountVolume(const char* bsdName, bool force, uint32_t* processID)
{
    MountUnmountRec record { .bsdName = bsdName,
        .dissenterProcessID = 0,
        .mount = false,
        .mountWithArguments = false,
        .force = force,
        .whole = false };
    const bool isDone = MountUnmountVolumeWithRec(&record);
    Store(processID, record.dissenterProcessID);
    return isDone;
}

bool MountUnmountVolumeWithRec(MountUnmountRec* record)
{
    if (record == nullptr)
        return false;
    record->dissenterProcessID = 0;
    const std::optional<uint32_t> process = Ask(record->bsdName, [record](DADiskRef disk, void* context) {
        if (record->mount)
            Mount(disk, *record, context);
        else
            DADiskUnmount(disk, UnmountOptions(*record), DADiskCallBack, context);
    });
    if (!process)
        return false;
    if (*process == 0 || (!record->whole && HasVolumePath(record->bsdName) == record->mount))
        return true;
    if (!record->mount)
        record->dissenterProcessID = *process;
    return false;
}

bool EjectDisk(const char* bsdName, uint32_t* processID)
{
    const std::optional<uint32_t> process = Ask(bsdName, [](DADiskRef disk, void* context) {
        DADiskEject(disk, kDADiskEjectOptionDefault, DADiskCallBack, context);
    });
    const bool isDone = process && (*process == 0 || !HasVolumePath(bsdName));
    Store(processID, isDone ? 0 : process.value_or(0));
    return isDone;
}

bool RenameVolume(const char* bsdName, const char* name)
{
    const CFRef<CFStringRef> newName(
        name != nullptr ? CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, name) : nullptr);
    if (!newName)
        return false;
    return Ask(bsdName, [&newName](DADiskRef disk, void* context) {
        DADiskRename(disk, newName.get(), kDADiskRenameOptionDefault, DADiskCallBack, context);
    }) == 0U;
}

bool CreateFileSystem(const CreateFileSystemRec* record)
{
    if (record == nullptr || !IsKnownDisk(Text(record->bsdName).c_str()))
        return false;
    ToolCall call = FileSystemTool(*record);
    if (call.tool == nullptr)
        return false;
    call.statusWithoutTool = EXIT_FAILURE;
    call.endsWithoutChild = true;
    return RunToolReading(call, ReadAndDiscard).wasForked;
}

bool CreateAPFS_Container(const char* bsdName)
{
    if (!IsKnownDisk(bsdName))
        return false;
    ToolCall call { "/sbin/newfs_apfs", { "newfs_apfs", "-C", bsdName } };
    call.statusWithoutTool.reset();
    call.endsWithoutChild = true;
    const ChildEnd end = RunToolReading(call, ReadAndDiscard);
    return end.isChild || (end.isKnown() && end.status == 0);
}

bool EnableJournaling(const char* target) { return EnableDisableJournaling(target, "enableJournal"); }

bool DisableJournaling(const char* target) { return EnableDisableJournaling(target, "disableJournal"); }

bool EnableIndexing(const char* volumePath) { return EnableDisableIndexing(volumePath, "on"); }

bool DisableIndexing(const char* volumePath) { return EnableDisableIndexing(volumePath, "off"); }

bool ReturnIndexingState(const char* volumePath)
{
    return volumePath != nullptr && RunIndexingTool({ "mdutil", "-s", volumePath }, "Enabled");
}
