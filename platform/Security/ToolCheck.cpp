#include "ToolCheck.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <grp.h>
#include <memory>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>

namespace {

constexpr mode_t kAnybodyExecutes = S_IXUSR | S_IXGRP | S_IXOTH;

struct Free {
    void operator()(char* text) const { std::free(text); }
};

constexpr gid_t kNoGroup = static_cast<gid_t>(-1); // which no file can have

/// Whose files are trusted beside root's, and which group may write them.
struct Trusted {
    uid_t user = 0;
    gid_t group = kNoGroup;
};

/// @return the group that users have to themselves where each has one, which then may write what its user makes.
gid_t PrivateGroup(uid_t user)
{
    const passwd* const account = getpwuid(user);
    if (account == nullptr)
        return kNoGroup;
    const std::string name = account->pw_name;
    const gid_t number = account->pw_gid;
    const group* const group = getgrgid(number);
    const bool isPrivate = group != nullptr && group->gr_name == name
        && (group->gr_mem[0] == nullptr || (group->gr_mem[0] == name && group->gr_mem[1] == nullptr));
    return isPrivate ? number : kNoGroup;
}

bool HasTrustedOwner(const struct stat& info, const Trusted& trusted)
{
    return info.st_uid == 0 || info.st_uid == trusted.user;
}

bool CanOthersWrite(const struct stat& info, const Trusted& trusted)
{
    return (info.st_mode & S_IWOTH) != 0 || ((info.st_mode & S_IWGRP) != 0 && info.st_gid != trusted.group);
}

/// In a folder with the sticky bit, such as the one for temporary files, everybody may add entries, but only
/// an entry's owner and the folder's, both trusted, may replace it.
bool IsTrustedFolder(const struct stat& info, const Trusted& trusted)
{
    const bool othersCannotReplace = !CanOthersWrite(info, trusted) || (info.st_mode & S_ISVTX) != 0;
    return S_ISDIR(info.st_mode) && HasTrustedOwner(info, trusted) && othersCannotReplace;
}

bool IsTrustedProgram(const struct stat& info, const Trusted& trusted)
{
    return S_ISREG(info.st_mode) && HasTrustedOwner(info, trusted) && !CanOthersWrite(info, trusted)
        && (info.st_mode & kAnybodyExecutes) != 0;
}

} // namespace

Descriptor OpenTrustedTool(const std::string& hostPath, bool trustsCaller)
{
    const std::unique_ptr<char, Free> resolved(realpath(hostPath.c_str(), nullptr));
    if (hostPath.empty() || hostPath.front() != '/' || !resolved)
        return Descriptor();
    const Trusted trusted = trustsCaller ? Trusted { geteuid(), PrivateGroup(geteuid()) } : Trusted {};
    std::string_view rest = resolved.get();
    struct stat info = {};
    Descriptor place(open("/", O_PATH | O_CLOEXEC));
    while (place && fstat(place.get(), &info) == 0) {
        rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
        if (rest.empty())
            return IsTrustedProgram(info, trusted) ? std::move(place) : Descriptor();
        if (!IsTrustedFolder(info, trusted))
            return Descriptor();
        const std::string name(rest.substr(0, rest.find('/')));
        rest.remove_prefix(name.size());
        // Looked up in the folder that was just checked: whatever is swapped meanwhile, what we get is
        // checked next.
        place = Descriptor(openat(place.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    }
    return Descriptor();
}
