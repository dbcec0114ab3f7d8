#include <IOKit/NvramFirmware.h>

#include <Host/Descriptor.h>
#include <Host/HostText.h>
#include <Host/WriteAll.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace iokit {

namespace {

constexpr size_t kAttributesSize = 4;
constexpr std::string_view kNewAttributes("\7\0\0\0", kAttributesSize); // non-volatile, boot, run time
constexpr size_t kLargestFile = kAttributesSize + size_t { 64 } * 1024;

/// Takes the guard from a variable as long as something is done with it.
/// @param act answers 0 or an errno. @return the same, or why the guard could not be put back.
template <class Act> int Unguarded(const std::string& file, Act act)
{
    const Descriptor variable(open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    unsigned flags = 0;
    const bool isGuarded
        = variable && ioctl(variable.get(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_IMMUTABLE_FL) != 0;
    const unsigned without = flags & ~static_cast<unsigned>(FS_IMMUTABLE_FL);
    if (isGuarded && ioctl(variable.get(), FS_IOC_SETFLAGS, &without) != 0)
        return errno;
    const int error = act();
    struct stat info { };
    const bool isThere = variable && fstat(variable.get(), &info) == 0 && info.st_nlink > 0;
    if (isGuarded && isThere && ioctl(variable.get(), FS_IOC_SETFLAGS, &flags) != 0 && error == 0)
        return errno;
    return error;
}

/// The kernel hands each write to the firmware as the whole variable.
int Write(const std::string& file, const std::string& bytes)
{
    const bool isNew = access(file.c_str(), F_OK) != 0;
    const Descriptor variable(
        open(file.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644));
    const int error = variable ? WriteAll(variable.get(), bytes.data(), bytes.size()) : errno;
    if (error != 0 && variable && isNew)
        unlink(file.c_str());
    return error;
}

}

EfiVariables::EfiVariables(HostTree host, std::string vendor)
    : fHost(std::move(host))
    , fEnding('-' + std::move(vendor))
{
}

std::string EfiVariables::version() const
{
    std::string version;
    for (const std::string& name : names()) {
        struct stat file { };
        if (stat(path(name).c_str(), &file) == 0)
            version += name + ' ' + std::to_string(file.st_size) + ' ' + std::to_string(file.st_mtim.tv_sec)
                + '.' + std::to_string(file.st_mtim.tv_nsec) + '\n';
    }
    return version;
}

std::vector<std::string> EfiVariables::names() const
{
    // Not by HostTree::names(), which sorts: most are another vendor's, and this is asked for every question to the registry.
    std::vector<std::string> found;
    std::error_code error;
    std::filesystem::directory_iterator file(fHost.path(kFolder), error);
    for (; !error && file != std::filesystem::end(file); file.increment(error)) {
        const std::string name = file->path().filename();
        if (name.size() > fEnding.size() && name.ends_with(fEnding))
            found.push_back(name.substr(0, name.size() - fEnding.size()));
    }
    return found;
}

std::optional<std::string> EfiVariables::value(const std::string& name) const
{
    const std::optional<std::string> bytes = HostText(path(name), kLargestFile);
    return bytes && bytes->size() > kAttributesSize ? std::optional(bytes->substr(kAttributesSize))
                                                    : std::nullopt;
}

int EfiVariables::set(const std::string& name, const std::string& value) const
{
    if (value.empty())
        return EINVAL;
    const std::string file = path(name);
    const std::string old = HostText(file, kLargestFile).value_or("");
    const std::string attributes(
        old.size() > kAttributesSize ? std::string_view(old).substr(0, kAttributesSize) : kNewAttributes);
    return Unguarded(file, [&] { return Write(file, attributes + value); });
}

int EfiVariables::remove(const std::string& name) const
{
    const std::string file = path(name);
    return Unguarded(file, [&] { return unlink(file.c_str()) == 0 ? 0 : errno; });
}

std::string EfiVariables::path(const std::string& name) const
{
    return fHost.path(std::string(kFolder) + '/' + name + fEnding);
}

NvramFirmware::NvramFirmware(const HostTree& host)
    : fFirmware(host, EfiVariables::kApple)
{
}

int NvramFirmware::read(NvramVariables& variables) const
{
    variables.clear();
    for (const std::string& name : fFirmware.names()) {
        std::optional<std::string> value = fFirmware.value(name);
        if (value && IsNvramName(name))
            variables[name] = std::move(*value);
    }
    return 0;
}

int NvramFirmware::clear()
{
    NvramVariables variables;
    int error = read(variables);
    for (auto one = variables.begin(); error == 0 && one != variables.end(); ++one)
        error = fFirmware.remove(one->first);
    return error;
}

int NvramFirmware::change(const std::string& name, const std::optional<std::string>& value)
{
    return value ? fFirmware.set(name, *value) : fFirmware.remove(name);
}

}
