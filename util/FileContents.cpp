#include "util/FileContents.h"

#include "util/CFRef.h"
#include "util/Files.h"

#include <Host/HostPath.h>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t kMode = 0644;
constexpr uint64_t kLongestFile = 1073741824;
constexpr uint64_t kLongestMerge = 4096;

struct Free {
    void operator()(void* block) const { free(block); }
};
using Block = std::unique_ptr<void, Free>;

/// Reads in one call: a file that became shorter is an error, not a shorter buffer.
OSStatus ReadInOneCall(const char* path, void* bytes, size_t size)
{
    const int file
        = open(HostPath(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); // no wait for a pipe's writer
    if (file < 0)
        return permErr;
    const ssize_t count = read(file, bytes, size);
    close(file);
    return count == static_cast<ssize_t>(size) ? OSStatus { noErr } : ioErr;
}

/// @param flags O_RDWR or O_WRONLY | O_TRUNC.
OSStatus WriteInOneCall(const char* path, int flags, mode_t mode, const void* bytes, size_t size)
{
    const int file = open(HostPath(path).c_str(), flags | O_CREAT | O_NONBLOCK | O_CLOEXEC, mode);
    if (file < 0)
        return permErr;
    const ssize_t count = write(file, bytes, size);
    close(file);
    return count == static_cast<ssize_t>(size) ? OSStatus { noErr } : ioErr;
}

/// @param path null for none, which has 0 bytes.
bool FindSize(const char* path, uint64_t& size)
{
    size = 0;
    return path == nullptr || FileOrDirectoryExists(path, &size, nullptr);
}

}

OSStatus CreateBufferFromContentsOfFile(const char* path, void** buffer, uint32_t* length)
{
    if (buffer == nullptr || length == nullptr)
        return paramErr;
    *buffer = nullptr;
    *length = 0;
    uint64_t size = 0;
    if (!FileOrDirectoryExists(path, &size, nullptr) || size == 0 || size > kLongestFile)
        return fnfErr;
    Block block(malloc(size));
    if (!block)
        return memFullErr;
    if (const OSStatus status = ReadInOneCall(path, block.get(), size); status != noErr)
        return status;
    *buffer = block.release();
    *length = static_cast<uint32_t>(size);
    return noErr;
}

OSStatus CreateFileFromContentsOfBuffer(const void* buffer, uint32_t length, const char* path)
{
    if (path == nullptr || (buffer == nullptr && length > 0))
        return paramErr;
    RemoveFileOrDirectory(path);
    if (FileOrDirectoryExists(path, nullptr, nullptr))
        return permErr;
    return WriteInOneCall(path, O_RDWR, kMode, buffer, length);
}

CFDataRef CreateCFDataFromContentsOfFile(const char* path, uint32_t maximumLength, bool keepStart)
{
    void* bytes = nullptr;
    uint32_t length = 0;
    if (CreateBufferFromContentsOfFile(path, &bytes, &length) != noErr)
        return nullptr;
    const Block block(bytes);
    const uint32_t kept = maximumLength != 0 ? std::min(maximumLength, length) : length;
    const UInt8* const start = static_cast<UInt8*>(bytes) + (keepStart ? 0 : length - kept);
    return CFDataCreate(kCFAllocatorDefault, start, static_cast<CFIndex>(kept));
}

bool SetContentsOfFileToCFData(const char* path, CFDataRef data)
{
    const CFIndex length = data != nullptr ? CFDataGetLength(data) : 0;
    if (length == 0 || length > std::numeric_limits<uint32_t>::max())
        return false;
    CreateFileFromContentsOfBuffer(CFDataGetBytePtr(data), static_cast<uint32_t>(length), path);
    return true;
}

bool MergeFiles(const char* first, const char* text, const char* second, const char* output, mode_t mode)
{
    const size_t textSize = text != nullptr ? std::strlen(text) : 0;
    uint64_t firstSize = 0;
    uint64_t secondSize = 0;
    if (output == nullptr || !FindSize(first, firstSize) || !FindSize(second, secondSize))
        return false;
    if (firstSize > kLongestMerge || secondSize > kLongestMerge
        || firstSize + textSize + secondSize > kLongestMerge)
        return false;
    std::string all(firstSize + textSize + secondSize, '\0');
    if (first != nullptr && ReadInOneCall(first, all.data(), firstSize) != noErr)
        return false;
    all.replace(firstSize, textSize, text != nullptr ? text : "");
    if (second != nullptr && ReadInOneCall(second, all.data() + firstSize + textSize, secondSize) != noErr)
        return false;
    return WriteInOneCall(output, O_WRONLY | O_TRUNC, mode != 0 ? mode : kMode, all.data(), all.size())
        == noErr;
}
