#include "util/Files.h"

#include "util/ChildProcess.h"
#include "util/Processes.h"
#include "util/SystemVersions.h"

#include <Host/HostPath.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

/// As whole version numbers compare.
constexpr uint32_t kSystem10_4_8 = 0x10480000;
constexpr uint32_t kLastSystem10_4 = 0x104fffff;
constexpr uint32_t kSystem10_5 = 0x10500000;

bool DidNotFail(const ChildEnd& end) { return end.wasForked && !end.failedByItself(); }

bool Look(const char* path, struct stat& info)
{
    return path != nullptr && stat(HostPath(path).c_str(), &info) == 0;
}

}

bool CopyFileOrDirectory(const char* source, const char* destination)
{
    if (source == nullptr || destination == nullptr)
        return false;
    return DidNotFail(RunTool({ "/bin/cp", { "cp", "-rf", HostPath(source), HostPath(destination) } }));
}

bool MoveFileOrDirectory(const char* source, const char* destination)
{
    if (source == nullptr || destination == nullptr)
        return false;
    return DidNotFail(RunTool({ "/bin/mv", { "mv", "-f", HostPath(source), HostPath(destination) } }));
}

bool TouchFileOrDirectory(const char* path)
{
    return path != nullptr && DidNotFail(RunTool({ "/usr/bin/touch", { "touch", HostPath(path) } }));
}

bool RemoveFileOrDirectory(const char* path)
{
    if (path == nullptr)
        return false;
    if (!FileOrDirectoryExists(path, nullptr, nullptr))
        return true;
    ToolCall call { "/bin/rm", { "rm", "-rf", HostPath(path) } };
    call.statusWithoutTool.reset();
    const ChildEnd end = RunTool(call);
    return !end.isChild && end.succeeded();
}

bool CreateSymbolicLink(const char* target, const char* linkPath)
{
    if (target == nullptr || linkPath == nullptr)
        return false;
    const ToolCall call { "/bin/ln", { "ln", "-s", HostPath(target), HostPath(linkPath) } };
    const auto readOnce = [](int output) { ReadPiece(output, 256); };
    return RunToolReading(call, readOnce).succeeded();
}

int SetOwnershipAndPermissions(const char* volumePath, bool enable)
{
    if (volumePath == nullptr)
        return -1;
    ToolCall call { "/usr/sbin/vsdbutil", { "vsdbutil", enable ? "-a" : "-d", volumePath } };
    call.prepare = [] { (void)!setuid(0); }; // the tool itself refuses whoever has no right
    return RunTool(call).process;
}

bool UpdateAppleBootPartitionsMKextCacheForVolume(const char* volumePath)
{
    const uint32_t volumes = ReturnSystemVersionOnVolume(volumePath);
    const uint32_t running = ReturnSystemVersionOnVolume("/");
    if (volumes < kSystem10_4_8 || running < kSystem10_4_8)
        return true;
    ToolCall call { "/usr/sbin/kextcache", { "kextcache", "-f", "-u", volumePath } };
    call.prepare = [] { DisableStdIO(); };
    const ChildEnd end = RunTool(call);
    return end.wasForked && (end.succeeded() || (volumes > kLastSystem10_4 && running < kSystem10_5));
}

bool FileOrDirectoryExists(const char* path, uint64_t* size, bool* isFolder)
{
    struct stat info = {};
    const bool exists = Look(path, info);
    const bool folder = exists && S_ISDIR(info.st_mode);
    if (size != nullptr)
        *size = exists && !folder ? static_cast<uint64_t>(info.st_size) : 0;
    if (isFolder != nullptr)
        *isFolder = folder;
    return exists;
}

bool FileIsOwnedByRoot(const char* path)
{
    struct stat info = {};
    return Look(path, info) && info.st_uid == 0 && !S_ISDIR(info.st_mode);
}

bool RestoreFileOrDirectoryOwnership(const char* path)
{
    struct stat info = {};
    if (!Look(path, info))
        return false;
    return chown(HostPath(path).c_str(), getuid(), info.st_gid) == 0 || errno == ENOTSUP;
}

int MakeFileOrDirectoryInisible(const char* path, bool invisible)
{
    // The Finder keeps the flags in big-endian order; this function has always written them in the processor's, and reading
    // what it wrote depends on that.
    constexpr size_t flagsAt = 8;
    const auto flags = static_cast<uint16_t>((invisible ? 1 : 0) << 14);
    std::array<uint8_t, 16> record {};
    record[flagsAt] = static_cast<uint8_t>(flags);
    record[flagsAt + 1] = static_cast<uint8_t>(flags >> 8);
    if (path != nullptr)
        setxattr(
            HostPath(path).c_str(), "com.apple.FinderInfo", record.data(), record.size(), 0, XATTR_NOFOLLOW);
    return 0;
}

const char* LastPathComponent(const char* path)
{
    const size_t length = path != nullptr ? std::strlen(path) : 0;
    if (length < 2)
        return path;
    const char* component = path + length - 1;
    while (component > path && component[-1] != '/')
        --component;
    return component;
}

const char* FileExtension(const char* path)
{
    const char* const point = path != nullptr ? std::strrchr(path, '.') : nullptr;
    return point != nullptr ? point + 1 : path;
}
