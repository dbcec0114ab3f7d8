#include "ui/framework/Description.h"

#include "util/CFText.h"

#include <QByteArray>
#include <algorithm>
#include <cctype>
#include <map>
#include <vector>

namespace {

/// A text inside a collection: as it is when it is one plain word, else in quotes.
std::string Element(CFTypeRef object)
{
    std::string text = Description(object);
    const bool isPlain = !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return std::isalnum(c) != 0 || c >= 0x80;
    });
    if (isPlain || CFGetTypeID(object) != CFStringGetTypeID())
        return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

/// All bytes: the system's own description leaves out those in the middle.
std::string DataDescription(CFDataRef data)
{
    const auto* const bytes = reinterpret_cast<const char*>(CFDataGetBytePtr(data));
    const QByteArray hex = QByteArray::fromRawData(bytes, CFDataGetLength(data)).toHex();
    return "<" + hex.toStdString() + ">";
}

std::string ArrayDescription(CFArrayRef array)
{
    std::string text = "(";
    for (CFIndex index = 0; index < CFArrayGetCount(array); ++index)
        text += (index > 0 ? ", " : "") + Element(CFArrayGetValueAtIndex(array, index));
    return text + ")";
}

std::string DictionaryDescription(CFDictionaryRef dictionary)
{
    std::vector<const void*> keys(static_cast<size_t>(CFDictionaryGetCount(dictionary)));
    std::vector<const void*> values(keys.size());
    CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
    std::multimap<std::string, std::string> sorted;
    for (size_t index = 0; index < keys.size(); ++index)
        sorted.emplace(Element(keys[index]), Element(values[index]));
    std::string text = "{";
    for (const auto& [key, value] : sorted)
        text.append(key).append(" = ").append(value).append("; ");
    return text + "}";
}

}

std::string Description(CFTypeRef object)
{
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFStringGetTypeID())
        return StdString(static_cast<CFStringRef>(object));
    if (type == CFBooleanGetTypeID())
        return CFBooleanGetValue(static_cast<CFBooleanRef>(object)) ? "1" : "0";
    if (type == CFArrayGetTypeID())
        return ArrayDescription(static_cast<CFArrayRef>(object));
    if (type == CFDictionaryGetTypeID())
        return DictionaryDescription(static_cast<CFDictionaryRef>(object));
    if (type == CFDataGetTypeID())
        return DataDescription(static_cast<CFDataRef>(object));
    const CFRef<CFStringRef> text(
        CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%@"), object));
    return StdString(text.get());
}
