#include "util/StringConversions.h"

#include "util/CFRef.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr size_t kLongestNumber = 255;

/// Copies as much as fits and ends it with a zero byte.
void CopyBounded(const char* text, char* buffer, size_t capacity)
{
    if (buffer == nullptr || capacity == 0)
        return;
    const std::string_view fitting = std::string_view(text).substr(0, capacity - 1);
    std::memset(buffer, 0, capacity);
    std::memcpy(buffer, fitting.data(), fitting.size());
}

struct SizeUnit {
    uint64_t limit; ///< sizes below it are shown in this unit
    int shift; ///< the unit is 2 to this many bytes
    int32_t power;
};
constexpr SizeUnit kSizeUnits[] = {
    { 1024000ULL, 10, 3 },
    { 1048576000ULL, 20, 6 },
    { 1073741824000ULL, 30, 9 },
    { 1099511627776000ULL, 40, 12 },
};

struct UnitName {
    int32_t power;
    const char* text;
};
/// The last is never made, and stands here for whoever calls a size of that power by its name.
constexpr UnitName kUnitNames[] = { { 3, " KB" }, { 6, " MB" }, { 9, " GB" }, { 12, " TB" }, { 15, " EB" } };

struct UnitLetter {
    char letter;
    int shift;
};
constexpr UnitLetter kUnitLetters[] = { { 'k', 10 }, { 'm', 20 }, { 'g', 30 }, { 't', 40 }, { 'p', 50 } };

/// As atoll() reads it, but with an end where numbers become too large.
uint64_t DecimalNumber(const char* text) { return static_cast<uint64_t>(std::strtoll(text, nullptr, 10)); }

/// The number of a size as it is shown: three digits, but a fraction is never rounded into a fourth.
void FormatSize(uint64_t bytes, int shift, char* text, size_t size)
{
    const double value = static_cast<double>(bytes) / static_cast<double>(1ULL << shift);
    const uint64_t whole = bytes >> shift;
    if (whole >= 100)
        std::snprintf(text, size, "%d", static_cast<int>(value));
    else
        std::snprintf(text, size, whole < 10 ? "%4.2f" : "%#4.1f", value);
}

/// @param bytes in the order of writing. @param separator 0 for none.
template <class Iterator> void WriteHexPairs(Iterator bytes, Iterator end, char* buffer, char separator)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    for (bool isFirst = true; bytes != end; ++bytes, isFirst = false) {
        if (separator != 0 && !isFirst)
            *buffer++ = separator;
        *buffer++ = digits[*bytes >> 4];
        *buffer++ = digits[*bytes & 0x0F];
    }
    *buffer = 0;
}

std::array<uint8_t, 8> EightBytes(const void* bytes)
{
    std::array<uint8_t, 8> copy {};
    std::memcpy(copy.data(), bytes, copy.size());
    return copy;
}

/// @param pattern null for the styles' own.
void WriteDate(
    uint32_t seconds, CFDateFormatterStyle dateStyle, CFStringRef pattern, char* buffer, size_t capacity)
{
    if (buffer == nullptr || capacity == 0)
        return;
    std::memset(buffer, 0, capacity);
    const CFRef<CFLocaleRef> locale(CFLocaleCopyCurrent());
    const CFRef<CFDateFormatterRef> formatter(
        CFDateFormatterCreate(kCFAllocatorDefault, locale.get(), dateStyle, kCFDateFormatterMediumStyle));
    const CFRef<CFDateRef> date(CFDateCreate(kCFAllocatorDefault, seconds));
    if (!formatter || !date)
        return;
    if (pattern != nullptr)
        CFDateFormatterSetFormat(formatter.get(), pattern);
    const CFRef<CFStringRef> text(
        CFDateFormatterCreateStringWithDate(kCFAllocatorDefault, formatter.get(), date.get()));
    if (!text
        || !CFStringGetCString(text.get(), buffer, static_cast<CFIndex>(capacity), kCFStringEncodingUTF8))
        std::memset(buffer, 0, capacity);
}

const char* BusName(int32_t busType)
{
    static constexpr const char* names[]
        = { "SATA", "ATA", "FireWire", "SCSI", "SAS", "Fibre Channel", "USB2", "USB3" };
    constexpr int32_t first = 2;
    const bool isKnown = busType >= first && busType < first + static_cast<int32_t>(std::size(names));
    return isKnown ? names[busType - first] : "Unknown Bus Type";
}

/// The text that an object is compared by; nothing for objects that have none.
std::optional<std::string> ComparedText(CFTypeRef object)
{
    if (const auto data = CFDynamicCast<CFDataRef>(object, CFDataGetTypeID())) {
        const auto* const bytes = reinterpret_cast<const char*>(CFDataGetBytePtr(data));
        const auto length = static_cast<size_t>(CFDataGetLength(data));
        return length > 0 ? std::string(bytes, strnlen(bytes, length)) : std::string();
    }
    std::array<char, 256> text {};
    const auto string = CFDynamicCast<CFStringRef>(object, CFStringGetTypeID());
    if (string == nullptr || !CFStringGetCString(string, text.data(), text.size(), kCFStringEncodingASCII))
        return std::nullopt;
    return text.data();
}

}

void ConvertUInt64ToSizeSizeStringAndPowerOfTen(uint64_t bytes, char* buffer, size_t capacity, int32_t* power)
{
    std::array<char, 16> text {};
    const auto* const unit = std::find_if(std::begin(kSizeUnits), std::end(kSizeUnits),
        [bytes](const SizeUnit& each) { return bytes < each.limit; });
    const bool isShown = unit != std::end(kSizeUnits);
    if (isShown)
        FormatSize(bytes, unit->shift, text.data(), text.size());
    CopyBounded(text.data(), buffer, capacity);
    if (power != nullptr)
        *power = isShown ? unit->power : 0;
}

