#include "KeyReader.h"

namespace launchd {

namespace {
/// @return the UTF-8 text of a value that may be of any type.
std::optional<std::string> TextOfValue(CFTypeRef value)
{
    if (CFGetTypeID(value) != CFStringGetTypeID())
        return std::nullopt;
    return TextOf(static_cast<CFStringRef>(value));
}
}

void KeyReader::refuse(const std::string& problem)
{
    if (fProblem.empty())
        fProblem = problem;
}

CFTypeRef KeyReader::value(const char* key) const
{
    const CFOwned<CFStringRef> name = MakeText(key);
    return name ? CFDictionaryGetValue(fDictionary, name.get()) : nullptr;
}

CFTypeRef KeyReader::valueOfType(const char* key, CFTypeID type, const char* typeName)
{
    const CFTypeRef found = value(key);
    if (!found || CFGetTypeID(found) == type)
        return found;
    refuse(std::string(key) + " is not " + typeName);
    return nullptr;
}

bool KeyReader::boolean(const char* key, bool fallback)
{
    const CFTypeRef found = valueOfType(key, CFBooleanGetTypeID(), "a boolean");
    return found ? CFBooleanGetValue(static_cast<CFBooleanRef>(found)) : fallback;
}

long long KeyReader::integer(const char* key, long long fallback, long long least, long long most)
{
    const auto* number = static_cast<CFNumberRef>(valueOfType(key, CFNumberGetTypeID(), "an integer"));
    if (!number)
        return fallback;
    long long found = 0;
    const bool whole
        = !CFNumberIsFloatType(number) && CFNumberGetValue(number, kCFNumberLongLongType, &found);
    if (whole && found >= least && found <= most)
        return found;
    refuse(std::string(key) + " is not an integer from " + std::to_string(least) + " to "
        + std::to_string(most));
    return fallback;
}

std::string KeyReader::text(const char* key)
{
    const CFTypeRef found = valueOfType(key, CFStringGetTypeID(), "a string");
    if (!found)
        return {};
    const std::optional<std::string> utf8 = TextOfValue(found);
    if (!utf8)
        refuse(std::string(key) + " is not valid text");
    return utf8.value_or("");
}

std::vector<std::string> KeyReader::texts(const char* key)
{
    const auto* array = static_cast<CFArrayRef>(valueOfType(key, CFArrayGetTypeID(), "an array of strings"));
    std::vector<std::string> all;
    for (CFIndex index = 0; array && index < CFArrayGetCount(array); ++index) {
        const std::optional<std::string> utf8 = TextOfValue(CFArrayGetValueAtIndex(array, index));
        if (!utf8)
            refuse(std::string(key) + " is not an array of strings");
        all.push_back(utf8.value_or(""));
    }
    return all;
}

std::map<std::string, std::string> KeyReader::textMap(const char* key)
{
    const CFTypeRef found = valueOfType(key, CFDictionaryGetTypeID(), "a dictionary of strings");
    if (!found)
        return {};
    const auto* dictionary = static_cast<CFDictionaryRef>(found);
    const auto count = static_cast<size_t>(CFDictionaryGetCount(dictionary));
    std::vector<const void*> names(count);
    std::vector<const void*> values(count);
    CFDictionaryGetKeysAndValues(dictionary, names.data(), values.data());

    std::map<std::string, std::string> all;
    for (size_t index = 0; index < count; ++index) {
        const std::optional<std::string> name = TextOfValue(names[index]);
        const std::optional<std::string> utf8 = TextOfValue(values[index]);
        if (!name || !utf8)
            refuse(std::string(key) + " is not a dictionary of strings");
        else
            all.emplace(*name, *utf8);
    }
    return all;
}

std::string KeyReader::bytes(const char* key)
{
    const CFTypeRef found = valueOfType(key, CFDataGetTypeID(), "data");
    if (!found)
        return {};
    const auto* data = static_cast<CFDataRef>(found);
    return { reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
        static_cast<size_t>(CFDataGetLength(data)) };
}

} // namespace launchd
