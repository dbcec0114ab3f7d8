#include "tools/driverinstall/BundleTree.h"

#include "tools/driverinstall/FileDescriptor.h"

#include <Host/WriteAll.h>
#include <array>
#include <cerrno>
#include <cstdint>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/stat.h>

namespace {

constexpr size_t mostEntries = 100'000;
constexpr uint64_t mostBytes = uint64_t { 1 } << 30;
constexpr unsigned deepestFolder = 64;
constexpr unsigned deepestRemoval = 128;
constexpr int onlyCheck = -1;

/// Gives a finished copy its owner and mode and flushes it. The owner comes first, since changing it may
/// clear bits of the mode.
int Finish(int copy, mode_t mode)
{
    if (geteuid() == 0 && fchown(copy, 0, 0) != 0)
        return errno;
    return fchmod(copy, mode) != 0 || fsync(copy) != 0 ? errno : 0;
}

/// One pass over a tree, which spends one common allowance of entries and bytes.
class TreeWalk {
public:
    explicit TreeWalk(uid_t owner)
        : fOwner(owner)
    {
    }

    /// @param copy the folder that receives the copies, or onlyCheck.
    Outcome folder(int source, int copy, const std::string& shownPath, unsigned depth)
    {
        if (depth > deepestFolder)
            return { ExitCode::badSource, shownPath + " is nested too deeply" };
        std::vector<std::string> names;
        const int error = ReadNames(source, fEntriesLeft, names);
        if (error == E2BIG)
            return { ExitCode::badSource, shownPath + " holds too many entries" };
        if (error != 0)
            return Failure(ExitCode::badSource, "cannot list " + shownPath, error);
        fEntriesLeft -= names.size();

        for (const std::string& name : names) {
            Outcome outcome = entry(source, copy, name, shownPath, depth);
            if (!outcome.ok())
                return outcome;
        }
        const int finishError = copy == onlyCheck ? 0 : Finish(copy, 0755);
        return finishError == 0
            ? Outcome {}
            : Failure(ExitCode::diskError, "cannot finish the copy of " + shownPath, finishError);
    }

private:
    /// The reason for which an entry is not accepted, or null.
    const char* refusal(const struct stat& info) const
    {
        if (S_ISLNK(info.st_mode))
            return " is a symbolic link";
        if (!S_ISDIR(info.st_mode) && !S_ISREG(info.st_mode))
            return " is neither a folder nor a plain file";
        // On a folder the set-group bit only says which group new entries get, and the copy drops it.
        if ((info.st_mode & S_ISUID) != 0 || (S_ISREG(info.st_mode) && (info.st_mode & S_ISGID) != 0))
            return " has a set-id bit";
        if (info.st_uid != fOwner && (info.st_mode & S_IROTH) == 0)
            return " is another user's private file";
        return nullptr;
    }

