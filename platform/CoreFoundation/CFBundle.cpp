#include <CoreFoundation/CFBundle.h>

#include "CoreFoundation/BundleLanguages.h"
#include "CoreFoundation/FileBytes.h"
#include "CoreFoundation/Runtime.h"
#include "CoreFoundation/StringsTable.h"
#include "Host/HostPath.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <sys/stat.h>

const CFStringRef kCFBundleInfoDictionaryVersionKey = CFSTR("CFBundleInfoDictionaryVersion");
const CFStringRef kCFBundleExecutableKey = CFSTR("CFBundleExecutable");
const CFStringRef kCFBundleIdentifierKey = CFSTR("CFBundleIdentifier");
const CFStringRef kCFBundleVersionKey = CFSTR("CFBundleVersion");
const CFStringRef kCFBundleDevelopmentRegionKey = CFSTR("CFBundleDevelopmentRegion");
const CFStringRef kCFBundleNameKey = CFSTR("CFBundleName");
const CFStringRef kCFBundleLocalizationsKey = CFSTR("CFBundleLocalizations");

namespace {

constexpr std::string_view kLocalizationSuffix = ".lproj";

enum class Place { kNothing, kFile, kFolder };

/// @param path a Mac path.
Place PlaceAt(const std::string& path)
{
    struct stat info { };
    if (stat(HostPath(path).c_str(), &info) != 0)
        return Place::kNothing;
    return S_ISDIR(info.st_mode) ? Place::kFolder : Place::kFile;
}

std::string TextOrEmpty(CFStringRef string) { return string ? cf::Utf8(string) : std::string(); }

CFURLRef CreateURL(const std::string& path, bool isFolder)
{
    return CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault,
        reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), isFolder);
}

/// @return the absolute path, "" for what is no file URL.
std::string PathOf(CFURLRef url)
{
    std::string path(PATH_MAX, '\0');
    if (!CFURLGetFileSystemRepresentation(
            url, true, reinterpret_cast<UInt8*>(path.data()), static_cast<CFIndex>(path.size())))
        return {};
    path.resize(path.find('\0'));
    return path;
}

