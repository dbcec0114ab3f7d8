#include "settings/NumVersion.h"
#include "tools/inspect/Commands.h"
#include "tools/inspect/VolumeFields.h"
#include "util/Bundles.h"
#include "util/Files.h"
#include "util/Processes.h"
#include "util/StandardFolders.h"
#include "util/Volumes.h"

#include <array>
#include <cstdlib>

namespace {

using Buffer = std::array<char, 1024>;

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
    record.push_back(SizeField("size", "Size", exists && !isFolder ? Number(size) : Value()));
    record.push_back({ "isRootsFile", "File of root's", exists ? Value(FileIsOwnedByRoot(path)) : Value() });
}

Value VersionText(const char* path)
{
    std::array<char, 16> text {};
    ConvertNumVersionToString(BundleVersion(path), text.data(), text.size(), false);
    return TextOrNone(text.data());
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
    record.push_back(
        { "bundleIdentifier", "Bundle identifier", hasIdentifier ? TextOrNone(identifier.data()) : Value() });
    record.push_back({ "bundleVersion", "Bundle version", isBundle ? VersionText(path) : Value() });
    record.push_back({ "program", "Program", hasProgram ? TextOrNone(program.data()) : Value() });
    record.push_back(
        { "signatureIsValid", "Signature is valid", isBundle ? Value(CodeSignatureValid(path)) : Value() });
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
    const bool isVolume = VolumeExistsAtPathname(path.c_str());
    AddSystem(path.c_str(), isVolume, record);
    AddSpace(path.c_str(), isVolume, record);
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
