#include "kext/Extensions.h"

#include "Tool.h"

#include <CoreFoundation/CoreFoundation.h>

#include "CoreFoundation/FileBytes.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>
#include <system_error>

namespace fs = std::filesystem;

namespace kext {

namespace {

/// A bundle's shapes: what lies between it and its Info.plist.
constexpr const char* kDeep = "/Contents";
constexpr const char* kFlat = "";

fs::file_time_type TimeOf(const std::string& path)
{
    std::error_code error;
    const fs::file_time_type time = fs::last_write_time(path, error);
    return error ? fs::file_time_type::min() : time;
}

std::vector<std::string> KeysOf(CFTypeRef value)
{
    std::vector<std::string> keys;
    if (value == nullptr || CFGetTypeID(value) != CFDictionaryGetTypeID())
        return keys;
    CFDictionaryApplyFunction(
        static_cast<CFDictionaryRef>(value),
        [](const void* key, const void*, void* into) {
            static_cast<std::vector<std::string>*>(into)->push_back(cf::Utf8(static_cast<CFStringRef>(key)));
        },
        &keys);
    return keys;
}

class Reader {
public:
    Reader(std::string volume, const char* tool)
        : fVolume(std::move(volume))
        , fTool(tool)
    {
    }
    Extensions read()
    {
        for (const char* const folder : { "/System/Library/Extensions", "/Library/Extensions" })
            fFound.hasFolder = readFolder(folder) || fFound.hasFolder;
        keepNewest();
        return std::move(fFound);
    }

private:
    /// @param path on the volume. @return whether there is such a folder.
    bool readFolder(const std::string& path);
    void readBundle(const std::string& path);
    void keepNewest();
    void complain(const std::string& path, const std::string& reason) const
    {
        Complain(fTool, path + ": " + reason);
    }

    const std::string fVolume;
    const char* const fTool;
    Extensions fFound;
};

bool Reader::readFolder(const std::string& path)
{
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(fVolume + path, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        std::error_code ignored;
        if (entry->path().extension() == ".kext" && entry->is_directory(ignored))
            names.push_back(entry->path().filename());
    }
    if (error == std::errc::no_such_file_or_directory)
        return false;
    if (error)
        complain(path, error.message());
    fFound.lastChange = std::max(fFound.lastChange, TimeOf(fVolume + path));
    for (const std::string& name : names)
        readBundle((path + '/').append(name));
    return true;
}

void Reader::readBundle(const std::string& path)
{
    std::error_code ignored;
    const bool isDeep = fs::exists(fVolume + path + kDeep, ignored);
    const std::string contents = fVolume + path + (isDeep ? kDeep : kFlat);
    const std::string infoFile = contents + "/Info.plist";
    const fs::file_time_type modified
        = std::max({ TimeOf(fVolume + path), TimeOf(contents), TimeOf(infoFile) });
    fFound.lastChange = std::max(fFound.lastChange, modified);
    if (isDeep)
        readFolder(path + kDeep + "/PlugIns");

    cf::Owned<CFDictionaryRef> info;
    const int error = ReadDictionaryFile(infoFile, info);
    if (!info)
        return complain(path, std::string("Info.plist: ") + (error != 0 ? std::strerror(error) : "damaged"));
    Extension extension { cf::TextOf(CFDictionaryGetValue(info.get(), kCFBundleIdentifierKey)),
        cf::TextOf(CFDictionaryGetValue(info.get(), kCFBundleVersionKey)), path,
        KeysOf(CFDictionaryGetValue(info.get(), CFSTR("OSBundleLibraries"))),
        CFDictionaryGetValue(info.get(), CFSTR("OSKernelResource")) == kCFBooleanTrue, modified };
    if (extension.identifier.empty() || extension.version.empty())
        return complain(path, "Info.plist: CFBundleIdentifier or CFBundleVersion is missing");
    fFound.all.push_back(std::move(extension));
}

void Reader::keepNewest()
{
    std::vector<Extension>& all = fFound.all;
    std::sort(all.begin(), all.end(), [](const Extension& one, const Extension& other) {
        if (one.identifier != other.identifier)
            return one.identifier < other.identifier;
        const int order = strverscmp(one.version.c_str(), other.version.c_str());
        return order != 0 ? order > 0 : one.path < other.path;
    });
    const auto isSame
        = [](const Extension& one, const Extension& other) { return one.identifier == other.identifier; };
    all.erase(std::unique(all.begin(), all.end(), isSame), all.end());
}

}

Extensions ReadExtensions(const std::string& volume, const char* tool) { return Reader(volume, tool).read(); }

}
