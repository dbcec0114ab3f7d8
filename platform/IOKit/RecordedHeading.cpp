#include <IOKit/RecordedHeading.h>

#include <IOKit/RecordedValue.h>

#include <CoreFoundation/Runtime.h>

#include <algorithm>
#include <charconv>

namespace iokit {

namespace {

constexpr std::string_view kClassMark = "  <class ";
constexpr uint64_t kNanosecondsPerMillisecond = 1000000;

template <class Number> bool ReadNumber(std::string_view digits, Number& number, int base = 10)
{
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    return error == std::errc() && end == digits.data() + digits.size();
}

/// Takes a part off the front if it is there.
bool Skip(std::string_view& text, std::string_view part)
{
    const bool isThere = text.starts_with(part);
    text.remove_prefix(isThere ? part.size() : 0);
    return isThere;
}

bool IsLocation(std::string_view text)
{
    constexpr std::string_view characters = "0123456789abcdefABCDEF,:.-";
    return !text.empty() && text.find_first_not_of(characters) == std::string_view::npos;
}

std::string Name(std::string_view bytes) { return cf::Utf8(RecordedString(bytes).get()); }

void ReadName(std::string_view text, RecordedEntry& entry)
{
    const size_t at = text.rfind('@');
    const bool hasLocation = at != std::string_view::npos && at > 0 && IsLocation(text.substr(at + 1));
    entry.name = Name(text.substr(0, hasLocation ? at : text.size()));
    entry.location = hasLocation ? text.substr(at + 1) : "";
}

/// @param text as "0 (12 ms)", or "0" where the time is not counted.
bool ReadBusy(std::string_view text, ServiceState& state)
{
    const size_t space = std::min(text.find(' '), text.size());
    if (!ReadNumber(text.substr(0, space), state.busy))
        return false;
    text.remove_prefix(space);
    if (text.empty())
        return true;
    uint64_t milliseconds = 0;
    if (!Skip(text, " (") || !text.ends_with(" ms)")
        || !ReadNumber(text.substr(0, text.size() - 4), milliseconds)
        || milliseconds > UINT64_MAX / kNanosecondsPerMillisecond)
        return false;
    state.busyTime = milliseconds * kNanosecondsPerMillisecond;
    return true;
}

bool ReadState(std::string_view text, RecordedEntry& entry)
{
    ServiceState state = entry.service.value_or(ServiceState { true, true, true, 0, std::nullopt });
    if (text == "registered" || text == "!registered")
        state.registered = text == "registered";
    else if (text == "matched" || text == "!matched")
        state.matched = text == "matched";
    else if (text == "active" || text == "inactive" || text == "!active")
        state.active = text == "active";
    else if (!Skip(text, "busy ") || !ReadBusy(text, state))
        return false;
    entry.service = state;
    return true;
}

bool ReadFact(std::string_view text, RecordedEntry& entry)
{
    if (Skip(text, "id 0x")) {
        uint64_t id = 0;
        if (!ReadNumber(text, id, 16))
            return false;
        entry.id = id;
        return true;
    }
    if (Skip(text, "retain count ") || Skip(text, "retain ")) {
        uint32_t count = 0;
        if (!ReadNumber(text, count))
            return false;
        entry.retainCount = count;
        return true;
    }
    return ReadState(text, entry);
}

/// The classes that are there in full.
/// @param isCut whether the text may have lost its end.
std::string_view Lineage(std::string_view text, bool isCut)
{
    if (!isCut)
        return text;
    const size_t last = text.rfind(':');
    return last != std::string_view::npos ? text.substr(0, text.find(':')) : std::string_view();
}

/// @param text from the class to the end of the line.
bool ReadFacts(std::string_view text, RecordedEntry& entry)
{
    const bool isEnded = text.ends_with('>');
    text.remove_suffix(isEnded ? 1 : 0);
    size_t comma = text.find(", ");
    entry.lineage = Name(Lineage(text.substr(0, comma), !isEnded && comma == std::string_view::npos));
    bool isWhole = isEnded && !entry.lineage.empty();
    while (comma != std::string_view::npos) {
        text.remove_prefix(comma + 2);
        comma = text.find(", ");
        const bool mayBeCut = !isEnded && comma == std::string_view::npos;
        isWhole = !mayBeCut && ReadFact(text.substr(0, comma), entry) && isWhole;
    }
    return isWhole;
}

/// A name whose line ends before the class, without what there is of the mark between them.
std::string_view WithoutMark(std::string_view text)
{
    const size_t start = text.rfind("  ");
    return start != std::string_view::npos && kClassMark.starts_with(text.substr(start))
        ? text.substr(0, start)
        : text;
}

}

bool ReadHeading(std::string_view text, RecordedEntry& entry)
{
    const size_t mark = text.rfind(kClassMark);
    if (mark == std::string_view::npos) {
        entry.name = Name(WithoutMark(text));
        entry.isWhole = false;
        return false;
    }
    ReadName(text.substr(0, mark), entry);
    entry.isWhole = ReadFacts(text.substr(mark + kClassMark.size()), entry);
    return entry.isWhole;
}

}
