#include "SystemVersion.h"

#include <Host/HostPath.h>
#include <Host/HostText.h>

#include <memory>
#include <plist/plist.h>

namespace {

constexpr const char* kSystemVersion = "/System/Library/CoreServices/SystemVersion.plist";

struct PlistFree {
    void operator()(void* plist) const { plist_free(plist); }
};
using Plist = std::unique_ptr<void, PlistFree>;

}

std::optional<std::string> SystemVersionText(const char* key)
{
    const std::optional<std::string> bytes = HostText(HostPath(kSystemVersion));
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
