#include "util/JSON.h"

#include "util/CFRef.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

/// Of each dictionary and array with what it holds, in bytes, with a zero at the end.
constexpr size_t kTextLimit = 1048576;

/// Text that becomes a data object without being copied once more.
class TextBuffer {
public:
    TextBuffer() = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;
    ~TextBuffer() { free(fBytes); }

    size_t size() const { return fSize; }
    const char* bytes() const { return fBytes; }
    void append(char c)
    {
        *room(1) = c;
        ++fSize;
    }
    void append(std::string_view piece)
    {
        if (piece.empty())
            return; // there may be no room yet
        std::memcpy(room(piece.size()), piece.data(), piece.size());
        fSize += piece.size();
    }
    void appendQuoted(std::string_view piece)
    {
        char* const quoted = room(piece.size() + 2);
        quoted[0] = '"';
        std::memcpy(quoted + 1, piece.data(), piece.size());
        quoted[piece.size() + 1] = '"';
        fSize += piece.size() + 2;
    }
    /// @return a new object with the text, which is gone from here.
    CFDataRef createData()
    {
        const auto size = static_cast<CFIndex>(std::exchange(fSize, 0));
        fCapacity = 0;
        return CFDataCreateWithBytesNoCopy(kCFAllocatorDefault,
            reinterpret_cast<UInt8*>(std::exchange(fBytes, nullptr)), size, kCFAllocatorMalloc);
    }

private:
    char* room(size_t size)
    {
        if (size > fCapacity - fSize)
            grow(size);
        return fBytes + fSize;
    }
    void grow(size_t more)
    {
        const size_t capacity = std::max({ fCapacity * 2, fSize + more, size_t { 256 } });
        void* const bytes = realloc(fBytes, capacity);
        if (bytes == nullptr)
            throw std::bad_alloc();
        fBytes = static_cast<char*>(bytes);
        fCapacity = capacity;
    }

    char* fBytes = nullptr;
    size_t fSize = 0;
    size_t fCapacity = 0;
};

/// A dictionary or array that is being written.
struct Level {
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
    /// @param before the length of the text that this one is to be appended to.
    Writer(TextBuffer& text, size_t before)
        : fText(text)
        , fBefore(before)
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
    bool writeReal(double number);
    bool writeString(CFStringRef string);
    bool appendText(std::string_view text);
    bool append(std::string_view piece);
    bool append(char c) { return room() > 0 ? fText.append(c), true : append(std::string_view(&c, 1)); }
    /// What the text of the level has.
    size_t used() const
    {
        return fLevels.empty() ? fBefore + fText.size() : fText.size() - fLevels.back().start;
    }
    /// What the whole text can still take.
    size_t room() const { return kTextLimit - 1 - fBefore - fText.size(); }

    TextBuffer& fText;
    const size_t fBefore;
    std::vector<Level> fLevels {};
    std::vector<const void*> fItems {}; ///< of all levels: the values, behind them the keys if there are any
    CFTypeRef fMark = nullptr; ///< the open level that is kept in mind
    size_t fMarkDepth = 0; ///< how many levels it lies in
    std::vector<char> fWide {}; ///< the last string that was not all ASCII
};

/// Appends a piece. The outermost text takes as much as fits, and what does not fit is left out.
/// @return false when it does not fit and the text is one within another, which then cannot take it either.
bool Writer::append(std::string_view piece)
{
    const bool fits = piece.size() <= room();
    fText.append(piece.substr(0, room()));
    return fits || fLevels.empty() || fBefore + fLevels.back().start == 0;
}

/// @return false for one that lies within itself, whose text would have no end. To find that, one open level is kept in mind:
/// the last one at a depth that is a power of two. Going round in circles comes back to it sooner or later.
bool Writer::enter(CFTypeRef container, size_t count, bool isDictionary)
{
    if (container == fMark)
        return false;
    if (std::has_single_bit(fLevels.size() + 1)) {
        fMark = container;
        fMarkDepth = fLevels.size();
    }
    fLevels.push_back({ fText.size(), fItems.size(), count, isDictionary });
    return append(isDictionary ? '{' : '[');
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
    if (object == nullptr)
        return append("null");
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFStringGetTypeID())
        return writeString(static_cast<CFStringRef>(object));
    if (type == CFNumberGetTypeID())
        return writeNumber(static_cast<CFNumberRef>(object));
    if (type == CFDictionaryGetTypeID())
        return beginDictionary(static_cast<CFDictionaryRef>(object));
    if (type == CFArrayGetTypeID())
        return beginArray(static_cast<CFArrayRef>(object));
    if (type == CFBooleanGetTypeID())
        return append(CFBooleanGetValue(static_cast<CFBooleanRef>(object)) ? "true" : "false");
    return type != CFDateGetTypeID() || append("some date");
}

