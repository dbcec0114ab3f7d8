#pragma once

#include <QList>
#include <QTextOption>
#include <array>
#include <cstddef>
#include <cstdint>

namespace rtf {

/// What a run of characters has. Properties are 0 unless it says otherwise.
namespace character {
enum Property : uint8_t {
    Font, ///< its number in the font table
    HalfPoints, ///< the size
    Color, ///< its number in the color table, where 0 is nobody's choice
    Background, ///< likewise
    Underline, ///< a QTextCharFormat::UnderlineStyle
    Vertical, ///< a QTextCharFormat::VerticalAlignment
    Capitals, ///< a QFont::Capitalization
    Bold,
    Italic,
    Strike,
    Hidden,
    PropertyCount
};
}

struct CharacterFormat {
    std::array<int32_t, character::PropertyCount> properties {};
    size_t link = 0; ///< by its number in Tables; 0 for none

    int32_t operator[](character::Property property) const { return properties[property]; }
    auto operator<=>(const CharacterFormat&) const = default;
};

/// What a paragraph has; lengths are in twips, twentieths of a point. All are 0 at first.
namespace paragraph {
enum Property : uint8_t {
    Alignment, ///< a Qt::Alignment
    Left, ///< the indent of all lines
    Right,
    First, ///< what is added to it for the first line
    Before, ///< the space above
    After, ///< and below
    Spacing, ///< of the lines: 0 as the font has it, else positive at least this, negative exactly this
    SpacingIsMultiple, ///< Spacing is in 240ths of what the font has
    Direction, ///< a Qt::LayoutDirection, but 0 for nobody's choice
    InTable,
    PropertyCount
};
}

struct ParagraphFormat {
    std::array<int32_t, paragraph::PropertyCount> properties {};
    QList<QTextOption::Tab> tabs; ///< their positions are in twips

    int32_t operator[](paragraph::Property property) const { return properties[property]; }
    int32_t& operator[](paragraph::Property property) { return properties[property]; }
    bool operator==(const ParagraphFormat&) const = default;
};

}
