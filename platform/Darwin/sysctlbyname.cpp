#include <sys/sysctl.h>

#include <Host/Descriptor.h>
#include <Host/HostPath.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <new>
#include <optional>
#include <plist/plist.h>
#include <string>

namespace {

constexpr const char* kSystemVersion = "/System/Library/CoreServices/SystemVersion.plist";
constexpr size_t kLongestPropertyList = 64UL * 1024; // the file is a few hundred bytes

struct PlistFree {
    void operator()(void* plist) const { plist_free(plist); }
};
using Plist = std::unique_ptr<void, PlistFree>;

/// @return nothing where the file cannot be read or is too long.
std::optional<std::string> FileBytes(const std::string& path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file)
        return {};
    std::string bytes(kLongestPropertyList + 1, '\0');
    size_t size = 0;
    while (size < bytes.size()) {
        const ssize_t got = read(file.get(), bytes.data() + size, bytes.size() - size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return {};
        if (got == 0)
            break;
        size += static_cast<size_t>(got);
    }
    if (size > kLongestPropertyList)
        return {};
    bytes.resize(size);
    return bytes;
}

/// A fact about the system, as zero-terminated text.
std::optional<std::string> SystemVersionText(const char* key)
{
    const std::optional<std::string> bytes = FileBytes(HostPath(kSystemVersion));
    if (!bytes)
        return {};
    plist_t root = nullptr;
    plist_from_memory(bytes->data(), static_cast<uint32_t>(bytes->size()), &root);
    const Plist owner(root);
    if (plist_get_node_type(root) != PLIST_DICT)
        return {};
    plist_t item = plist_dict_get_item(root, key);
    if (plist_get_node_type(item) != PLIST_STRING)
        return {};
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(item, &length);
    return std::string(text, length);
}

struct Name {
    const char* name;
    std::optional<std::string> (*value)();
};

constexpr Name kNames[] = {
    { "kern.osproductversion", [] { return SystemVersionText("ProductVersion"); } },
};

int Answer(const std::string& value, void* oldp, size_t* oldlenp)
{
    if (oldlenp == nullptr)
        return oldp == nullptr ? 0 : EFAULT;
    const size_t size = value.size() + 1;
    if (oldp == nullptr) {
        *oldlenp = size;
        return 0;
    }
    const size_t room = *oldlenp;
    *oldlenp = std::min(room, size);
    std::memcpy(oldp, value.c_str(), *oldlenp);
    return room < size ? ENOMEM : 0;
}

int Look(const char* name, void* oldp, size_t* oldlenp, const void* newp, size_t newlen)
{
    if (name == nullptr)
        return EFAULT;
    const auto* known = std::find_if(std::begin(kNames), std::end(kNames),
        [name](const Name& one) { return std::strcmp(one.name, name) == 0; });
    if (known == std::end(kNames))
        return ENOENT;
    if (newp != nullptr || newlen != 0)
        return EPERM;
    const std::optional<std::string> value = known->value();
    return value ? Answer(*value, oldp, oldlenp) : ENOENT;
}

} // namespace

int sysctlbyname(const char* name, void* oldp, size_t* oldlenp, void* newp, size_t newlen)
{
    int error = ENOMEM;
    try {
        error = Look(name, oldp, oldlenp, newp, newlen);
    } catch (const std::bad_alloc&) { // said already
    }
    if (error == 0)
        return 0;
    errno = error;
    return -1;
}
