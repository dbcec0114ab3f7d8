#include "tools/driverinstall/BundleCheck.h"

#include "tools/driverinstall/FileDescriptor.h"
#include "util/CFText.h"
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

namespace {

constexpr size_t largestInfoPList = size_t { 1 } << 20;

Outcome Wrong(const std::string& text) { return { ExitCode::checkFailed, text }; }

/// @param contents "Contents/", or "" for a bundle without that folder.
Outcome ReadInfoPList(int bundle, const std::string& contents, std::vector<UInt8>& bytes)
{
    const FileDescriptor file(
        openat(bundle, (contents + "Info.plist").c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info { };
    if (!file || fstat(file.get(), &info) != 0)
        return Failure(errno == ENOENT ? ExitCode::checkFailed : ExitCode::diskError,
            "cannot open the bundle's Info.plist", errno);
    if (!S_ISREG(info.st_mode) || static_cast<size_t>(info.st_size) > largestInfoPList)
        return Wrong("Info.plist is not a plain file of at most 1 MiB");
    bytes.resize(static_cast<size_t>(info.st_size));
    size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t size = read(file.get(), bytes.data() + filled, bytes.size() - filled);
        if (size < 0)
            return Failure(ExitCode::diskError, "cannot read Info.plist", errno);
        if (size == 0)
            break;
        filled += static_cast<size_t>(size);
    }
    bytes.resize(filled);
    return {};
}

std::string TextValue(CFDictionaryRef dictionary, CFStringRef key)
{
    const void* value = CFDictionaryGetValue(dictionary, key);
    return StdString(CFDynamicCast<CFStringRef>(value, CFStringGetTypeID()));
}

Outcome CheckExecutable(int bundle, const std::string& folder, CFDictionaryRef info)
{
    const CFStringRef key = CFSTR("CFBundleExecutable");
    if (!CFDictionaryContainsKey(info, key))
        return {};
    const std::string name = TextValue(info, key);
    const bool isBare = !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos
        && name.find('\0') == std::string::npos;
    if (!isBare)
        return Wrong("CFBundleExecutable is not a file name");
    struct stat found { };
    if (fstatat(bundle, (folder + name).c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(found.st_mode))
        return Wrong("the executable that CFBundleExecutable names is missing: " + folder + name);
    return {};
}

}

Outcome CheckBundle(int bundle, std::string& version)
{
    struct stat contents { };
    const bool hasContents
        = fstatat(bundle, "Contents", &contents, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(contents.st_mode);
    std::vector<UInt8> bytes;
    Outcome outcome = ReadInfoPList(bundle, hasContents ? "Contents/" : "", bytes);
    if (!outcome.ok())
        return outcome;

    const CFRef<CFDataRef> data(
        CFDataCreate(kCFAllocatorDefault, bytes.data(), static_cast<CFIndex>(bytes.size())));
    const CFRef<CFPropertyListRef> parsed(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
    const auto* const info = CFDynamicCast<CFDictionaryRef>(parsed.get(), CFDictionaryGetTypeID());
    if (info == nullptr)
        return Wrong("Info.plist is not a property list with a dictionary");
    version = TextValue(info, CFSTR("CFBundleVersion"));
    if (version.empty() || TextValue(info, CFSTR("CFBundleIdentifier")).empty())
        return Wrong("Info.plist lacks CFBundleIdentifier or CFBundleVersion");
    const CFStringRef packageType = CFSTR("CFBundlePackageType");
    if (CFDictionaryContainsKey(info, packageType) && TextValue(info, packageType) != "KEXT")
        return Wrong("CFBundlePackageType is not KEXT");
    return CheckExecutable(bundle, hasContents ? "Contents/MacOS/" : "", info);
}