void ConvertUInt64ToSizeString(uint64_t bytes, char* buffer, size_t capacity)
{
    std::array<char, 16> number {};
    int32_t power = 0;
    ConvertUInt64ToSizeSizeStringAndPowerOfTen(bytes, number.data(), number.size(), &power);
    const auto* const name = std::find_if(std::begin(kUnitNames), std::end(kUnitNames),
        [power](const UnitName& each) { return each.power == power; });
    const std::string text = number.data() + std::string(name != std::end(kUnitNames) ? name->text : " -");
    CopyBounded(text.c_str(), buffer, capacity);
}

bool ConvertSizeStringToUInt64(const char* text, uint64_t* bytes)
{
    if (text == nullptr)
        return false;
    uint64_t number = 0;
    int shift = 0;
    const std::string_view all = text;
    if (all.starts_with("0x")) {
        number = std::strtoull(text + 2, nullptr, 16);
    } else if (all.ends_with('b') || all.ends_with('B')) {
        const char unit = all.size() < 2 ? '\0' : static_cast<char>(all[all.size() - 2] | 0x20);
        const auto* const known = std::find_if(std::begin(kUnitLetters), std::end(kUnitLetters),
            [unit](const UnitLetter& each) { return each.letter == unit; });
        if (known == std::end(kUnitLetters) || all.size() - 2 > kLongestNumber)
            return false;
        shift = known->shift;
        number = DecimalNumber(std::string(all.substr(0, all.size() - 2)).c_str());
    } else {
        number = DecimalNumber(text);
    }
    if (bytes != nullptr)
        *bytes = number << shift;
    return true;
}

void ConvertUInt64ToStringWithCommas(uint64_t value, char* buffer, size_t capacity)
{
    std::string text = std::to_string(value);
    for (size_t groups = (text.size() - 1) / 3, place = text.size(); groups > 0; --groups)
        text.insert(place -= 3, 1, ',');
    CopyBounded(text.c_str(), buffer, capacity);
}

void ConvertUInt64ToHexString(const void* bytes, char* buffer, bool spaces)
{
    if (bytes == nullptr || buffer == nullptr)
        return;
    const std::array<uint8_t, 8> stored = EightBytes(bytes);
    WriteHexPairs(stored.rbegin(), stored.rend(), buffer, spaces ? ' ' : '\0');
}

void ConvertWWN_DataToHexString(const void* name, char* buffer)
{
    if (name == nullptr || buffer == nullptr)
        return;
    const std::array<uint8_t, 8> stored = EightBytes(name);
    WriteHexPairs(stored.begin(), stored.end(), buffer, ' ');
}

void ConvertSecondsToHoursMinutesSecondsString(uint32_t seconds, char* buffer, size_t capacity)
{
    constexpr uint32_t limit = 1000 * 3600;
    std::array<char, 16> text { "--:--:--" };
    if (seconds < limit)
        std::snprintf(text.data(), text.size(), "%02d:%02d:%02d", static_cast<int>(seconds / 3600),
            static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    CopyBounded(text.data(), buffer, capacity);
}

void ConvertAbsoluteSecondsToMediumDateString(uint32_t seconds, char* buffer, size_t capacity)
{
    WriteDate(seconds, kCFDateFormatterMediumStyle, nullptr, buffer, capacity);
}

void ConvertAbsoluteSecondsToShortDateString(uint32_t seconds, char* buffer, size_t capacity)
{
    WriteDate(seconds, kCFDateFormatterShortStyle, CFSTR("yyyy.MM.dd HH:mm:ss"), buffer, capacity);
}

void ConvertDiskIdentToString(const DiskIdent* ident, char* buffer, size_t capacity, bool withLUN)
{
    std::array<char, 96> text {};
    if (ident != nullptr && withLUN)
        std::snprintf(text.data(), text.size(), "%s bus %d, id %d, lun %d", BusName(ident->busType),
            ident->busNumber, ident->targetID, ident->logicalUnit);
    else if (ident != nullptr)
        std::snprintf(text.data(), text.size(), "%s bus %d, id %d", BusName(ident->busType), ident->busNumber,
            ident->targetID);
    CopyBounded(text.data(), buffer, capacity);
}

bool CompareCFTypeRefToString(CFTypeRef object, const char* text, bool substring)
{
    const std::optional<std::string> own = ComparedText(object);
    if (!own || text == nullptr)
        return false;
    return substring ? own->find(text) != std::string::npos : *own == text;
}

char* StripSpaces(char* text)
{
    if (text == nullptr)
        return nullptr;
    char* end = text + std::strlen(text);
    while (end > text && end[-1] == ' ')
        --end;
    *end = 0;
    return text + std::strspn(text, " ");
}

void CatStrings(char* destination, const char* source, size_t capacity, size_t* length, bool trim)
{
    if (destination == nullptr || source == nullptr || length == nullptr || *length + 1 >= capacity)
        return;
    std::string_view text = source;
    if (trim) {
        text.remove_suffix(text.size() - std::min(text.find_last_not_of(' ') + 1, text.size()));
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    }
    const size_t count = std::min(text.size(), capacity - *length - 1);
    std::memcpy(destination + *length, text.data(), count);
    *length += count;
}
