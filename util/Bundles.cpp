#include "util/Bundles.h"

#include "util/CFRef.h"
#include "util/CFText.h"
#include "util/Files.h"
#include "util/PropertyLists.h"

#include <Host/HostPath.h>
#include <cstring>
#include <string>

namespace {

CFRef<CFBundleRef> OpenBundle(const char* path)
{
    const CFRef<CFURLRef> url = path != nullptr ? FileURL(HostPath(path), true) : CFRef<CFURLRef>();
    return CFRef(url ? CFBundleCreate(kCFAllocatorDefault, url.get()) : nullptr);
}

}

bool CreateExecutablePathnameFromBundlePathname(const char* bundlePath, char* buffer, size_t capacity)
{
    const CFRef<CFBundleRef> bundle = OpenBundle(bundlePath);
    const CFRef<CFURLRef> program(bundle ? CFBundleCopyExecutableURL(bundle.get()) : nullptr);
    return program && buffer != nullptr && capacity > 0
        && CFURLGetFileSystemRepresentation(
            program.get(), true, reinterpret_cast<UInt8*>(buffer), static_cast<CFIndex>(capacity));
}

bool CreateBundleID_FromBundlePathname(const char* bundlePath, char* buffer, size_t capacity)
{
    const CFRef<CFBundleRef> bundle = OpenBundle(bundlePath);
    const CFStringRef identifier = bundle ? CFBundleGetIdentifier(bundle.get()) : nullptr;
    return identifier != nullptr && buffer != nullptr
        && CFStringGetCString(identifier, buffer, static_cast<CFIndex>(capacity), kCFStringEncodingASCII);
}

bool CreateExecutableBundleNameFromPathname(const char* path, char* buffer, size_t capacity)
{
    const char* const name = LastPathComponent(path);
    if (name == path || buffer == nullptr || std::strlen(name) >= capacity)
        return false;
    std::memcpy(buffer, name, std::strlen(name) + 1);
    if (char* const slash = std::strrchr(buffer, '/'); slash != nullptr)
        *slash = 0;
    return true;
}

CFMutableDictionaryRef CreateInfoPListDictionaryForBundle(const char* bundlePath)
{
    if (!FileOrDirectoryExists(bundlePath, nullptr, nullptr))
        return nullptr;
    return CreateCFDictionaryWithContentsOfFile((std::string(bundlePath) + "/Contents/Info.plist").c_str());
}
