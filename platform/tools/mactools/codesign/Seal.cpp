#include "codesign/Seal.h"

#include "codesign/Digest.h"
#include "codesign/OpenBeneath.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cerrno>
#include <cstring>
#include <optional>

namespace codesign {

namespace {

bool HasType(CFTypeRef value, CFTypeID type) { return value != nullptr && CFGetTypeID(value) == type; }

/// @return null where there is no dictionary.
CFDictionaryRef DictionaryIn(CFDictionaryRef dictionary, CFStringRef key)
{
    const CFTypeRef value = CFDictionaryGetValue(dictionary, key);
    return HasType(value, CFDictionaryGetTypeID()) ? static_cast<CFDictionaryRef>(value) : nullptr;
}

std::optional<SealedItem> FileItem(CFTypeRef digest, size_t size, bool isOptional)
{
    if (!HasType(digest, CFDataGetTypeID()))
        return {};
    const auto data = static_cast<CFDataRef>(digest);
    const std::string bytes(
        reinterpret_cast<const char*>(CFDataGetBytePtr(data)), static_cast<size_t>(CFDataGetLength(data)));
    if (bytes.size() != size)
        return {};
    return SealedItem { SealedItem::Kind::file, bytes, isOptional };
}

/// @return nothing for what no seal says.
std::optional<SealedItem> ReadItem(CFTypeRef value)
{
    if (!HasType(value, CFDictionaryGetTypeID()))
        return FileItem(value, kSha1Size, false);
    const auto item = static_cast<CFDictionaryRef>(value);
    const bool isOptional = CFDictionaryGetValue(item, CFSTR("optional")) == kCFBooleanTrue;
    if (const CFTypeRef link = CFDictionaryGetValue(item, CFSTR("symlink"));
        HasType(link, CFStringGetTypeID()))
        return SealedItem { SealedItem::Kind::link, cf::Utf8(static_cast<CFStringRef>(link)), isOptional };
    if (const CFTypeRef digest = CFDictionaryGetValue(item, CFSTR("hash2")))
        return FileItem(digest, kSha256Size, isOptional);
    if (const CFTypeRef digest = CFDictionaryGetValue(item, CFSTR("hash")))
        return FileItem(digest, kSha1Size, isOptional);
    if (CFDictionaryGetValue(item, CFSTR("cdhash")) == nullptr
        && CFDictionaryGetValue(item, CFSTR("requirement")) == nullptr)
        return {};
    return SealedItem { SealedItem::Kind::code, "", isOptional };
}

struct Reading {
    std::map<std::string, SealedItem>& items;
    bool isDamaged = false;
};

bool ReadItems(CFDictionaryRef files, std::map<std::string, SealedItem>& items)
{
    Reading reading { items };
    CFDictionaryApplyFunction(
        files,
        [](const void* path, const void* value, void* context) {
            auto& into = *static_cast<Reading*>(context);
            if (std::optional<SealedItem> item = ReadItem(value))
                into.items.emplace(cf::Utf8(static_cast<CFStringRef>(path)), std::move(*item));
            else
                into.isDamaged = true;
        },
        &reading);
    return !reading.isDamaged;
}

}

std::string ReadSeal(const Bundle& bundle, Seal& seal)
{
    cf::Owned<CFDictionaryRef> resources;
    const int error = ReadDictionaryBeneath(bundle.contents.get(), "_CodeSignature/CodeResources", resources);
    if (error == ENOENT)
        return kUnsigned;
    if (error == EACCES)
        return std::strerror(error);
    if (!resources)
        return kDamagedSeal;
    const CFDictionaryRef newFiles = DictionaryIn(resources.get(), CFSTR("files2"));
    const CFDictionaryRef newRules = DictionaryIn(resources.get(), CFSTR("rules2"));
    const CFDictionaryRef files = newFiles ? newFiles : DictionaryIn(resources.get(), CFSTR("files"));
    const CFDictionaryRef rules = newRules ? newRules : DictionaryIn(resources.get(), CFSTR("rules"));
    if (files == nullptr || rules == nullptr || !ReadItems(files, seal.items))
        return kDamagedSeal;
    seal.version = newFiles ? 2 : 1;
    return seal.rules.read(rules) ? "" : kDamagedSeal;
}

}
