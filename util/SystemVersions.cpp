#include "util/SystemVersions.h"

#include "settings/NumVersion.h"
#include "util/CFRef.h"
#include "util/Files.h"
#include "util/PropertyLists.h"

#include <array>
#include <string>

namespace {

constexpr const char* kFiles[] = { "System/Library/CoreServices/SystemVersion.plist",
    "System/Library/CoreServices/ServerVersion.plist" };

CFRef<CFMutableDictionaryRef> SystemFacts(std::string volume)
{
    if (volume.back() != '/')
        volume += '/';
    for (const char* file : kFiles) {
        const std::string path = volume + file;
        if (FileOrDirectoryExists(path.c_str(), nullptr, nullptr))
            return CFRef(CreateCFDictionaryWithContentsOfFile(path.c_str()));
    }
    return {};
}

void CopyText(CFDictionaryRef facts, CFStringRef key, char* buffer, size_t capacity)
{
    const auto text = CFDynamicCast<CFStringRef>(CFDictionaryGetValue(facts, key), CFStringGetTypeID());
    if (text != nullptr && buffer != nullptr)
        CFStringGetCString(text, buffer, static_cast<CFIndex>(capacity), kCFStringEncodingASCII);
}

}

void SystemVersionAndBuildNumber(
    const char* volumePath, char* version, size_t versionCapacity, char* build, size_t buildCapacity)
{
    if (volumePath == nullptr || *volumePath == 0)
        return;
    const CFRef<CFMutableDictionaryRef> facts = SystemFacts(volumePath);
    if (!facts)
        return;
    CopyText(facts.get(), CFSTR("ProductVersion"), version, versionCapacity);
    CopyText(facts.get(), CFSTR("ProductBuildVersion"), build, buildCapacity);
}

uint32_t ReturnSystemVersionOnVolume(const char* volumePath)
{
    std::array<char, 16> text {};
    SystemVersionAndBuildNumber(volumePath, text.data(), text.size(), nullptr, 0);
    uint32_t version = 0;
    return ConvertStringToNumVersion(text.data(), &version) ? version : 0;
}
