#include <IOKit/RecordedArchive.h>

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>
#include <IOKit/Properties.h>
#include <IOKit/RecordedEntry.h>
#include <IOKit/RecordedValue.h>
#include <IOKit/RecordedXML.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace iokit {

namespace {

constexpr std::string_view kChildrenKey = "IORegistryEntryChildren";

// What an entry's dictionary tells of the entry itself. All answer whether the value is one that can be.

bool TakeText(std::string& text, CFTypeRef value)
{
    if (CFGetTypeID(value) != CFStringGetTypeID())
        return false;
    text = cf::TextOf(value);
    return true;
}

bool TakeID(RecordedEntry& entry, CFTypeRef value)
{
    entry.id = NumberOf(value);
    return entry.id.has_value();
}

bool TakeRetainCount(RecordedEntry& entry, CFTypeRef value)
{
    const std::optional<uint64_t> count = NumberOf(value);
    if (!count || *count > UINT32_MAX)
        return false;
    entry.retainCount = static_cast<uint32_t>(*count);
    return true;
}

ServiceState& ServiceOf(RecordedEntry& entry)
{
    if (!entry.service)
        entry.service = ServiceState { true, true, true, 0, std::nullopt };
    return *entry.service;
}

bool TakeState(RecordedEntry& entry, CFTypeRef value)
{
    constexpr uint64_t inactive = 1;
    constexpr uint64_t registered = 2;
    constexpr uint64_t matched = 4;
    const std::optional<uint64_t> bits = NumberOf(value);
    if (!bits)
        return false;
    ServiceState& state = ServiceOf(entry);
    state.active = (*bits & inactive) == 0;
    state.registered = (*bits & registered) != 0;
    state.matched = (*bits & matched) != 0;
    return true;
}

bool TakeBusyState(RecordedEntry& entry, CFTypeRef value)
{
    const std::optional<uint64_t> busy = NumberOf(value);
    if (!busy || *busy > UINT32_MAX)
        return false;
    ServiceOf(entry).busy = static_cast<uint32_t>(*busy);
    return true;
}

bool TakeBusyTime(RecordedEntry& entry, CFTypeRef value)
{
    const std::optional<uint64_t> time = NumberOf(value);
    if (time)
        ServiceOf(entry).busyTime = time;
    return time.has_value();
}

struct Fact {
    std::string_view key;
    bool (*take)(RecordedEntry& entry, CFTypeRef value);
};
constexpr std::array kFacts {
    Fact { "IOObjectClass",
        [](RecordedEntry& entry, CFTypeRef value) { return TakeText(entry.lineage, value); } },
    Fact { "IORegistryEntryName",
        [](RecordedEntry& entry, CFTypeRef value) { return TakeText(entry.name, value); } },
    Fact { "IORegistryEntryLocation",
        [](RecordedEntry& entry, CFTypeRef value) { return TakeText(entry.location, value); } },
    Fact { "IORegistryEntryID", TakeID },
    Fact { "IOObjectRetainCount", TakeRetainCount },
    Fact { "IOServiceState", TakeState },
    Fact { "IOServiceBusyState", TakeBusyState },
    Fact { "IOServiceBusyTime", TakeBusyTime },
};

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view Trimmed(std::string_view text)
{
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

cf::Owned<CFTypeRef> Integer(std::string_view text)
{
    text = Trimmed(text);
    const bool isNegative = text.starts_with('-');
    text.remove_prefix(isNegative ? 1 : 0);
    const bool isHexadecimal = text.starts_with("0x");
    text.remove_prefix(isHexadecimal ? 2 : 0);
    uint64_t number = 0;
    const auto [end, error]
        = std::from_chars(text.data(), text.data() + text.size(), number, isHexadecimal ? 16 : 10);
    if (error != std::errc() || end != text.data() + text.size())
        return nullptr;
    return RecordedNumber(isNegative ? 0 - number : number);
}

cf::Owned<CFTypeRef> Real(std::string_view text)
{
    text = Trimmed(text);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return nullptr;
    return cf::Owned<CFTypeRef>(CFNumberCreate(nullptr, kCFNumberFloat64Type, &number));
}

/// Data in base 64.
cf::Owned<CFTypeRef> Data(std::string_view text)
{
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    uint32_t bits = 0;
    unsigned count = 0;
    for (const char c : text) {
        if (IsBlank(c) || c == '=')
            continue;
        const size_t digit = digits.find(c);
        if (digit == std::string_view::npos)
            return nullptr;
        bits = bits << 6U | static_cast<uint32_t>(digit);
        count = (count + 1) % 4;
        if (count != 1)
            bytes += static_cast<char>(bits >> (count == 0 ? 0U : 8U - 2U * count) & 0xffU);
    }
    return count == 1 ? nullptr : RecordedData(bytes);
}

cf::Owned<CFTypeRef> Flag(bool value)
{
    return cf::Owned<CFTypeRef>(cf::Retained<CFTypeRef>(value ? kCFBooleanTrue : kCFBooleanFalse));
}

struct Leaf {
    std::string_view element;
    cf::Owned<CFTypeRef> (*make)(std::string_view text);
};
constexpr std::array kLeaves {
    Leaf { "string", [](std::string_view text) { return cf::Owned<CFTypeRef>(RecordedString(text)); } },
    Leaf { "integer", Integer },
    Leaf { "data", Data },
    Leaf { "true", [](std::string_view) { return Flag(true); } },
    Leaf { "false", [](std::string_view) { return Flag(false); } },
    Leaf { "real", Real },
};

class ArchiveReader : public XMLHandler {
public:
    std::optional<Recording> read(std::string_view bytes)
    {
        if (!ReadXML(bytes, *this))
            ++fUnreadable;
        if (fValue.depth() > 0)
            addProperty(fValue.take());
        return fHasFacts ? MakeRecording(std::move(fEntries), fUnreadable) : std::nullopt;
    }

    void start(std::string_view element) override
    {
        fText.clear();
        if (fIgnored > 0)
            ++fIgnored;
        else if (element == "dict")
            startDictionary();
        else if (element == "array")
            startArray();
    }

    void text(std::string_view characters) override { fText += characters; }

    void end(std::string_view element) override
    {
        if (fIgnored > 0)
            --fIgnored;
        else if (element == "dict" || element == "array")
            endContainer();
        else if (element == "key")
            endKey();
        else if (element != "plist")
            endLeaf(element);
    }

    void skipped() override { ++fUnreadable; }

private:
    enum class Kind { Entry, Entries };

    struct Level {
        Kind kind;
        size_t entry; ///< its place among the entries; of a list, the one that the list's are below
        CFStringRef key; ///< of an entry, that of what comes next; null for none
        bool isChildren; ///< whether that key is the one of the entries below
    };

    bool isIn(Kind kind) const { return !fLevels.empty() && fLevels.back().kind == kind; }

    void startDictionary()
    {
        if (isIn(Kind::Entry)) {
            startValue(ValueMaker::Kind::Dictionary);
            return;
        }
        RecordedEntry entry;
        entry.parent = fLevels.empty() ? RecordedEntry::kNone : fLevels.back().entry;
        fLevels.push_back({ Kind::Entry, fEntries.size(), nullptr, false });
        fEntries.push_back(std::move(entry));
    }

    void startArray()
    {
        if (isIn(Kind::Entry) && (fValue.depth() > 0 || !fLevels.back().isChildren))
            startValue(ValueMaker::Kind::Array);
        else if (isIn(Kind::Entries))
            ignore();
        else
            fLevels.push_back({ Kind::Entries, fLevels.empty() ? RecordedEntry::kNone : fLevels.back().entry,
                nullptr, false });
    }

    void startValue(ValueMaker::Kind kind) { fUnreadable += fValue.begin(kind) ? 0 : 1; }

    /// Leaves out the element that has just started, and all in it.
    void ignore()
    {
        ++fUnreadable;
        fIgnored = 1;
    }

    void endContainer()
    {
        if (fValue.depth() == 0) {
            fLevels.pop_back();
            return;
        }
        if (fValue.depth() == 1)
            addProperty(fValue.take());
        else
            fValue.end();
    }

    void endKey()
    {
        if (fValue.depth() > 0 && fValue.kind() == ValueMaker::Kind::Dictionary) {
            fValue.setKey(fText);
        } else if (fValue.depth() > 0 || !isIn(Kind::Entry)) {
            ++fUnreadable;
        } else {
            fLevels.back().key = fKeys.key(fText);
            fLevels.back().isChildren = fText == kChildrenKey;
        }
    }

    void endLeaf(std::string_view element)
    {
        const auto* const leaf = std::find_if(
            kLeaves.begin(), kLeaves.end(), [element](const Leaf& one) { return one.element == element; });
        cf::Owned<CFTypeRef> value = leaf != kLeaves.end() ? leaf->make(fText) : nullptr;
        if (fValue.depth() > 0)
            fUnreadable += fValue.add(std::move(value)) ? 0 : 1;
        else
            addProperty(std::move(value));
    }

    /// @param value of the entry that is being read; null where it cannot be read.
    void addProperty(cf::Owned<CFTypeRef> value)
    {
        const CFStringRef key = isIn(Kind::Entry) ? std::exchange(fLevels.back().key, nullptr) : nullptr;
        if (!value || key == nullptr || fLevels.back().isChildren) {
            ++fUnreadable;
            return;
        }
        RecordedEntry& entry = fEntries[fLevels.back().entry];
        const std::string name = cf::Utf8(key);
        const auto* const fact = std::find_if(
            kFacts.begin(), kFacts.end(), [&name](const Fact& one) { return one.key == name; });
        if (fact == kFacts.end()) {
            setProperty(entry, key, value.get());
            return;
        }
        fHasFacts = true;
        fUnreadable += fact->take(entry, value.get()) ? 0 : 1;
    }

    static void setProperty(RecordedEntry& entry, CFStringRef key, CFTypeRef value)
    {
        if (!entry.properties)
            entry.properties.reset(CFDictionaryCreateMutable(
                nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
        CFDictionarySetValue(entry.properties.get(), key, value);
    }

    Keys fKeys;
    ValueMaker fValue { fKeys }; ///< what is being read of a property
    std::vector<RecordedEntry> fEntries;
    std::vector<Level> fLevels;
    std::string fText;
    size_t fIgnored = 0; ///< elements that are being left out, each in the one before
    size_t fUnreadable = 0;
    bool fHasFacts = false;
};

}

std::optional<Recording> ReadRegistryArchive(std::string_view bytes) { return ArchiveReader().read(bytes); }

}
