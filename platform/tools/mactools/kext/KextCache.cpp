#include "kext/KextCache.h"

#include "kext/Extensions.h"

#include <CoreFoundation/CoreFoundation.h>
#include <Host/AtomicFile.h>
#include <Host/Folders.h>
#include <Host/HostPath.h>

#include "CoreFoundation/Runtime.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <iostream>
#include <optional>
#include <sys/stat.h>
#include <sysexits.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kName = "kextcache";
constexpr const char* kUsage = R"(usage: kextcache [-f] -u volume
       kextcache -i volume

  -u, -update-volume volume   bring what the volume knows of its kernel extensions up to date
  -f, -force                  do so even where it is newer than the extensions
  -i, -invalidate volume      put it together anew in any case
  -h, -help                   print this text
)";
constexpr const char* kFolder = "/System/Library/Caches/com.apple.kext.caches/Startup";
constexpr const char* kFile = "/IdentifiersAndVersions.plist";

struct Request {
    std::string volume;
    bool force = false;
};

std::optional<Request> ReadRequest(const Arguments& arguments)
{
    Request request;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const bool invalidates = *argument == "-i" || *argument == "-invalidate";
        const bool updates = *argument == "-u" || *argument == "-update-volume";
        if (invalidates || *argument == "-f" || *argument == "-force")
            request.force = true;
        else if (!updates)
            return {};
        if (!invalidates && !updates)
            continue;
        if (!request.volume.empty() || ++argument == arguments.end())
            return {};
        request.volume = *argument;
    }
    return request.volume.empty() ? std::nullopt : std::optional(request);
}

/// Leaves out what is not UTF-8: a property list cannot hold it.
void Set(CFMutableDictionaryRef dictionary, CFStringRef key, const std::string& text)
{
    if (const cf::Owned<CFStringRef> value { cf::MakeString(text) })
        CFDictionarySetValue(dictionary, key, value.get());
}

CFAbsoluteTime MacTime(fs::file_time_type time)
{
    const auto sinceEpoch = std::chrono::file_clock::to_sys(time).time_since_epoch();
    return std::chrono::duration<double>(sinceEpoch).count() - kCFAbsoluteTimeIntervalSince1970;
}

cf::Owned<CFMutableDictionaryRef> MakeDictionary()
{
    return cf::Owned<CFMutableDictionaryRef>(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

/// @return null when the extensions cannot be described in a property list.
cf::Owned<CFDataRef> Describe(const std::vector<kext::Extension>& extensions)
{
    const cf::Owned<CFMutableDictionaryRef> list = MakeDictionary();
    for (const kext::Extension& extension : extensions) {
        const cf::Owned<CFMutableDictionaryRef> facts = MakeDictionary();
        Set(facts.get(), CFSTR("OSBundlePath"), extension.path);
        Set(facts.get(), kCFBundleVersionKey, extension.version);
        const cf::Owned<CFDateRef> modified(CFDateCreate(kCFAllocatorDefault, MacTime(extension.modified)));
        CFDictionarySetValue(facts.get(), CFSTR("ModificationDate"), modified.get());
        CFDictionarySetValue(
            list.get(), cf::Owned<CFStringRef>(cf::MakeString(extension.identifier)).get(), facts.get());
    }
    return cf::Owned<CFDataRef>(
        CFPropertyListCreateData(kCFAllocatorDefault, list.get(), kCFPropertyListXMLFormat_v1_0, 0, nullptr));
}

/// Makes the folder, unless a link on the volume leads out of it: what is absolute there means another place here.
/// @return 0 or an errno.
int PrepareFolder(const std::string& volume)
{
    std::error_code error;
    const std::string real = fs::canonical(volume + '/', error);
    const std::string folder = fs::weakly_canonical(volume + kFolder, error);
    if (error)
        return error.value();
    if (!folder.starts_with(real == "/" ? real : real + '/'))
        return EXDEV;
    const int failure = MakeFolders(folder, 0755, 0755);
    return failure == EEXIST ? 0 : failure;
}

int Update(const Request& request)
{
    std::string volume = HostPath(request.volume);
    struct stat info = {};
    if (stat((volume + '/').c_str(), &info) != 0)
        return Complain(kName, request.volume + ": " + std::strerror(errno));
    volume.erase(volume.find_last_not_of('/') + 1);
    const kext::Extensions extensions = kext::ReadExtensions(volume, kName);
    if (!extensions.hasFolder)
        return Complain(kName, request.volume + ": not a volume with kernel extensions");
    std::error_code missing;
    const fs::file_time_type written = fs::last_write_time(volume + kFolder + kFile, missing);
    if (!request.force && !missing && written > extensions.lastChange)
        return 0;
    const cf::Owned<CFDataRef> bytes = Describe(extensions.all);
    if (!bytes)
        return Complain(kName, request.volume + ": an extension's name cannot be written down");
    int error = PrepareFolder(volume);
    if (error == 0)
        error = WriteFileAtomically(volume + kFolder + kFile, CFDataGetBytePtr(bytes.get()),
            static_cast<size_t>(CFDataGetLength(bytes.get())));
    return error == 0 ? 0 : Complain(kName, std::string(kFolder) + kFile + ": " + std::strerror(error));
}

}

int KextCache(const Arguments& arguments)
{
    if (AnswersHelp(arguments, kUsage))
        return 0;
    const std::optional<Request> request = ReadRequest(arguments);
    if (!request) {
        std::cerr << kUsage;
        return EX_USAGE;
    }
    return Update(*request);
}
