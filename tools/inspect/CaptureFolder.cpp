#include "tools/inspect/CaptureFolder.h"

#include "util/CFText.h"
#include "util/PropertyLists.h"

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr off_t kLargestProfile = off_t { 64 } << 20;

bool IsFolder(const std::string& path)
{
    struct stat facts { };
    return stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

/// @return none for what is no file, or too large a one.
std::optional<std::string> Contents(int file)
{
    struct stat facts { };
    if (fstat(file, &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size > kLargestProfile)
        return {};
    std::string bytes(static_cast<size_t>(facts.st_size), '\0');
    size_t count = 0;
    while (count < bytes.size()) {
        const ssize_t more = read(file, bytes.data() + count, bytes.size() - count);
        if (more == 0 || (more < 0 && errno != EINTR))
            return {};
        count += more > 0 ? static_cast<size_t>(more) : 0;
    }
    return bytes;
}

CFTypeRef Member(CFTypeRef dictionary, CFStringRef key)
{
    const auto members = CFDynamicCast<CFDictionaryRef>(dictionary, CFDictionaryGetTypeID());
    return members != nullptr ? CFDictionaryGetValue(members, key) : nullptr;
}

std::string TextMember(CFTypeRef dictionary, CFStringRef key)
{
    return StdString(CFDynamicCast<CFStringRef>(Member(dictionary, key), CFStringGetTypeID()));
}

CFTypeRef ItemOf(CFTypeRef array, CFIndex index)
{
    const auto items = CFDynamicCast<CFArrayRef>(array, CFArrayGetTypeID());
    return items != nullptr && index < CFArrayGetCount(items) ? CFArrayGetValueAtIndex(items, index)
                                                              : nullptr;
}

/// The first item of a part of the profile; null for none.
CFTypeRef FirstItem(CFArrayRef profile, const char* part)
{
    for (CFIndex i = 0; i < CFArrayGetCount(profile); ++i) {
        const CFTypeRef one = ItemOf(profile, i);
        if (TextMember(one, CFSTR("_dataType")) == part)
            return ItemOf(Member(one, CFSTR("_items")), 0);
    }
    return nullptr;
}

/// "Jane Doe (jane)" and "macOS 10.15.7 (19H2)", taken apart.
struct Remark {
    std::string text;
    std::string within; ///< "" for none
};

Remark TakenApart(const std::string& text)
{
    const size_t opening = text.rfind(" (");
    if (opening == std::string::npos || text.back() != ')')
        return { text, "" };
    return { text.substr(0, opening), text.substr(opening + 2, text.size() - opening - 3) };
}

void AddProfile(CFArrayRef profile, Record& record)
{
    const CFTypeRef hardware = FirstItem(profile, "SPHardwareDataType");
    const CFTypeRef software = FirstItem(profile, "SPSoftwareDataType");
    const Remark user = TakenApart(TextMember(software, CFSTR("user_name")));
    const Remark system = TakenApart(TextMember(software, CFSTR("os_version")));
    const std::string version = system.text.substr(system.text.rfind(' ') + 1);
    // What is called so there is the name that users gave it.
    record.push_back(
        { "computerName", "Computer name", TextOrNone(TextMember(software, CFSTR("local_host_name"))) });
    record.push_back({ "userName", "User name", TextOrNone(user.text) });
    record.push_back({ "memoryText", "Memory", TextOrNone(TextMember(hardware, CFSTR("physical_memory"))) });
    record.push_back({ "systemVersion", "System version", TextOrNone(version) });
    record.push_back({ "systemBuild", "System build", TextOrNone(system.within) });
}

}

std::string RecordedRegistryAt(const std::string& capture)
{
    return IsFolder(capture) ? capture + '/' + kRegistryFile : capture;
}

bool AddRecordedProfile(const std::string& capture, Record& record)
{
    if (!IsFolder(capture))
        return true;
    const std::string path = capture + '/' + kProfileFile;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return errno == ENOENT;
    const std::optional<std::string> bytes = Contents(file);
    close(file);
    const CFRef<CFArrayRef> profile(bytes
            ? CreateCFArrayWithContentsOfBuffer(bytes->data(), static_cast<uint32_t>(bytes->size()))
            : nullptr);
    if (!profile)
        return false;
    AddProfile(profile.get(), record);
    return true;
}
