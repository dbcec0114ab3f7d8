#include <CoreFoundation/Text.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace cf {

bool IsAscii(std::string_view bytes)
{
    constexpr uint64_t highBits = 0x8080808080808080;
    while (bytes.size() >= sizeof(uint64_t)) {
        uint64_t eight = 0;
        std::memcpy(&eight, bytes.data(), sizeof eight);
        if (eight & highBits)
            return false;
        bytes.remove_prefix(sizeof eight);
    }
    return std::ranges::all_of(bytes, [](char byte) { return (byte & 0x80) == 0; });
}

void Text::set(std::u16string units)
{
    if (std::ranges::all_of(units, [](char16_t unit) { return unit < 0x80; })) {
        std::string ascii(units.size(), '\0');
        std::ranges::transform(units, ascii.begin(), [](char16_t unit) { return static_cast<char>(unit); });
        fUnits = std::move(ascii);
    } else
        fUnits = std::move(units);
}

std::u16string Text::units() const
{
    return isAscii() ? std::u16string(ascii().begin(), ascii().end()) : wide();
}

Text Text::substring(size_t start, size_t count) const
{
    return isAscii() ? Text(ascii().substr(start, count)) : Text(wide().substr(start, count));
}

char32_t Text::characterAt(size_t index) const
{
    const char32_t first = (*this)[index];
    if (first < 0xd800 || first > 0xdbff || index + 1 == length())
        return first;
    const char32_t second = (*this)[index + 1];
    if (second < 0xdc00 || second > 0xdfff)
        return first;
    return 0x10000 + ((first - 0xd800) << 10) + (second - 0xdc00);
}

void Text::replace(size_t start, size_t count, const Text& other)
{
    if (isAscii() && other.isAscii()) {
        std::get<0>(fUnits).replace(start, count, other.ascii());
        return;
    }
    // Only what is cut out can turn wide text into ASCII.
    if (!isAscii() && count == 0) {
        std::get<1>(fUnits).insert(start, other.isAscii() ? other.units() : other.wide());
        return;
    }
    std::u16string changed = units();
    changed.replace(start, count, other.units());
    set(std::move(changed));
}

size_t Text::hash() const
{
    if (isAscii())
        return std::hash<std::string>()(ascii());
    return std::hash<std::u16string>()(wide());
}

void AppendCharacter(std::u16string& units, char32_t character)
{
    if (character <= 0xffff) {
        units += static_cast<char16_t>(character);
        return;
    }
    units += static_cast<char16_t>(0xd7c0 + (character >> 10));
    units += static_cast<char16_t>(0xdc00 + (character & 0x3ff));
}

}
