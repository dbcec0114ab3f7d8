#include "JobFile.h"

#include "PropertyList.h"

#include <Host/AtomicFile.h>
#include <Host/Descriptor.h>
#include <Host/HostPath.h>
#include <Host/ReadWhole.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace launchd {

namespace fs = std::filesystem;

namespace {
std::string HostFile(const std::string& given)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(given, error);
    return HostPath(error ? given : absolute.string());
}

Answer SystemFailure(const std::string& given, int error)
{
    return { ExitStatus::failed, given + ": " + std::strerror(error) };
}

Answer CheckOwnership(const std::string& given, const struct stat& status)
{
    if (!S_ISREG(status.st_mode))
        return { ExitStatus::badPermissions, given + ": Not a regular file" };
    if (status.st_uid != geteuid() && status.st_uid != 0)
        return { ExitStatus::badPermissions, given + ": Owned by somebody else than its user or root" };
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        return { ExitStatus::badPermissions, given + ": Writable by others than its owner" };
    return {};
}
}

std::string JobPathOf(const std::string& given)
{
    const fs::path path = HostFile(given);
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(path.parent_path(), error);
    return error ? path.string() : (folder / path.filename()).string();
}

Answer FindJobFiles(const std::string& given, std::vector<std::string>& files)
{
    const std::string host = HostFile(given);
    std::error_code error;
    if (!fs::is_directory(host, error)) {
        files.push_back(given);
        return {};
    }
    std::vector<std::string> names;
    for (fs::directory_iterator entry(host, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.front() != '.' && name.ends_with(".plist"))
            names.push_back(name);
    }
    if (error)
        return SystemFailure(given, error.value());
    std::sort(names.begin(), names.end());
    for (const std::string& name : names)
        files.push_back((fs::path(given) / name).string());
    return {};
}

Answer ReadJobFile(const std::string& given, JobFile& file)
{
    // Without waiting: the path may name a pipe that nobody writes to.
    const Descriptor descriptor(open(HostFile(given).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status { };
    if (!descriptor || fstat(descriptor.get(), &status) != 0)
        return SystemFailure(given, errno);
    if (Answer refusal = CheckOwnership(given, status); !refusal.ok())
        return refusal;

    std::string bytes;
    if (const int error = ReadWhole(descriptor.get(), maxJobBytes, bytes); error != 0)
        return SystemFailure(given, error);
    std::string problem;
    std::optional<Job> job = ParseJob(bytes, problem);
    if (!job)
        return { ExitStatus::invalidJob, given + ": " + problem };
    file = { JobPathOf(given), std::move(bytes), std::move(*job) };
    return {};
}

Answer WriteDisabled(const std::string& given, const JobFile& file, bool disabled)
{
    std::string problem;
    const CFOwned<CFMutableDictionaryRef> dictionary = ReadDictionary(file.bytes, problem);
    const CFOwned<CFStringRef> key = MakeText("Disabled");
    if (!dictionary || !key)
        return { ExitStatus::failed, given + ": " + problem };
    if (disabled)
        SetBoolean(dictionary.get(), "Disabled", true);
    else
        CFDictionaryRemoveValue(dictionary.get(), key.get());

    const std::optional<std::string> bytes = WriteDictionary(dictionary.get(), kCFPropertyListXMLFormat_v1_0);
    if (!bytes)
        return { ExitStatus::failed, given + ": its Disabled key could not be changed" };
    // The file behind a link is what changes; replacing the link would part it from what the user manages.
    std::error_code error;
    const fs::path target = fs::canonical(file.path, error);
    if (error)
        return SystemFailure(given, error.value());
    const int failure = WriteFileAtomically(target.string(), bytes->data(), bytes->size());
    return failure == 0 ? Answer {} : SystemFailure(given, failure);
}

} // namespace launchd
