#include "settings/NumVersion.h"
#include "tools/inspect/Commands.h"
#include "util/Bundles.h"
#include "util/Files.h"
#include "util/Processes.h"
#include "util/StandardFolders.h"
#include "util/SystemVersions.h"
#include "util/VolumeSpace.h"
#include "util/Volumes.h"

#include <array>
#include <cstdlib>

namespace {

using Buffer = std::array<char, 1024>;

/// The text that a function put into its buffer, if it did.
Value Text(bool isThere, const Buffer& buffer)
{
    return isThere && buffer[0] != 0 ? Value(buffer.data()) : Value();
}

Value Size(bool isThere, uint64_t bytes) { return isThere ? Number(bytes) : Value(); }

void DescribeItem(const char* path, Record& record)
{
    uint64_t size = 0;
    bool isFolder = false;
    const bool exists = FileOrDirectoryExists(path, &size, &isFolder);
    const char* const name = LastPathComponent(path);
    const char* const extension = FileExtension(name);
    record.push_back({ "path", "Path", path });
    record.push_back({ "exists", "Exists", exists });
    record.push_back({ "name", "Name", name });
    record.push_back({ "extension", "Extension", extension != name ? Value(extension) : Value() });
    record.push_back({ "isFolder", "Folder", exists ? Value(isFolder) : Value() });
    record.push_back(SizeField("size", "Size", Size(exists && !isFolder, size)));
    record.push_back({ "isRootsFile", "File of root's", exists ? Value(FileIsOwnedByRoot(path)) : Value() });
}

Value VersionText(const char* path)
{
    std::array<char, 16> text {};
    ConvertNumVersionToString(BundleVersion(path), text.data(), text.size(), false);
    return text[0] != 0 ? Value(text.data()) : Value();
}

void DescribeBundle(const char* path, Record& record)
{
    const CFRef<CFMutableDictionaryRef> info(CreateInfoPListDictionaryForBundle(path));
    Buffer identifier {};
    Buffer program {};
    const bool isBundle = static_cast<bool>(info);
    const bool hasIdentifier
        = isBundle && CreateBundleID_FromBundlePathname(path, identifier.data(), identifier.size());
    const bool hasProgram
        = isBundle && CreateExecutablePathnameFromBundlePathname(path, program.data(), program.size());
    record.push_back({ "bundleIdentifier", "Bundle identifier", Text(hasIdentifier, identifier) });
    record.push_back({ "bundleVersion", "Bundle version", isBundle ? VersionText(path) : Value() });
    record.push_back({ "program", "Program", Text(hasProgram, program) });
    record.push_back(
        { "signatureIsValid", "Signature is valid", isBundle ? Value(CodeSignatureValid(path)) : Value() });
}

void DescribeVolume(const char* path, Record& record)
{
    const bool isVolume = VolumeExistsAtPathname(path);
    Buffer version {};
    Buffer build {};
    uint64_t total = 0;
    uint64_t free = 0;
    uint64_t available = 0;
    SystemVersionAndBuildNumber(path, version.data(), version.size(), build.data(), build.size());
    const bool hasSpace = isVolume && GetVolumeTotalAndFreeBytes(path, &total, &free, &available);
    record.push_back({ "systemVersion", "System version", Text(isVolume, version) });
    record.push_back({ "systemBuild", "System build", Text(isVolume, build) });
    record.push_back(SizeField("volumeSize", "Volume size", Size(hasSpace, total)));
    record.push_back(SizeField("volumeFree", "Volume free", Size(hasSpace, free)));
    record.push_back(SizeField("volumeAvailable", "Volume available", Size(hasSpace, available)));
}

/// The start-up volume and the folders that every Mac has.
std::vector<std::string> StandardPaths()
{
    std::vector<std::string> paths { "/" };
    Buffer path {};
    if (CreateUserLibraryPathname(path.data(), path.size()) == noErr)
        paths.emplace_back(path.data());
    if (CreateUserApplicationSupportFolderPathname(nullptr, path.data(), path.size()) == noErr)
        paths.emplace_back(path.data());
    if (CreateApplicationSupportFolderPathname(nullptr, path.data(), path.size()) == noErr)
        paths.emplace_back(path.data());
    char* extensions = nullptr;
    if (CreateThirdPartyExtensionsPathnameForVolume("/", &extensions, false) == noErr)
        paths.emplace_back(extensions);
    std::free(extensions);
    return paths;
}

Record Describe(const std::string& path)
{
    Record record;
    DescribeItem(path.c_str(), record);
    DescribeBundle(path.c_str(), record);
    DescribeVolume(path.c_str(), record);
    return record;
}

}

Findings FindFiles(const Request& request)
{
    const std::vector<std::string>& paths = request.operands;
    Findings findings;
    for (const std::string& path : paths.empty() ? StandardPaths() : paths)
        findings.records.push_back(Describe(path));
    for (const std::string& path : paths) {
        if (!FileOrDirectoryExists(path.c_str(), nullptr, nullptr))
            findings.problems.push_back(path + ": not there, or not to be looked at");
    }
    return findings;
}
