#include <CoreFoundation/CFPreferences.h>

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFNumber.h>

#include "CoreFoundation/PreferencesDomain.h"
#include "CoreFoundation/Runtime.h"
#include "Host/HostPath.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

const CFStringRef kCFPreferencesAnyApplication = CFSTR("kCFPreferencesAnyApplication");
const CFStringRef kCFPreferencesCurrentApplication = CFSTR("kCFPreferencesCurrentApplication");
const CFStringRef kCFPreferencesAnyHost = CFSTR("kCFPreferencesAnyHost");
const CFStringRef kCFPreferencesCurrentHost = CFSTR("kCFPreferencesCurrentHost");
const CFStringRef kCFPreferencesAnyUser = CFSTR("kCFPreferencesAnyUser");
const CFStringRef kCFPreferencesCurrentUser = CFSTR("kCFPreferencesCurrentUser");

namespace {

/// Every domain that was used, for the life of the process: changes may be held in it.
struct Store {
    std::mutex mutex;
    std::map<std::pair<std::string, std::string>, PreferencesDomain> domains; ///< by home folder and name
};

Store& TheStore()
{
    static auto& store = *new Store;
    return store;
}

std::string CurrentApplicationName()
{
    CFBundleRef bundle = CFBundleGetMainBundle();
    if (const CFStringRef identifier = bundle ? CFBundleGetIdentifier(bundle) : nullptr)
        return cf::Utf8(identifier);
    const cf::Owned<CFURLRef> executable(bundle ? CFBundleCopyExecutableURL(bundle) : nullptr);
    if (!executable)
        return program_invocation_short_name;
    const cf::Owned<CFStringRef> name(CFURLCopyLastPathComponent(executable.get()));
    return cf::Utf8(name.get());
}

/// @return "" where the id has no domain.
std::string DomainName(CFStringRef applicationID)
{
    if (CFEqual(applicationID, kCFPreferencesAnyApplication))
        return ".GlobalPreferences";
    std::string name = CFEqual(applicationID, kCFPreferencesCurrentApplication) ? CurrentApplicationName()
                                                                                : cf::Utf8(applicationID);
    const bool isUnsafe = name.find_first_of(std::string_view("/\0", 2)) != std::string::npos
        || name.find("..") != std::string::npos;
    return isUnsafe ? std::string() : name;
}

/// Calls `use` with the domain, alone of all threads. @return its answer, or `none` where there is no such
/// domain.
template <class Result, class Use>
Result WithDomain(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName, Result none, Use use)
{
    if (!CFEqual(userName, kCFPreferencesCurrentUser) || !CFEqual(hostName, kCFPreferencesAnyHost))
        return none;
    const std::string name = DomainName(applicationID);
    const std::string home = HostHomeFolder();
    if (name.empty() || home.empty())
        return none;
    Store& store = TheStore();
    const std::lock_guard lock(store.mutex);
    const auto [entry, isNew] = store.domains.try_emplace(std::pair(home, name), home, name);
    return use(entry->second);
}

CFMutableDictionaryRef CreateEmptyDictionary()
{
    return CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
}

CFMutableDictionaryRef CopyAll(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    auto* const values = WithDomain<CFMutableDictionaryRef>(applicationID, userName, hostName, nullptr,
        [](PreferencesDomain& domain) { return domain.copyValues(); });
    return values ? values : CreateEmptyDictionary();
}

bool BooleanFromText(CFStringRef text, bool& value)
{
    constexpr std::array<std::pair<std::string_view, bool>, 6> meanings = { { { "true", true },
        { "yes", true }, { "1", true }, { "false", false }, { "no", false }, { "0", false } } };
    for (const auto& [word, meaning] : meanings) {
        const cf::Owned<CFStringRef> wordText(cf::MakeString(word));
        if (CFStringCompare(text, wordText.get(), kCFCompareCaseInsensitive) == kCFCompareEqualTo) {
            value = meaning;
            return true;
        }
    }
    return false;
}

/// @param value receives the boolean that the object stands for. @return whether it stands for one.
bool BooleanFrom(CFTypeRef object, bool& value)
{
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFStringGetTypeID())
        return BooleanFromText(static_cast<CFStringRef>(object), value);
    if (type == CFNumberGetTypeID()) {
        double number = 0;
        CFNumberGetValue(static_cast<CFNumberRef>(object), kCFNumberFloat64Type, &number);
        value = number != 0;
        return true;
    }
    if (type != CFBooleanGetTypeID())
        return false;
    value = CFBooleanGetValue(static_cast<CFBooleanRef>(object));
    return true;
}

/// As above, for whole numbers.
bool IntegerFrom(CFTypeRef object, CFIndex& value)
{
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFNumberGetTypeID())
        return CFNumberGetValue(static_cast<CFNumberRef>(object), kCFNumberCFIndexType, &value);
    if (type == CFStringGetTypeID()) {
        const std::string text = cf::Utf8(static_cast<CFStringRef>(object));
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        return error == std::errc() && end == text.data() + text.size();
    }
    if (type != CFBooleanGetTypeID())
        return false;
    value = CFBooleanGetValue(static_cast<CFBooleanRef>(object));
    return true;
}