/// Writes the next value of the innermost level, or ends the level.
bool Writer::step()
{
    Level& level = fLevels.back();
    if (level.next == level.count)
        return leave();
    const size_t item = level.firstItem + level.next;
    if (level.next++ > 0 && !append(','))
        return false;
    if (level.isDictionary) {
        const auto key = CFDynamicCast<CFStringRef>(fItems[item + level.count], CFStringGetTypeID());
        if (key == nullptr || !writeString(key) || !append(':'))
            return false;
    }
    return begin(fItems[item]);
}

bool Writer::leave()
{
    const Level& level = fLevels.back();
    if (!append(level.isDictionary ? '}' : ']'))
        return false;
    fItems.resize(level.firstItem);
    fLevels.pop_back();
    if (fLevels.size() == fMarkDepth)
        fMark = nullptr; // it is left: meeting it again is no circle
    return true;
}

bool Writer::writeNumber(CFNumberRef number)
{
    if (!CFNumberIsFloatType(number)) {
        long long whole = 0;
        return CFNumberGetValue(number, kCFNumberLongLongType, &whole) && append(std::to_string(whole));
    }
    double real = 0;
    const CFIndex size = CFNumberGetByteSize(number);
    if (size != sizeof(double) && size != sizeof(float))
        return false;
    return CFNumberGetValue(number, kCFNumberDoubleType, &real) && writeReal(real);
}

/// Six decimals, as "%f" has them.
bool Writer::writeReal(double number)
{
    std::array<char, 400> text {}; // the largest number with six decimals
    const double millionths = std::fabs(number) * 1e6;
    const double nearest = std::floor(millionths + 0.5);
    // So few digits are exact enough to be rounded without a library's care, unless they are about half way.
    if (!(millionths < 1e15 && std::fabs(millionths - nearest) < 0.4)) {
        const int size = std::snprintf(text.data(), text.size(), "%f", number);
        const std::string_view printed(text.data(), static_cast<size_t>(size));
        if (!std::isfinite(number))
            return append(printed);
        // What stands between the digits is the locale's.
        return append(printed.substr(0, printed.find_first_not_of("-0123456789"))) && append('.')
            && append(printed.substr(printed.size() - 6));
    }
    auto rest = static_cast<uint64_t>(nearest);
    size_t start = text.size();
    for (int digit = 0; digit < 7 || rest > 0; ++digit, rest /= 10) {
        if (digit == 6)
            text[--start] = '.';
        text[--start] = static_cast<char>('0' + rest % 10);
    }
    if (std::signbit(number))
        text[--start] = '-';
    return append({ text.data() + start, text.size() - start });
}

bool Writer::writeString(CFStringRef string)
{
    const CFRange whole = CFRangeMake(0, CFStringGetLength(string));
    if (used() + 1 + static_cast<size_t>(whole.length) >= kTextLimit)
        return appendText(""); // each of its units takes a byte or more
    if (const char* const ascii = CFStringGetCStringPtr(string, kCFStringEncodingUTF8); ascii != nullptr)
        return appendText(ascii);
    fWide.resize(static_cast<size_t>(CFStringGetMaximumSizeForEncoding(whole.length, kCFStringEncodingUTF8)));
    CFIndex size = 0;
    const CFIndex converted = CFStringGetBytes(string, whole, kCFStringEncodingUTF8, 0, false,
        reinterpret_cast<UInt8*>(fWide.data()), static_cast<CFIndex>(fWide.size()), &size);
    // As far as a C string goes; nothing of one that has no form in UTF-8.
    return appendText(
        { fWide.data(), converted == whole.length ? strnlen(fWide.data(), static_cast<size_t>(size)) : 0 });
}

/// A text that does not fit whole into its level is left out between its quotation marks.
bool Writer::appendText(std::string_view text)
{
    if (text.size() + 2 <= room()) {
        fText.appendQuoted(text);
        return true;
    }
    if (!append('"'))
        return false;
    return (used() + text.size() >= kTextLimit || append(text)) && append('"');
}

bool CreateData(CFTypeRef container, CFDataRef* data)
{
    TextBuffer text;
    if (container == nullptr || data == nullptr || !Writer(text, 0).write(container))
        return false;
    text.append('\0');
    *data = text.createData();
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
    const size_t before = std::strlen(text);
    if (before >= kTextLimit)
        return false;
    TextBuffer written;
    if (!Writer(written, before).write(object))
        return false;
    written.append('\0');
    std::memcpy(text + before, written.bytes(), written.size());
    return true;
}
