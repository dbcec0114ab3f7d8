#include <IOKit/Nvram.h>

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>
#include <Host/HostPath.h>
#include <IOKit/NvramFile.h>
#include <IOKit/NvramFirmware.h>

#include <algorithm>
#include <cerrno>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace iokit {

namespace {

constexpr size_t kLongestName = 64;

bool IsPrintable(char c) { return c >= ' ' && c <= '~'; }

cf::Owned<CFTypeRef> PropertyOf(const std::string& value)
{
    if (std::all_of(value.begin(), value.end(), IsPrintable))
        return cf::Owned<CFTypeRef>(cf::MakeString(value));
    const auto* const bytes = reinterpret_cast<const UInt8*>(value.data());
    return cf::Owned<CFTypeRef>(CFDataCreate(nullptr, bytes, static_cast<CFIndex>(value.size())));
}

}

int Nvram::set(const std::string& name, const std::string& value)
{
    return IsNvramName(name) && value.size() <= kLongestValue ? change(name, value) : EINVAL;
}

int Nvram::remove(const std::string& name) { return IsNvramName(name) ? change(name, {}) : ENOENT; }

bool IsNvramName(std::string_view name)
{
    return !name.empty() && name.size() <= kLongestName && std::all_of(name.begin(), name.end(), [](char c) {
        return IsPrintable(c) && std::string_view(" /=").find(c) == std::string_view::npos;
    });
}

cf::Owned<CFDictionaryRef> NvramProperties(const NvramVariables& variables)
{
    const CFMutableDictionaryRef properties = CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    for (const auto& [name, value] : variables) {
        const cf::Owned<CFStringRef> key { cf::MakeString(name) };
        CFDictionarySetValue(properties, key.get(), PropertyOf(value).get());
    }
    return cf::Owned<CFDictionaryRef>(properties);
}

bool IsNvramFirmwares(const HostTree& host)
{
    // The folder is there without them as well, until they are mounted.
    struct statfs files { };
    return HostStartupVolumeIsSystems() && statfs(host.path(EfiVariables::kFolder).c_str(), &files) == 0
        && files.f_type == EFIVARFS_MAGIC;
}

std::unique_ptr<Nvram> StartupVolumesNvram(const HostTree& host)
{
    if (IsNvramFirmwares(host))
        return std::make_unique<NvramFirmware>(host);
    return std::make_unique<NvramFile>(HostStartupVolume() + "/private/var/db/nvram.plist");
}

}