    Outcome entry(
        int source, int copy, const std::string& name, const std::string& shownFolder, unsigned depth)
    {
        const std::string shownPath = shownFolder + "/" + name;
        // Looked at before it is opened, because opening a device can have effects; and again after, because
        // it may be another one by then.
        struct stat info { };
        if (fstatat(source, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
            return Failure(ExitCode::badSource, "cannot examine " + shownPath, errno);
        if (const char* reason = refusal(info))
            return { ExitCode::badSource, shownPath + reason };
        const FileDescriptor opened(
            openat(source, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (!opened || fstat(opened.get(), &info) != 0)
            return Failure(ExitCode::badSource, "cannot open " + shownPath, errno);
        if (const char* reason = refusal(info))
            return { ExitCode::badSource, shownPath + reason };

        if (S_ISDIR(info.st_mode))
            return subfolder(opened.get(), copy, name, shownPath, depth);
        return copy == onlyCheck ? spend(static_cast<uint64_t>(info.st_size), shownPath)
                                 : file(opened.get(), copy, name, shownPath, info.st_mode);
    }

    Outcome subfolder(
        int source, int copy, const std::string& name, const std::string& shownPath, unsigned depth)
    {
        if (copy == onlyCheck)
            return folder(source, onlyCheck, shownPath, depth + 1);
        if (mkdirat(copy, name.c_str(), 0700) != 0)
            return Failure(ExitCode::diskError, "cannot create the copy of " + shownPath, errno);
        const FileDescriptor made(
            openat(copy, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!made)
            return Failure(ExitCode::diskError, "cannot open the copy of " + shownPath, errno);
        return folder(source, made.get(), shownPath, depth + 1);
    }

    Outcome file(int source, int copy, const std::string& name, const std::string& shownPath, mode_t mode)
    {
        constexpr int fresh = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        const FileDescriptor made(openat(copy, name.c_str(), fresh, 0600));
        if (!made)
            return Failure(ExitCode::diskError, "cannot create the copy of " + shownPath, errno);
        Outcome outcome = data(source, made.get(), shownPath);
        if (!outcome.ok())
            return outcome;
        const int error = Finish(made.get(), (mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0 ? 0755 : 0644);
        return error == 0 ? Outcome {}
                          : Failure(ExitCode::diskError, "cannot finish the copy of " + shownPath, error);
    }

    /// Counts what is really read, since a file can grow while it is copied.
    Outcome data(int source, int copy, const std::string& shownPath)
    {
        std::array<char, size_t { 64 } << 10> buffer {};
        for (;;) {
            const ssize_t size = read(source, buffer.data(), buffer.size());
            if (size < 0)
                return Failure(ExitCode::badSource, "cannot read " + shownPath, errno);
            if (size == 0)
                return {};
            Outcome outcome = spend(static_cast<uint64_t>(size), shownPath);
            if (!outcome.ok())
                return outcome;
            const int error = WriteAll(copy, buffer.data(), static_cast<size_t>(size));
            if (error != 0)
                return Failure(ExitCode::diskError, "cannot copy " + shownPath, error);
        }
    }

    Outcome spend(uint64_t bytes, const std::string& shownPath)
    {
        if (bytes > fBytesLeft)
            return { ExitCode::badSource, shownPath + " exceeds the size that an extension may have" };
        fBytesLeft -= bytes;
        return {};
    }

    uid_t fOwner;
    size_t fEntriesLeft = mostEntries;
    uint64_t fBytesLeft = mostBytes;
};

Outcome Walk(int tree, const std::string& shownName, int copy)
{
    struct stat top { };
    if (fstat(tree, &top) != 0)
        return Failure(ExitCode::badSource, "cannot examine " + shownName, errno);
    return TreeWalk(top.st_uid).folder(tree, copy, shownName, 1);
}

int RemoveTreeAt(int folder, const std::string& name, unsigned depth)
{
    struct stat info { };
    if (fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? 0 : errno;
    if (!S_ISDIR(info.st_mode))
        return unlinkat(folder, name.c_str(), 0) == 0 ? 0 : errno;
    if (depth > deepestRemoval)
        return ENAMETOOLONG;
    const FileDescriptor opened(
        openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!opened)
        return errno;
    std::vector<std::string> names;
    if (const int error = ReadNames(opened.get(), std::numeric_limits<size_t>::max(), names))
        return error;
    for (const std::string& child : names) {
        if (const int error = RemoveTreeAt(opened.get(), child, depth + 1))
            return error;
    }
    return unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0 ? 0 : errno;
}

}

Outcome CheckTree(int tree, const std::string& shownName) { return Walk(tree, shownName, onlyCheck); }

Outcome CopyTree(int tree, const std::string& shownName, int copy) { return Walk(tree, shownName, copy); }

int RemoveTree(int folder, const std::string& name) { return RemoveTreeAt(folder, name, 1); }

int ReadNames(int folder, size_t limit, std::vector<std::string>& names)
{
    // A descriptor of its own: reading moves the position that `folder` shares with its copies.
    const int own = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (own < 0)
        return errno;
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(fdopendir(own), closedir);
    if (!listing) {
        const int error = errno;
        close(own);
        return error;
    }
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(listing.get());
        if (entry == nullptr)
            return errno;
        const std::string name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        if (names.size() == limit)
            return E2BIG;
        names.push_back(name);
    }
}
