#include "ui/framework/rtf/ControlWords.h"
#include "ui/framework/rtf/Format.h"

#include <QFont>
#include <QTextFormat>
#include <algorithm>
#include <limits>

namespace rtf {

namespace {

// What one can want of a page; more would only push the text out of sight.
constexpr int32_t kWidest = 7200; // five inches
constexpr int32_t kTallest = 2880; // two inches
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

using Name = std::string_view;

constexpr ControlWord Character(Name name, char16_t unit) { return { name, Action::Character, unit }; }
constexpr ControlWord Set(Name name, character::Property property, int32_t value = 1)
{
    return { name, Action::SetCharacter, value, property };
}
constexpr ControlWord Set(Name name, paragraph::Property property, int32_t value = 1)
{
    return { name, Action::SetParagraph, value, property };
}
constexpr ControlWord Number(
    Name name, character::Property property, int32_t value, int32_t low, int32_t high)
{
    return { name, Action::CharacterNumber, value, property, low, high };
}
constexpr ControlWord Number(
    Name name, paragraph::Property property, int32_t value, int32_t low, int32_t high)
{
    return { name, Action::ParagraphNumber, value, property, low, high };
}
constexpr ControlWord Enter(Name name, Destination to)
{
    return { name, Action::Enter, static_cast<int32_t>(to) };
}
constexpr ControlWord Page(Name name, int32_t codePage) { return { name, Action::CodePage, codePage }; }
constexpr ControlWord ColorPart(Name name, int32_t part) { return { name, Action::ColorPart, part }; }
constexpr ControlWord Kind(Name name, QFont::StyleHint hint) { return { name, Action::FontKind, hint }; }
constexpr ControlWord Tab(Name name, QTextOption::TabType type) { return { name, Action::TabKind, type }; }
constexpr ControlWord Run(Name name, Command command)
{
    return { name, Action::Run, static_cast<int32_t>(command) };
}

/// By name.
constexpr auto kControlWords = std::to_array<ControlWord>({
    Enter("NeXTGraphic", Destination::Skipped),
    Page("ansi", 1252),
    Run("ansicpg", Command::CodePage),
    Set("b", character::Bold),
    ColorPart("blue", 2),
    Character("bullet", 0x2022),
    Set("caps", character::Capitals, QFont::AllUppercase),
    Number("cb", character::Background, 0, 0, kMost),
    Run("cell", Command::Cell),
    Run("cellx", Command::CellEdge),
    Number("cf", character::Color, 0, 0, kMost),
    Number("chcbpat", character::Background, 0, 0, kMost),
    Enter("colortbl", Destination::Colors),
    Run("cpg", Command::CodePageOfFont),
    Run("deff", Command::DefaultFont),
    Run("deftab", Command::DefaultTabs),
    Set("deleted", character::Hidden),
    Set("dn", character::Vertical, QTextCharFormat::AlignSubScript),
    Character("emdash", 0x2014),
    Character("emspace", 0x2003),
    Character("endash", 0x2013),
    Character("enspace", 0x2002),
    Run("f", Command::Font),
    Kind("fbidi", QFont::AnyStyle),
    Run("fcharset", Command::CharsetOfFont),
    Kind("fdecor", QFont::Decorative),
    Number("fi", paragraph::First, 0, -kWidest, kWidest),
    Enter("field", Destination::Field),
    Enter("filetbl", Destination::Skipped),
    Enter("fldinst", Destination::Instruction),
    Enter("fldrslt", Destination::Result),
    Kind("fmodern", QFont::TypeWriter),
    Kind("fnil", QFont::AnyStyle),
    Enter("fonttbl", Destination::Fonts),
    Enter("footer", Destination::Skipped),
    Enter("footerf", Destination::Skipped),
    Enter("footerl", Destination::Skipped),
    Enter("footerr", Destination::Skipped),
    Enter("footnote", Destination::Skipped),
    Kind("froman", QFont::Serif),
    Number("fs", character::HalfPoints, 24, 2, 400),
    Kind("fscript", QFont::Cursive),
    Kind("fswiss", QFont::SansSerif),
    Kind("ftech", QFont::AnyStyle),
    ColorPart("green", 1),
    Enter("header", Destination::Skipped),
    Enter("headerf", Destination::Skipped),
    Enter("headerl", Destination::Skipped),
    Enter("headerr", Destination::Skipped),
    Number("highlight", character::Background, 0, 0, kMost),
    Set("i", character::Italic),
    Enter("info", Destination::Skipped),
    Set("intbl", paragraph::InTable),
    Character("ldblquote", 0x201c),
    Number("li", paragraph::Left, 0, 0, kWidest),
    Character("line", 0x2028),
    Enter("listoverridetable", Destination::Skipped),
    Enter("listtable", Destination::Skipped),
    Enter("listtext", Destination::Label),
    Character("lquote", 0x2018),
    Character("ltrmark", 0x200e),
    Set("ltrpar", paragraph::Direction, Qt::LeftToRight),
    Page("mac", 10000),
    Enter("mmathPr", Destination::Skipped),
    Run("nestcell", Command::Cell),
    Run("nestrow", Command::NestedRow),
    Enter("nonesttables", Destination::Skipped),
    Enter("nonshppict", Destination::Skipped),
    Set("nosupersub", character::Vertical, QTextCharFormat::AlignNormal),
    Enter("object", Destination::Skipped),
    Run("page", Command::EndParagraphIfAny),
    Run("par", Command::EndParagraph),
    Run("pard", Command::PlainParagraph),
    Page("pc", 437),
    Page("pca", 850),
    Enter("pict", Destination::Skipped),
    Run("plain", Command::PlainCharacters),
    Enter("pntext", Destination::Label),
    Enter("pntxta", Destination::Skipped),
    Enter("pntxtb", Destination::Skipped),
    Set("qc", paragraph::Alignment, Qt::AlignHCenter),
    Set("qd", paragraph::Alignment, Qt::AlignJustify),
    Set("qj", paragraph::Alignment, Qt::AlignJustify),
    Set("ql", paragraph::Alignment, Qt::AlignLeft | Qt::AlignAbsolute),
    Character("qmspace", 0x2005),
    Set("qr", paragraph::Alignment, Qt::AlignRight | Qt::AlignAbsolute),
    Character("rdblquote", 0x201d),
    ColorPart("red", 0),
    Number("ri", paragraph::Right, 0, 0, kWidest),
    Run("row", Command::Row),
    Character("rquote", 0x2019),
    Character("rtlmark", 0x200f),
    Set("rtlpar", paragraph::Direction, Qt::RightToLeft),
    Enter("rxe", Destination::Skipped),
    Number("sa", paragraph::After, 0, 0, kTallest),
    Number("sb", paragraph::Before, 0, 0, kTallest),
    Set("scaps", character::Capitals, QFont::SmallCaps),
    Run("sect", Command::EndParagraphIfAny),
    Enter("shppict", Destination::Skipped),
    Enter("shprslt", Destination::Skipped),
    Number("sl", paragraph::Spacing, 0, -kTallest, kTallest),
    Set("slmult", paragraph::SpacingIsMultiple),
    Set("strike", character::Strike),
    Set("striked", character::Strike),
    Enter("stylesheet", Destination::Skipped),
    Set("sub", character::Vertical, QTextCharFormat::AlignSubScript),
    Set("super", character::Vertical, QTextCharFormat::AlignSuperScript),
    Character("tab", 0x0009),
    Enter("tc", Destination::Skipped),
    Enter("tcn", Destination::Skipped),
    Tab("tqc", QTextOption::CenterTab),
    Tab("tqdec", QTextOption::DelimiterTab),
    Tab("tqr", QTextOption::RightTab),
    Run("trowd", Command::RowDefaults),
    Run("tx", Command::TabStop),
    Run("u", Command::Unicode),
    Run("uc", Command::UnicodeSkip),
    Enter("ud", Destination::UnicodeAlternative),
    Set("ul", character::Underline, QTextCharFormat::SingleUnderline),
    Set("uld", character::Underline, QTextCharFormat::DotLine),
    Set("uldash", character::Underline, QTextCharFormat::DashUnderline),
    Set("uldashd", character::Underline, QTextCharFormat::DashDotLine),
    Set("uldashdd", character::Underline, QTextCharFormat::DashDotDotLine),
    Set("uldb", character::Underline, QTextCharFormat::SingleUnderline),
    Set("ulhwave", character::Underline, QTextCharFormat::WaveUnderline),
    Set("ulldash", character::Underline, QTextCharFormat::DashUnderline),
    Set("ulnone", character::Underline, QTextCharFormat::NoUnderline),
    Set("ulth", character::Underline, QTextCharFormat::SingleUnderline),
    Set("ulthd", character::Underline, QTextCharFormat::DotLine),
    Set("ulthdash", character::Underline, QTextCharFormat::DashUnderline),
    Set("ulthdashd", character::Underline, QTextCharFormat::DashDotLine),
    Set("ulthdashdd", character::Underline, QTextCharFormat::DashDotDotLine),
    Set("ulthldash", character::Underline, QTextCharFormat::DashUnderline),
    Set("ululdbwave", character::Underline, QTextCharFormat::WaveUnderline),
    Set("ulw", character::Underline, QTextCharFormat::SingleUnderline),
    Set("ulwave", character::Underline, QTextCharFormat::WaveUnderline),
    Set("up", character::Vertical, QTextCharFormat::AlignSuperScript),
    Enter("upr", Destination::Alternatives),
    Set("v", character::Hidden),
    Enter("xe", Destination::Skipped),
    Character("zwbo", 0x200b),
    Character("zwj", 0x200d),
    Character("zwnbo", 0x2060),
    Character("zwnj", 0x200c),
});

static_assert(std::ranges::is_sorted(kControlWords, {}, &ControlWord::name));

}

const ControlWord* FindControlWord(std::string_view name)
{
    const auto* const found = std::ranges::lower_bound(kControlWords, name, {}, &ControlWord::name);
    return found != kControlWords.end() && found->name == name ? found : nullptr;
}

}
