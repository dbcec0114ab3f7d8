#include "ToolCheck.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>

namespace {

constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
constexpr mode_t kAnybodyExecutes = S_IXUSR | S_IXGRP | S_IXOTH;

struct Free {
    void operator()(char* text) const { std::free(text); }
};

bool HasTrustedOwner(const struct stat& info, bool trustsCaller)
{
    return info.st_uid == 0 || (trustsCaller && info.st_uid == geteuid());
}

/// In a folder with the sticky bit, such as the one for temporary files, everybody may add entries, but only
/// an entry's owner and the folder's, both trusted, may replace it.
bool IsTrustedFolder(const struct stat& info, bool trustsCaller)
{
    const bool othersCannotReplace = (info.st_mode & kOthersWrite) == 0 || (info.st_mode & S_ISVTX) != 0;
    return S_ISDIR(info.st_mode) && HasTrustedOwner(info, trustsCaller) && othersCannotReplace;
}

bool IsTrustedProgram(const struct stat& info, bool trustsCaller)
{
    return S_ISREG(info.st_mode) && HasTrustedOwner(info, trustsCaller) && (info.st_mode & kOthersWrite) == 0
        && (info.st_mode & kAnybodyExecutes) != 0;
}

} // namespace

Descriptor OpenTrustedTool(const std::string& hostPath, bool trustsCaller)
{
    const std::unique_ptr<char, Free> resolved(realpath(hostPath.c_str(), nullptr));
    if (hostPath.empty() || hostPath.front() != '/' || !resolved)
        return Descriptor();
    std::string_view rest = resolved.get();
    struct stat info = {};
    Descriptor place(open("/", O_PATH | O_CLOEXEC));
    while (place && fstat(place.get(), &info) == 0) {
        rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
        if (rest.empty())
            return IsTrustedProgram(info, trustsCaller) ? std::move(place) : Descriptor();
        if (!IsTrustedFolder(info, trustsCaller))
            return Descriptor();
        const std::string name(rest.substr(0, rest.find('/')));
        rest.remove_prefix(name.size());
        // Looked up in the folder that was just checked: whatever is swapped meanwhile, what we get is
        // checked next.
        place = Descriptor(openat(place.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    }
    return Descriptor();
}