template <class Value>
Value GetAppValue(
    CFStringRef key, CFStringRef applicationID, Boolean* isValid, bool (*convert)(CFTypeRef, Value&))
{
    const cf::Owned<CFPropertyListRef> object(CFPreferencesCopyAppValue(key, applicationID));
    Value value {};
    const bool converted = object && convert(object.get(), value);
    if (isValid)
        *isValid = converted;
    return converted ? value : Value {};
}

} // namespace

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID)
{
    for (const CFStringRef application : { applicationID, kCFPreferencesAnyApplication }) {
        if (const CFPropertyListRef value
            = CFPreferencesCopyValue(key, application, kCFPreferencesCurrentUser, kCFPreferencesAnyHost))
            return value;
    }
    return nullptr;
}

Boolean CFPreferencesGetAppBooleanValue(
    CFStringRef key, CFStringRef applicationID, Boolean* keyExistsAndHasValidFormat)
{
    return GetAppValue(key, applicationID, keyExistsAndHasValidFormat, BooleanFrom);
}

CFIndex CFPreferencesGetAppIntegerValue(
    CFStringRef key, CFStringRef applicationID, Boolean* keyExistsAndHasValidFormat)
{
    return GetAppValue(key, applicationID, keyExistsAndHasValidFormat, IntegerFrom);
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID)
{
    CFPreferencesSetValue(key, value, applicationID, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
}

Boolean CFPreferencesAppSynchronize(CFStringRef applicationID)
{
    // Values of any application are part of what this one reads, but not of what it writes.
    WithDomain(kCFPreferencesAnyApplication, kCFPreferencesCurrentUser, kCFPreferencesAnyHost, false,
        [](PreferencesDomain& domain) {
            domain.forget();
            return true;
        });
    return CFPreferencesSynchronize(applicationID, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
}

CFPropertyListRef CFPreferencesCopyValue(
    CFStringRef key, CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    return WithDomain<CFPropertyListRef>(applicationID, userName, hostName, nullptr,
        [key](PreferencesDomain& domain) { return cf::Retained(domain.value(key)); });
}

CFDictionaryRef CFPreferencesCopyMultiple(
    CFArrayRef keysToFetch, CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    cf::Owned<CFMutableDictionaryRef> all(CopyAll(applicationID, userName, hostName));
    if (!keysToFetch)
        return all.release();
    CFMutableDictionaryRef fetched = CreateEmptyDictionary();
    for (CFIndex i = 0; i < CFArrayGetCount(keysToFetch); ++i) {
        const void* key = CFArrayGetValueAtIndex(keysToFetch, i);
        if (const void* value = CFDictionaryGetValue(all.get(), key))
            CFDictionarySetValue(fetched, key, value);
    }
    return fetched;
}

CFArrayRef CFPreferencesCopyKeyList(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    const cf::Owned<CFMutableDictionaryRef> all(CopyAll(applicationID, userName, hostName));
    std::vector<const void*> keys(static_cast<size_t>(CFDictionaryGetCount(all.get())));
    if (keys.empty())
        return nullptr;
    CFDictionaryGetKeysAndValues(all.get(), keys.data(), nullptr);
    return CFArrayCreate(
        kCFAllocatorDefault, keys.data(), static_cast<CFIndex>(keys.size()), &kCFTypeArrayCallBacks);
}

void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID,
    CFStringRef userName, CFStringRef hostName)
{
    const cf::Owned<CFPropertyListRef> copy(
        value ? CFPropertyListCreateDeepCopy(kCFAllocatorDefault, value, kCFPropertyListImmutable) : nullptr);
    if (value && !copy)
        return;
    WithDomain(applicationID, userName, hostName, false, [&](PreferencesDomain& domain) {
        domain.set(key, copy.get());
        return true;
    });
}

void CFPreferencesSetMultiple(CFDictionaryRef keysToSet, CFArrayRef keysToRemove, CFStringRef applicationID,
    CFStringRef userName, CFStringRef hostName)
{
    const CFIndex removals = keysToRemove ? CFArrayGetCount(keysToRemove) : 0;
    for (CFIndex i = 0; i < removals; ++i)
        CFPreferencesSetValue(static_cast<CFStringRef>(CFArrayGetValueAtIndex(keysToRemove, i)), nullptr,
            applicationID, userName, hostName);
    const auto additions = static_cast<size_t>(keysToSet ? CFDictionaryGetCount(keysToSet) : 0);
    std::vector<const void*> keys(additions);
    std::vector<const void*> values(additions);
    if (additions > 0)
        CFDictionaryGetKeysAndValues(keysToSet, keys.data(), values.data());
    for (size_t i = 0; i < additions; ++i)
        CFPreferencesSetValue(
            static_cast<CFStringRef>(keys[i]), values[i], applicationID, userName, hostName);
}

Boolean CFPreferencesSynchronize(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    return WithDomain(applicationID, userName, hostName, false,
        [](PreferencesDomain& domain) { return domain.synchronize(); });
}