cf::Owned<CFDictionaryRef> CreateEmptyDictionary()
{
    return cf::Owned<CFDictionaryRef>(CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0,
        &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

cf::Owned<CFDictionaryRef> CreateInfoDictionary(const std::string& path)
{
    cf::Owned<CFDictionaryRef> info;
    ReadDictionaryFile(HostPath(path), info); // unreadable or damaged, the bundle says nothing about itself
    return info ? std::move(info) : CreateEmptyDictionary();
}

cf::Owned<CFDictionaryRef> CreateTable(const std::string& path)
{
    std::vector<uint8_t> bytes;
    if (ReadFileBytes(HostPath(path), bytes) != 0)
        return CreateEmptyDictionary();
    return cf::Owned<CFDictionaryRef>(CreateStringsTable(bytes));
}

template <class Ref> Ref ValueOfType(CFDictionaryRef dictionary, CFStringRef key, CFTypeID type)
{
    const CFTypeRef value = CFDictionaryGetValue(dictionary, key);
    return value && CFGetTypeID(value) == type ? static_cast<Ref>(value) : nullptr;
}

CFArrayRef CreateArray(const std::vector<std::string>& texts)
{
    CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
    for (const std::string& text : texts) {
        if (const cf::Owned<CFStringRef> string { cf::MakeString(text) })
            CFArrayAppendValue(array, string.get());
    }
    return array;
}

void AddTexts(CFArrayRef array, std::vector<std::string>& texts)
{
    const CFIndex count = array ? CFArrayGetCount(array) : 0;
    for (CFIndex i = 0; i < count; ++i) {
        const std::string text = cf::TextOf(CFArrayGetValueAtIndex(array, i));
        if (!text.empty() && std::find(texts.begin(), texts.end(), text) == texts.end())
            texts.push_back(text);
    }
}

/// @return the names of the localizations that have a folder, sorted. @param resources a Mac path.
std::vector<std::string> LocalizationsIn(const std::string& resources)
{
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(HostPath(resources), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename();
        const bool isLocalization = name.ends_with(kLocalizationSuffix) && name != "Base.lproj";
        if (isLocalization && name.size() > kLocalizationSuffix.size())
            names.push_back(name.substr(0, name.size() - kLocalizationSuffix.size()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// @return the name with the extension, which may begin with its point.
std::string FileName(const std::string& name, const std::string& type)
{
    if (type.empty() || type == ".")
        return name;
    return name + (type.front() == '.' ? "" : ".") + type;
}

} // namespace

struct __CFBundle : cf::Object {
    /// @param path absolute, of a folder. @param executable of the main bundle, else "".
    __CFBundle(std::string path, std::string executable)
        : Object(typeID())
        , fPath(std::move(path))
        , fExecutable(std::move(executable))
        , fIsFlat(PlaceAt(fPath + "/Contents") != Place::kFolder)
        , fResources(resourcesPath())
        , fInfo(CreateInfoDictionary(fPath + (fIsFlat ? "/Info.plist" : "/Contents/Info.plist")))
        , fLocalizations(LocalizationsIn(fResources))
    {
        AddTexts(
            ValueOfType<CFArrayRef>(info(), kCFBundleLocalizationsKey, CFArrayGetTypeID()), fLocalizations);
    }
    static CFTypeID typeID()
    {
        static const CFTypeID id = cf::RegisterType("CFBundle");
        return id;
    }

    const std::string& path() const { return fPath; }
    const std::string& resources() const { return fResources; }
    CFDictionaryRef info() const { return fInfo.get(); }
    const std::vector<std::string>& localizations() const { return fLocalizations; }

    CFStringRef text(CFStringRef key) const
    {
        return ValueOfType<CFStringRef>(info(), key, CFStringGetTypeID());
    }

    /// @return "" where there is no such file.
    std::string executablePath() const
    {
        const std::string named = TextOrEmpty(text(kCFBundleExecutableKey));
        const std::string stem = std::filesystem::path(fPath).stem();
        std::string path = fPath + (fIsFlat ? "/" : "/Contents/MacOS/") + (named.empty() ? stem : named);
        if (named.empty() && !fExecutable.empty())
            path = fExecutable;
        return PlaceAt(path) == Place::kFile ? path : std::string();
    }

    struct Resource {
        std::string path;
        Place place = Place::kNothing;
    };

    /// @param relative path below the resources folder, or below that of a localization.
    Resource findResource(const std::string& relative) const
    {
        Resource resource { fResources + '/' + relative };
        resource.place = PlaceAt(resource.path);
        if (resource.place != Place::kNothing)
            return resource;
        for (const std::string& name : matchingLocalizations()) {
            resource.path.assign(fResources).append("/").append(name).append(kLocalizationSuffix);
            resource.path.append("/").append(relative);
            resource.place = PlaceAt(resource.path);
            if (resource.place != Place::kNothing)
                return resource;
        }
        return resource;
    }

    /// @return the table in the user's language, empty where there is none; it lives as long as the bundle.
    CFDictionaryRef table(const std::string& name)
    {
        std::string key = name;
        for (const std::string& localization : matchingLocalizations())
            key += '/' + localization;
        const std::lock_guard lock(fMutex);
        cf::Owned<CFDictionaryRef>& table = fTables[key];
        if (!table) {
            const Resource file = findResource(name + ".strings");
            table = file.place == Place::kFile ? CreateTable(file.path) : CreateEmptyDictionary();
        }
        return table.get();
    }

private:
    std::string resourcesPath() const
    {
        if (!fIsFlat)
            return fPath + "/Contents/Resources";
        const std::string folder = fPath + "/Resources";
        return PlaceAt(folder) == Place::kFolder ? folder : fPath;
    }

    std::vector<std::string> matchingLocalizations() const
    {
        const std::string region = TextOrEmpty(text(kCFBundleDevelopmentRegionKey));
        return MatchingLocalizations(fLocalizations, PreferredLanguages(), region.empty() ? "en" : region);
    }

    const std::string fPath;
    const std::string fExecutable;
    const bool fIsFlat;
    const std::string fResources;
    const cf::Owned<CFDictionaryRef> fInfo;
    std::vector<std::string> fLocalizations;

    std::mutex fMutex;
    std::map<std::string, cf::Owned<CFDictionaryRef>>
        fTables; ///< by name and the localizations looked through
};

namespace {

/// @return null when there is no such folder.
__CFBundle* CreateBundle(const std::string& path, const std::string& executable)
{
    if (path.empty() || PlaceAt(path) != Place::kFolder)
        return nullptr;
    return new __CFBundle(path, executable);
}

std::string ExecutablePath()
{
    std::error_code error;
    if (const char* path = secure_getenv("CFProcessPath"); path && *path)
        return std::filesystem::absolute(path, error).lexically_normal();
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::filesystem::path BundlePathOf(const std::filesystem::path& executable)
{
    const std::filesystem::path folder = executable.parent_path();
    const bool isInBundle = folder.filename() == "MacOS" && folder.parent_path().filename() == "Contents";
    return isInBundle ? folder.parent_path().parent_path() : folder;
}

} // namespace

CFTypeID CFBundleGetTypeID() { return __CFBundle::typeID(); }

CFBundleRef CFBundleGetMainBundle()
{
    // Callers keep the answer without retaining it, so none is ever let go.
    static std::mutex mutex;
    static auto& bundles = *new std::map<std::string, CFBundleRef>;
    const std::string executable = ExecutablePath();
    const std::lock_guard lock(mutex);
    const auto known = bundles.find(executable);
    if (known != bundles.end())
        return known->second;
    CFBundleRef bundle = CreateBundle(BundlePathOf(executable), executable);
    if (bundle)
        bundles.emplace(executable, bundle);
    return bundle;
}

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef bundleURL) { return CreateBundle(PathOf(bundleURL), {}); }

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle)
{
    return CreateURL(cf::Check(bundle, __func__).path(), true);
}

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle) { return cf::Check(bundle, __func__).info(); }

CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key)
{
    __CFBundle& object = cf::Check(bundle, __func__);
    const CFTypeRef localized = CFDictionaryGetValue(object.table("InfoPlist"), key);
    return localized ? localized : CFDictionaryGetValue(object.info(), key);
}

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle)
{
    return cf::Check(bundle, __func__).text(kCFBundleIdentifierKey);
}

CFStringRef CFBundleGetDevelopmentRegion(CFBundleRef bundle)
{
    return cf::Check(bundle, __func__).text(kCFBundleDevelopmentRegionKey);
}

CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle)
{
    const std::string path = cf::Check(bundle, __func__).executablePath();
    return path.empty() ? nullptr : CreateURL(path, false);
}

CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle)
{
    return CreateURL(cf::Check(bundle, __func__).resources(), true);
}

CFURLRef CFBundleCopyResourceURL(
    CFBundleRef bundle, CFStringRef resourceName, CFStringRef resourceType, CFStringRef subDirName)
{
    const __CFBundle& object = cf::Check(bundle, __func__);
    const std::string name = TextOrEmpty(resourceName);
    if (name.empty())
        return nullptr;
    const std::string folder = TextOrEmpty(subDirName);
    const __CFBundle::Resource resource = object.findResource(
        (folder.empty() ? "" : folder + '/') + FileName(name, TextOrEmpty(resourceType)));
    if (resource.place == Place::kNothing)
        return nullptr;
    return CreateURL(resource.path, resource.place == Place::kFolder);
}

CFStringRef CFBundleCopyLocalizedString(
    CFBundleRef bundle, CFStringRef key, CFStringRef value, CFStringRef tableName)
{
    __CFBundle& object = cf::Check(bundle, __func__);
    const std::string name = TextOrEmpty(tableName);
    const CFDictionaryRef table = object.table(name.empty() ? "Localizable" : name);
    if (const void* text = key ? CFDictionaryGetValue(table, key) : nullptr)
        return cf::Retained(static_cast<CFStringRef>(text));
    const bool hasValue = value && CFStringGetLength(value) > 0;
    return cf::Retained(hasValue || !key ? value : key);
}

CFArrayRef CFBundleCopyBundleLocalizations(CFBundleRef bundle)
{
    return CreateArray(cf::Check(bundle, __func__).localizations());
}

CFArrayRef CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef locArray)
{
    std::vector<std::string> available;
    AddTexts(locArray, available);
    return CreateArray(MatchingLocalizations(available, PreferredLanguages(), {}));
}
