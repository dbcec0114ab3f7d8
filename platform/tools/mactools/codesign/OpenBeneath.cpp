#include "codesign/OpenBeneath.h"

#include "CoreFoundation/FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace codesign {

namespace {

/// A path that leads to what a descriptor holds, for interfaces that take no descriptors.
std::string PathOf(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

}

Descriptor OpenBeneath(int folder, const std::string& relative, int flags)
{
    Descriptor above;
    size_t start = 0;
    for (size_t slash = relative.find('/'); slash != std::string::npos; slash = relative.find('/', start)) {
        const std::string name = relative.substr(start, slash - start);
        above = Descriptor(openat(
            start == 0 ? folder : above.get(), name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!above)
            return above;
        start = slash + 1;
    }
    const std::string name = relative.empty() ? "." : relative.substr(start);
    return Descriptor(
        openat(start == 0 ? folder : above.get(), name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC));
}

int ReadDictionaryBeneath(int folder, const std::string& relative, cf::Owned<CFDictionaryRef>& dictionary)
{
    dictionary.reset();
    const Descriptor file = OpenBeneath(folder, relative, O_PATH);
    return file ? ReadDictionaryFile(PathOf(file.get()), dictionary) : errno;
}

int ListFolder(int folder, std::vector<std::string>& names)
{
    std::error_code error;
    for (std::filesystem::directory_iterator entry(PathOf(folder), error), end; !error && entry != end;
         entry.increment(error))
        names.push_back(entry->path().filename());
    std::sort(names.begin(), names.end());
    return error.value();
}

std::string LinkTarget(int folder, const std::string& name)
{
    std::string target(PATH_MAX, '\0');
    const ssize_t size = readlinkat(folder, name.c_str(), target.data(), target.size());
    target.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
    return target;
}

}
