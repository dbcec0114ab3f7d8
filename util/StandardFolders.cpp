#include "util/StandardFolders.h"

#include "util/SystemVersions.h"

#include <Host/HostPath.h>
#include <cstring>
#include <string>

namespace {

constexpr size_t kLongestPath = 1024; ///< in bytes, with the zero
constexpr uint32_t kSystem10_9 = 0x10900000;

OSStatus CopyPath(const std::string& path, char* buffer, size_t capacity)
{
    if (buffer == nullptr || path.size() >= kLongestPath || path.size() >= capacity)
        return paramErr;
    std::memcpy(buffer, path.c_str(), path.size() + 1);
    return noErr;
}

/// "" when there is none.
std::string UserLibrary()
{
    const std::string home = HostHomeFolder();
    return home.empty() ? "" : home + "/Library";
}

/// @param subfolder may be null.
std::string ApplicationSupport(const std::string& library, const char* subfolder)
{
    std::string path = library + "/Application Support";
    return subfolder != nullptr ? path + '/' + subfolder : path;
}

}

OSStatus CreateUserLibraryPathname(char* buffer, size_t capacity)
{
    const std::string library = UserLibrary();
    return library.empty() ? paramErr : CopyPath(library, buffer, capacity);
}

OSStatus CreateUserApplicationSupportFolderPathname(const char* subfolder, char* buffer, size_t capacity)
{
    const std::string library = UserLibrary();
    return library.empty() ? paramErr : CopyPath(ApplicationSupport(library, subfolder), buffer, capacity);
}

OSStatus CreateApplicationSupportFolderPathname(const char* subfolder, char* buffer, size_t capacity)
{
    return CopyPath(ApplicationSupport("/Library", subfolder), buffer, capacity);
}

OSStatus CreateApplicationSupportFolderPathnameForVolume(
    const char* volumePath, const char* subfolder, char* buffer, size_t capacity)
{
    std::string volume = volumePath != nullptr ? volumePath : "";
    if (volume.ends_with('/'))
        volume.pop_back();
    const OSStatus status = CopyPath(ApplicationSupport(volume + "/Library", subfolder), buffer, capacity);
    if (status != noErr && buffer != nullptr)
        std::memset(buffer, 0, capacity);
    return status;
}

OSStatus CreateThirdPartyExtensionsPathnameForVolume(const char* volumePath, char** path, bool isTemporary)
{
    if (path == nullptr)
        return paramErr;
    *path = nullptr;
    std::string folder = "/tmp/Extensions";
    if (!isTemporary) {
        const uint32_t version = ReturnSystemVersionOnVolume(volumePath);
        if (version == 0)
            return fnfErr;
        folder = std::strlen(volumePath) >= 2 ? volumePath : ""; // "/" is in the next text
        folder += version < kSystem10_9 ? "/System/Library/Extensions" : "/Library/Extensions";
    }
    *path = strdup(folder.c_str());
    return *path != nullptr ? OSStatus { noErr } : memFullErr;
}
