// Folders are copied from a stack of levels in memory, not by recursion, so a tree may be of any depth. Each
// level holds two descriptors, and names are looked up in them, so nobody who swaps a folder for a link
// meanwhile leads us elsewhere. Only the deepest levels stay open; the others are opened again as ".." of the
// level below on the way back, and compared with what they were.

#include "CopyItem.h"

#include <Host/Descriptor.h>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>

namespace {

constexpr size_t kOpenLevels = 32;
constexpr size_t kEntriesSize = 64UL * 1024;
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

/// A folder on the way from the top to where the copying is.
struct Level {
    Descriptor from {};
    Descriptor to {};
    struct stat source = {};
    struct stat made = {};
    std::vector<std::string> folders {}; ///< in it, still to be copied
};

class TreeCopy {
public:
    explicit TreeCopy(CopyJob& job)
        : fJob(job)
    {
    }

    int copy(const CopyPlace& from, const CopyPlace& to)
    {
        int error = enter(from, to);
        while (error == 0 && !fLevels.empty())
            error = fLevels.back().folders.empty() ? leave() : enterNext();
        return error;
    }

private:
    int enterNext()
    {
        Level& level = fLevels.back();
        const std::string name = std::move(level.folders.back());
        level.folders.pop_back();
        return enter({ level.from.get(), name.c_str(), false }, { level.to.get(), name.c_str(), false });
    }

    /// Makes the copy of a folder and copies everything in it but folders, which it notes.
    int enter(const CopyPlace& from, const CopyPlace& to)
    {
        Level level;
        level.from
            = Descriptor(openat(from.folder, from.name, kFolderFlags | (from.follow ? 0 : O_NOFOLLOW)));
        if (!level.from || fstat(level.from.get(), &level.source) != 0)
            return errno;
        // However the copy came to lie in the original (another mount of it, say), following it would never
        // end.
        if (!fLevels.empty() && IsSameFile(level.source, fTop))
            return EINVAL;
        if (const int error = makeFolder(to, level); error != 0)
            return error;
        if (fLevels.empty())
            fTop = level.made;
        fLevels.push_back(std::move(level));
        if (fLevels.size() > kOpenLevels) {
            Level& farthest = fLevels[fLevels.size() - 1 - kOpenLevels];
            farthest.from.close();
            farthest.to.close();
        }
        return fJob.has(COPYFILE_RECURSIVE) ? copyEntries() : 0;
    }

    int makeFolder(const CopyPlace& to, Level& level) const
    {
        const mode_t mode = fJob.has(COPYFILE_STAT) ? S_IRWXU : (level.source.st_mode & 0777) | S_IRWXU;
        if (mkdirat(to.folder, to.name, mode) != 0 && (errno != EEXIST || fJob.has(COPYFILE_EXCL)))
            return errno;
        level.to = Descriptor(openat(to.folder, to.name, kFolderFlags | (to.follow ? 0 : O_NOFOLLOW)));
        if (!level.to || fstat(level.to.get(), &level.made) != 0)
            return errno;
        return IsSameFile(level.source, level.made) ? EINVAL : 0;
    }

    int copyEntries()
    {
        const int folder = fLevels.back().from.get();
        fEntries.resize(kEntriesSize);
        for (;;) {
            const ssize_t size = getdents64(folder, fEntries.data(), fEntries.size());
            if (size <= 0)
                return size == 0 ? 0 : errno;
            for (ssize_t at = 0; at < size;) {
                const auto* entry = reinterpret_cast<const dirent64*>(fEntries.data() + at);
                if (const int error = copyEntry(*entry); error != 0)
                    return error;
                at += entry->d_reclen;
            }
        }
    }

    int copyEntry(const dirent64& entry)
    {
        const char* name = entry.d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            return 0;
        Level& level = fLevels.back();
        unsigned char type = entry.d_type;
        if (type == DT_UNKNOWN) { // not every file system keeps it in the folder
            struct stat info = {};
            if (fstatat(level.from.get(), name, &info, AT_SYMLINK_NOFOLLOW) != 0)
                return errno;
            type = static_cast<unsigned char>(IFTODT(info.st_mode));
        }
        if (type != DT_DIR)
            return CopyItem(fJob, { level.from.get(), name, false }, { level.to.get(), name, false }, type);
        level.folders.emplace_back(name);
        return 0;
    }

    int leave()
    {
        const Level level = std::move(fLevels.back());
        fLevels.pop_back();
        if (!fLevels.empty() && !fLevels.back().from) {
            Level& parent = fLevels.back();
            int error = reopen(level.from.get(), parent.source, parent.from);
            if (error == 0)
                error = reopen(level.to.get(), parent.made, parent.to);
            if (error != 0)
                return error;
        }
        return CopyMetadata(fJob, level.from.get(), level.to.get(), level.source, level.made);
    }

    static int reopen(int child, const struct stat& expected, Descriptor& parent)
    {
        struct stat info = {};
        parent = Descriptor(openat(child, "..", kFolderFlags));
        if (!parent || fstat(parent.get(), &info) != 0)
            return errno;
        return IsSameFile(info, expected) ? 0 : ESTALE;
    }

    CopyJob& fJob;
    std::vector<Level> fLevels; ///< from the top down
    struct stat fTop = {}; ///< the topmost folder made
    std::vector<char> fEntries; ///< as the kernel lists them; used up before the next folder is entered
};

} // namespace

int CopyFolder(CopyJob& job, const CopyPlace& from, const CopyPlace& to)
{
    return TreeCopy(job).copy(from, to);
}
