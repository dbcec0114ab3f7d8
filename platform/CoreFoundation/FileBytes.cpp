#include "CoreFoundation/FileBytes.h"

#include <CoreFoundation/CFPropertyList.h>

#include "Host/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int CheckRegular(int descriptor, size_t& size)
{
    struct stat info { };
    if (fstat(descriptor, &info) != 0)
        return errno;
    if (!S_ISREG(info.st_mode))
        return S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
    size = static_cast<size_t>(std::min<int64_t>(info.st_size, kFileSizeLimit));
    return info.st_size > kFileSizeLimit ? EFBIG : 0;
}

} // namespace

int ReadFileBytes(const std::string& path, std::vector<uint8_t>& bytes)
{
    // Opening a pipe would wait for its writer, were it not for O_NONBLOCK.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file)
        return errno;
    size_t size = 0;
    if (const int error = CheckRegular(file.get(), size))
        return error;
    bytes.resize(size + 1); // one more shows the end without growing
    size_t used = 0;
    for (;;) {
        const ssize_t count = read(file.get(), bytes.data() + used, bytes.size() - used);
        if (count < 0 && errno != EINTR)
            return errno;
        if (count == 0)
            break;
        used += static_cast<size_t>(std::max<ssize_t>(count, 0));
        if (used > static_cast<size_t>(kFileSizeLimit))
            return EFBIG;
        if (used == bytes.size())
            bytes.resize(used * 2);
    }
    bytes.resize(used);
    return 0;
}

int ReadDictionaryFile(const std::string& path, cf::Owned<CFDictionaryRef>& dictionary)
{
    dictionary.reset();
    std::vector<uint8_t> bytes;
    if (const int error = ReadFileBytes(path, bytes))
        return error;
    const cf::Owned<CFDataRef> data(CFDataCreateWithBytesNoCopy(
        kCFAllocatorDefault, bytes.data(), static_cast<CFIndex>(bytes.size()), kCFAllocatorNull));
    cf::Owned<CFPropertyListRef> plist(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
    if (plist && CFGetTypeID(plist.get()) == CFDictionaryGetTypeID())
        dictionary.reset(static_cast<CFDictionaryRef>(plist.release()));
    return 0;
}
