#include "HostApplication.h"

#if __APPLE__

#include <objc/message.h>

CFStringRef HostApplicationName(pid_t process)
{
    using ForProcess = id (*)(id, SEL, pid_t);
    using Text = CFStringRef (*)(id, SEL);
    const id application = reinterpret_cast<ForProcess>(objc_msgSend)(
        reinterpret_cast<id>(objc_getClass("NSRunningApplication")),
        sel_registerName("runningApplicationWithProcessIdentifier:"), process);
    const CFStringRef name
        = reinterpret_cast<Text>(objc_msgSend)(application, sel_registerName("localizedName"));
    return name != nullptr ? CFStringCreateCopy(nullptr, name) : nullptr;
}

#else

#include "DesktopEntry.h"

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFURL.h>
#include <CoreFoundation/Runtime.h>
#include <Host/HostPath.h>
#include <Host/HostText.h>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<std::string> Split(const std::string& list, char separator)
{
    std::vector<std::string> parts;
    for (size_t start = 0; start < list.size();) {
        const size_t end = std::min(list.find(separator, start), list.size());
        if (end > start)
            parts.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string Variable(const char* name, const std::string& otherwise)
{
    const char* const value = std::getenv(name);
    return value != nullptr && *value != 0 ? value : otherwise;
}

/// @return the file without links; "" when it is none.
fs::path Resolved(const fs::path& file)
{
    std::error_code error;
    fs::path resolved = fs::canonical(file, error);
    return error ? fs::path() : resolved;
}

/// The program's file, also when another has taken its place since it was started; "" where that may not be known.
fs::path ProgramOf(pid_t process)
{
    std::error_code error;
    std::string file = fs::read_symlink("/proc/" + std::to_string(process) + "/exe", error);
    constexpr std::string_view mark = " (deleted)";
    if (file.ends_with(mark))
        file.resize(file.size() - mark.size());
    return error ? "" : file;
}

/// The bundle that a program is the main one of; "" when it lies in none.
fs::path BundleOf(const fs::path& program)
{
    const fs::path folder = program.parent_path();
    const fs::path contents = folder.parent_path();
    const fs::path bundle = contents.parent_path();
    const bool isBundle
        = folder.filename() == "MacOS" && contents.filename() == "Contents" && bundle.extension() == ".app";
    return isBundle ? bundle : fs::path();
}

/// The name that a bundle gives itself, else its file's.
cf::Owned<CFStringRef> NameOfBundle(const fs::path& path)
{
    const std::string& bytes = path.native();
    const cf::Owned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault,
        reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size()), true));
    const cf::Owned<CFBundleRef> bundle(url ? CFBundleCreate(kCFAllocatorDefault, url.get()) : nullptr);
    for (const CFStringRef key : { CFSTR("CFBundleDisplayName"), kCFBundleNameKey }) {
        const CFTypeRef name = bundle ? CFBundleGetValueForInfoDictionaryKey(bundle.get(), key) : nullptr;
        if (name != nullptr && CFGetTypeID(name) == CFStringGetTypeID())
            return cf::Owned<CFStringRef>(static_cast<CFStringRef>(CFRetain(name)));
    }
    return cf::Owned<CFStringRef>(cf::MakeString(path.stem().native()));
}

/// The file that a program's name or path means; "" when there is none.
fs::path FindProgram(const std::string& program)
{
    if (program.starts_with('/'))
        return Resolved(program);
    for (const std::string& folder : Split(Variable("PATH", "/usr/local/bin:/usr/bin:/bin"), ':')) {
        fs::path file = Resolved(fs::path(folder) / program);
        if (!file.empty())
            return file;
    }
    return {};
}

/// The applications in the host's menus by their programs; the user's own entries come before the system's.
std::map<fs::path, DesktopEntry> ReadMenus()
{
    std::vector<std::string> folders { HostDataFolder() };
    for (const std::string& folder : Split(Variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share"), ':'))
        folders.push_back(folder);
    std::map<fs::path, DesktopEntry> entries;
    for (const std::string& folder : folders) {
        std::error_code error;
        fs::recursive_directory_iterator item(
            folder + "/applications", fs::directory_options::skip_permission_denied, error);
        for (; !error && item != fs::recursive_directory_iterator(); item.increment(error)) {
            if (item->path().extension() != ".desktop")
                continue;
            if (const std::optional<DesktopEntry> entry
                = ReadDesktopEntry(HostText(item->path()).value_or("")))
                entries.emplace(FindProgram(entry->program), *entry);
        }
    }
    return entries;
}

/// The menus, read at most once a second, since whoever asks for one process most often asks for many.
class Menus {
public:
    /// @return the name for the user of what starts the program; null when nothing does.
    cf::Owned<CFStringRef> nameOf(const fs::path& program)
    {
        const std::scoped_lock lock(fMutex);
        const auto now = std::chrono::steady_clock::now();
        if (!fRead || now - *fRead > std::chrono::seconds(1)) {
            fEntries = ReadMenus();
            fRead = now;
        }
        const auto entry = fEntries.find(program);
        return cf::Owned<CFStringRef>(
            entry != fEntries.end() ? cf::MakeString(entry->second.nameForUser()) : nullptr);
    }

private:
    std::mutex fMutex {};
    std::optional<std::chrono::steady_clock::time_point> fRead {};
    std::map<fs::path, DesktopEntry> fEntries {};
};

}

CFStringRef HostApplicationName(pid_t process)
{
    const fs::path program = ProgramOf(process);
    if (program.empty())
        return nullptr;
    static Menus menus;
    const fs::path bundle = BundleOf(program);
    return (bundle.empty() ? menus.nameOf(program) : NameOfBundle(bundle)).release();
}

#endif
