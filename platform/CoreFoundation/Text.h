#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

namespace cf {

/// @return whether every byte is below 128.
bool IsAscii(std::string_view bytes);

/// Text as UTF-16 units, kept in 8 bits where all of them are ASCII. The form follows from the content alone,
/// so equal texts have equal forms, and are compared and hashed as they are. Positions and counts are in
/// units and must lie within.
class Text {
public:
    Text() = default;
    /// @param ascii all ASCII.
    explicit Text(std::string ascii)
        : fUnits(std::move(ascii))
    {
    }
    explicit Text(std::u16string units) { set(std::move(units)); }

    bool isAscii() const { return fUnits.index() == 0; }
    size_t length() const { return isAscii() ? std::get<0>(fUnits).size() : std::get<1>(fUnits).size(); }
    char16_t operator[](size_t index) const
    {
        return isAscii() ? static_cast<char16_t>(std::get<0>(fUnits)[index]) : std::get<1>(fUnits)[index];
    }
    const std::string& ascii() const { return std::get<0>(fUnits); } ///< only where isAscii()
    const std::u16string& wide() const { return std::get<1>(fUnits); } ///< only where not

    std::u16string units() const; ///< a copy in 16 bits
    Text substring(size_t start, size_t count) const;
    /// The character whose units begin at `index`, a surrogate that stands alone for itself.
    char32_t characterAt(size_t index) const;

    void append(const Text& other) { replace(length(), 0, other); }
    /// @param other may be this text.
    void replace(size_t start, size_t count, const Text& other);

    size_t hash() const;
    bool operator==(const Text&) const = default;

private:
    void set(std::u16string units);

    std::variant<std::string, std::u16string> fUnits;
};

/// @return how many units the character takes.
inline size_t UnitCount(char32_t character) { return character > 0xffff ? 2 : 1; }
inline bool IsSurrogate(char32_t character) { return character >= 0xd800 && character <= 0xdfff; }
void AppendCharacter(std::u16string& units, char32_t character);

}
