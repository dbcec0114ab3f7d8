// Bundles of the start-up volume and of the home folder.

#include "profile/Reports.h"

#include <CoreFoundation/CoreFoundation.h>
#include <Host/HostPath.h>

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>

namespace profile {

namespace {

constexpr size_t kMostBundles = 2000;
constexpr int kDepth = 3; ///< of folders to look into

struct Key {
    const char* key; ///< of the report
    CFStringRef info; ///< of the bundle
};

struct Kind {
    const char* extension;
    std::vector<std::string> folders;
    std::vector<Key> keys;
    const char* path; ///< the report's key for the place
    const char* modified;
};

/// The Mac's names of the bundles below a folder, and of those that they carry. What is behind links is left out.
void Collect(const std::string& folder, const char* extension, int depth, std::vector<std::string>& bundles)
{
    std::error_code error;
    std::vector<std::string> below;
    std::filesystem::directory_iterator entry(HostPath(folder), error);
    for (; !error && entry != std::filesystem::end(entry); entry.increment(error)) {
        std::error_code unknown;
        const std::string name = entry->path().filename();
        const std::string path = (folder + '/').append(name);
        if (!std::filesystem::is_directory(entry->symlink_status(unknown)) || name.starts_with('.'))
            continue;
        const bool isBundle = name.ends_with(extension);
        if (isBundle && bundles.size() < kMostBundles)
            bundles.push_back(path);
        below.push_back(isBundle ? path + "/Contents/PlugIns" : path);
    }
    for (const std::string& inner : below) {
        if (depth > 1 && bundles.size() < kMostBundles)
            Collect(inner, extension, depth - 1, bundles);
    }
}

Item BundleItem(const std::string& path, const Kind& kind)
{
    Item item(std::filesystem::path(path).stem());
    const cf::Owned<CFStringRef> text(cf::MakeString(path));
    if (!text) // such a name has no form in the Mac's strings
        return item;
    const cf::Owned<CFURLRef> url(
        CFURLCreateWithFileSystemPath(nullptr, text.get(), kCFURLPOSIXPathStyle, true));
    const cf::Owned<CFBundleRef> bundle(CFBundleCreate(nullptr, url.get()));
    if (!bundle)
        return item;
    const CFDictionaryRef info = CFBundleGetInfoDictionary(bundle.get());
    for (const Key& key : kind.keys)
        item.set(key.key, cf::TextOf(CFDictionaryGetValue(info, key.info)));
    item.set(kind.path, path);
    struct stat status { };
    if (stat(HostPath(path).c_str(), &status) == 0)
        item.set(kind.modified, Date { status.st_mtime });
    return item;
}

Item::List BundleItems(const Kind& kind)
{
    std::vector<std::string> bundles;
    for (const std::string& folder : kind.folders)
        Collect(folder, kind.extension, kDepth, bundles);
    std::sort(bundles.begin(), bundles.end());
    bundles.erase(std::unique(bundles.begin(), bundles.end()), bundles.end()); // who has no home has "/"
    Item::List items;
    for (const std::string& bundle : bundles)
        items.push_back(BundleItem(bundle, kind));
    return items;
}

}

Item::List ExtensionItems(const HostTree&)
{
    return BundleItems({ ".kext", { "/System/Library/Extensions", "/Library/Extensions" },
        { { "spext_bundleid", CFSTR("CFBundleIdentifier") },
            { "version", CFSTR("CFBundleShortVersionString") }, { "spext_version", CFSTR("CFBundleVersion") },
            { "spext_info", CFSTR("CFBundleGetInfoString") } },
        "spext_path", "spext_lastModified" });
}

Item::List ApplicationItems(const HostTree&)
{
    const std::string home = HostHomeFolder();
    return BundleItems({ ".app",
        { "/Applications", "/System/Applications", "/System/Library/CoreServices",
            "/Library/Application Support", home + "/Applications", home + "/Library/Application Support" },
        { { "version", CFSTR("CFBundleShortVersionString") }, { "version", CFSTR("CFBundleVersion") },
            { "info", CFSTR("CFBundleGetInfoString") } },
        "path", "lastModified" });
}

} // namespace profile
