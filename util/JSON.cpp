#include "util/JSON.h"

#include "util/CFRef.h"
#include "util/CFText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

/// Of each dictionary and array with what it holds, in bytes, with a zero at the end.
constexpr size_t kTextLimit = 1048576;

/// A dictionary or array that is being written.
struct Level {
    CFTypeRef container;
    size_t start; ///< of its text
    size_t firstItem; ///< of its items in the list of all
    size_t count; ///< of its values
    bool isDictionary;
    size_t next = 0; ///< of the values
};

/// Writes values one behind the other into one text, in which each level's limit is counted from where it begins. Levels are
/// kept in a list of our own: they can be as many as the text has bytes.
class Writer {
public:
    explicit Writer(std::string& text)
        : fText(text)
    {
    }

    /// @return whether the value, with all that it holds, could be written.
    bool write(CFTypeRef object)
    {
        if (!begin(object))
            return false;
        while (!fLevels.empty()) {
            if (!step())
                return false;
        }
        return true;
    }

private:
    bool begin(CFTypeRef object);
    bool beginDictionary(CFDictionaryRef dictionary);
    bool beginArray(CFArrayRef array);
    bool enter(CFTypeRef container, size_t count, bool isDictionary);
    bool step();
    bool leave();
    bool writeNumber(CFNumberRef number);
    void writeString(CFStringRef string);
    void append(std::string_view piece);
    bool hasRoomFor(size_t size) const { return used() + size < kTextLimit; }
    size_t used() const { return fText.size() - (fLevels.empty() ? 0 : fLevels.back().start); }

    std::string& fText;
    std::vector<Level> fLevels {};
    std::vector<const void*> fItems {}; ///< of all levels: the values, behind them the keys if there are any
};

/// As much as fits into the level that is being written.
void Writer::append(std::string_view piece)
{
    fText.append(piece.substr(0, kTextLimit - 1 - std::min(used(), kTextLimit - 1)));
}

/// @return false for one that lies within itself, whose text would have no end. Looking only at depths that are powers of two
/// finds it all the same, a few rounds later, and the looking stays in proportion to the depth.
bool Writer::enter(CFTypeRef container, size_t count, bool isDictionary)
{
    const auto isContainer = [container](const Level& level) { return level.container == container; };
    if (std::has_single_bit(fLevels.size()) && std::any_of(fLevels.begin(), fLevels.end(), isContainer))
        return false;
    fLevels.push_back({ container, fText.size(), fItems.size(), count, isDictionary });
    fText += isDictionary ? '{' : '[';
    return true;
}

bool Writer::beginDictionary(CFDictionaryRef dictionary)
{
    const auto count = static_cast<size_t>(CFDictionaryGetCount(dictionary));
    if (!enter(dictionary, count, true))
        return false;
    const size_t first = fItems.size();
    fItems.resize(first + 2 * count);
    CFDictionaryGetKeysAndValues(dictionary, fItems.data() + first + count, fItems.data() + first);
    return true;
}

bool Writer::beginArray(CFArrayRef array)
{
    const CFIndex count = CFArrayGetCount(array);
    if (!enter(array, static_cast<size_t>(count), false))
        return false;
    const size_t first = fItems.size();
    fItems.resize(first + static_cast<size_t>(count));
    CFArrayGetValues(array, CFRangeMake(0, count), fItems.data() + first);
    return true;
}

/// Writes a value, or the beginning of one that others follow in. What has no form is left out.
bool Writer::begin(CFTypeRef object)
{
    if (object == nullptr) {
        append("null");
        return true;
    }
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFDictionaryGetTypeID())
        return beginDictionary(static_cast<CFDictionaryRef>(object));
    if (type == CFArrayGetTypeID())
        return beginArray(static_cast<CFArrayRef>(object));
    if (type == CFNumberGetTypeID())
        return writeNumber(static_cast<CFNumberRef>(object));
    if (type == CFStringGetTypeID())
        writeString(static_cast<CFStringRef>(object));
    else if (type == CFBooleanGetTypeID())
        append(CFBooleanGetValue(static_cast<CFBooleanRef>(object)) ? "true" : "false");
    else if (type == CFDateGetTypeID())
        append("some date");
    return true;
}

/// Writes the next value of the innermost level, or ends the level.
bool Writer::step()
{
    Level& level = fLevels.back();
    if (level.next == level.count)
        return leave();
    // What does not fit into the outermost level will not fit once the levels within are whole.
    if (fLevels.size() > 1 && fText.size() - fLevels.front().start >= kTextLimit)
        return false;
    const size_t item = level.firstItem + level.next;
    if (level.next++ > 0)
        append(",");
    if (level.isDictionary) {
        const auto key = CFDynamicCast<CFStringRef>(fItems[item + level.count], CFStringGetTypeID());
        if (key == nullptr)
            return false;
        writeString(key);
        append(":");
    }
    return begin(fItems[item]);
}

bool Writer::leave()
{
    const Level level = fLevels.back();
    append(level.isDictionary ? "}" : "]");
    fLevels.pop_back();
    fItems.resize(level.firstItem);
    return fLevels.empty() || used() < kTextLimit;
}

bool Writer::writeNumber(CFNumberRef number)
{
    std::array<char, 400> text {}; // the largest number with six decimals
    int size = 0;
    if (!CFNumberIsFloatType(number)) {
        long long whole = 0;
        if (!CFNumberGetValue(number, kCFNumberLongLongType, &whole))
            return false;
        size = std::snprintf(text.data(), text.size(), "%lld", whole);
    } else {
        double real = 0;
        const CFIndex bytes = CFNumberGetByteSize(number);
        if (bytes != sizeof(double) && bytes != sizeof(float))
            return false;
        if (!CFNumberGetValue(number, kCFNumberDoubleType, &real))
            return false;
        size = std::snprintf(text.data(), text.size(), "%f", real);
    }
    append({ text.data(), static_cast<size_t>(size) });
    return true;
}

/// One that does not fit whole is left out between its quotation marks.
void Writer::writeString(CFStringRef string)
{
    append("\"");
    if (const char* const ascii = CFStringGetCStringPtr(string, kCFStringEncodingUTF8); ascii != nullptr) {
        const std::string_view text = ascii;
        if (hasRoomFor(text.size()))
            fText += text;
    } else if (const std::string text = StdString(string); hasRoomFor(std::strlen(text.c_str()))) {
        fText += text.c_str(); // as far as a C string goes
    }
    append("\"");
}

bool CreateData(CFTypeRef container, CFDataRef* data)
{
    std::string text;
    if (container == nullptr || data == nullptr || !Writer(text).write(container))
        return false;
    *data = CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.c_str()),
        static_cast<CFIndex>(text.size() + 1));
    return *data != nullptr;
}

}

bool CreateJSON_DataFromDictionary(CFDictionaryRef dictionary, CFDataRef* data)
{
    return CreateData(dictionary, data);
}

bool CreateJSON_DataFromArray(CFArrayRef array, CFDataRef* data) { return CreateData(array, data); }

bool ConvertObjectToJSON(CFTypeRef object, char* text)
{
    if (text == nullptr)
        return false;
    std::string written = text;
    const bool isWritten = Writer(written).write(object) && written.size() < kTextLimit;
    if (isWritten)
        std::memcpy(text, written.c_str(), written.size() + 1);
    return isWritten;
}
