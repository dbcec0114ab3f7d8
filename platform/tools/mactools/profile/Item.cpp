#include "profile/Item.h"

#include <CoreFoundation/CoreFoundation.h>
#include <Host/TextReading.h>

#include <algorithm>
#include <type_traits>

namespace profile {

namespace {

constexpr std::time_t kFirstTime = 0;
constexpr std::time_t kLastTime = 253402300799; // of the year 9999

struct TellsSomething {
    bool operator()(int64_t) const { return true; }
    bool operator()(double) const { return true; }
    bool operator()(Date date) const { return date.at > kFirstTime && date.at <= kLastTime; }
    bool operator()(const Item& item) const { return !item.entries().empty(); }
    template <class Container> bool operator()(const Container& container) const
    {
        return !container.empty();
    }
};

struct Maker {
    using Result = cf::Owned<CFTypeRef>;

    Result operator()(const std::string& text) const { return Result(cf::MakeString(text)); }
    Result operator()(int64_t number) const
    {
        return Result(CFNumberCreate(nullptr, kCFNumberSInt64Type, &number));
    }
    Result operator()(double number) const
    {
        return Result(CFNumberCreate(nullptr, kCFNumberFloat64Type, &number));
    }
    Result operator()(Date date) const
    {
        return Result(CFDateCreate(nullptr, static_cast<double>(date.at) - kCFAbsoluteTimeIntervalSince1970));
    }
    Result operator()(const Item& item) const
    {
        CFMutableDictionaryRef const dictionary = CFDictionaryCreateMutable(
            nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
        Result owner(dictionary);
        for (const Entry& entry : item.entries()) {
            const cf::Owned<CFStringRef> key(cf::MakeString(entry.key));
            CFDictionarySetValue(dictionary, key.get(), PropertyListOf(entry.value).get());
        }
        return owner;
    }
    template <class Element> Result operator()(const std::vector<Element>& list) const
    {
        CFMutableArrayRef const array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
        Result owner(array);
        for (const Element& element : list)
            CFArrayAppendValue(array, (*this)(element).get());
        return owner;
    }
};

}

Item::Item(const std::string& name) { set("_name", name); }

Item& Item::set(const char* key, Value value)
{
    const bool isKnown = std::any_of(
        fEntries.begin(), fEntries.end(), [key](const Entry& entry) { return entry.key == key; });
    return isKnown || !std::visit(TellsSomething(), value) ? *this : put(key, std::move(value));
}

Item& Item::setNumber(const char* key, std::optional<int64_t> number)
{
    return number ? set(key, *number) : *this;
}

Item& Item::put(const char* key, Value value)
{
    if (auto* const text = std::get_if<std::string>(&value))
        *text = CleanText(*text);
    if (auto* const texts = std::get_if<std::vector<std::string>>(&value))
        std::transform(texts->begin(), texts->end(), texts->begin(), CleanText);
    fEntries.push_back({ key, std::move(value) });
    return *this;
}

void Item::remove(const char* key)
{
    std::erase_if(fEntries, [key](const Entry& entry) { return entry.key == key; });
    for (Entry& entry : fEntries) {
        if (auto* const inner = std::get_if<Item>(&entry.value))
            inner->remove(key);
        if (auto* const list = std::get_if<List>(&entry.value))
            std::for_each(list->begin(), list->end(), [key](Item& item) { item.remove(key); });
    }
}

std::string Item::text(std::string_view key) const
{
    for (const Entry& entry : fEntries) {
        const auto* const text = std::get_if<std::string>(&entry.value);
        if (entry.key == key && text != nullptr)
            return *text;
    }
    return "";
}

cf::Owned<CFTypeRef> PropertyListOf(const Item::Value& value) { return std::visit(Maker(), value); }

} // namespace profile
