#pragma once

#include <cstdint>
#include <string_view>

namespace rtf {

enum class Action : uint8_t {
    Character, ///< it stands for the UTF-16 unit `value`
    SetCharacter, ///< gives the character property `target` the value, or 0 where its parameter is 0
    CharacterNumber, ///< gives it its parameter, `value` without one, within low … high
    SetParagraph, ///< likewise for a paragraph property
    ParagraphNumber,
    Enter, ///< its group is a Destination, `value`
    CodePage, ///< the document's code page is `value`
    ColorPart, ///< its parameter is the red, green or blue, 0 … 2, of the color being defined
    FontKind, ///< the font being defined is of the QFont::StyleHint `value`
    TabKind, ///< the next tab stop is of the QTextOption::TabType `value`
    Run ///< the Command `value`
};

/// What the text of a group is for.
enum class Destination : uint8_t {
    Body, ///< the text to show
    Skipped, ///< nothing, and neither are the groups in it
    Fonts,
    Colors,
    Label, ///< the number or bullet of a list's item: it is in the body
    Field,
    Instruction, ///< what a field does
    Result, ///< what a field shows: it is in the body
    Alternatives, ///< a group for readers without Unicode, then one for those with
    UnicodeAlternative ///< the latter
};

enum class Command : uint8_t {
    Cell,
    CellEdge,
    CodePage,
    CodePageOfFont,
    CharsetOfFont,
    DefaultFont,
    DefaultTabs,
    EndParagraph,
    EndParagraphIfAny,
    Font,
    NestedRow,
    PlainCharacters,
    PlainParagraph,
    Row,
    RowDefaults,
    TabStop,
    Unicode,
    UnicodeSkip
};

struct ControlWord {
    std::string_view name;
    Action action;
    int32_t value = 0;
    uint8_t target = 0; ///< a character::Property or paragraph::Property
    int32_t low = 0;
    int32_t high = 0;
};

/// @param name without the backslash. @return null for a word that means nothing here.
const ControlWord* FindControlWord(std::string_view name);

}
