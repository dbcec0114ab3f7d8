#include "ui/framework/rtf/DocumentBuilder.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTextDocument>
#include <algorithm>

namespace rtf {

namespace {

/// How many character formats are told apart; a text with more is out to exhaust the memory.
constexpr size_t kMostFormats = 5000;

/// Documents look formats up by a hash that takes lists of tabs and of families for equal. With this property besides,
/// a number that differs where those do, texts with a thousand of them do not take minutes.
constexpr int kHashedProperty = QTextFormat::UserProperty;

double PixelsPerTwip()
{
    constexpr double twipsPerInch = 1440;
    const QScreen* screen = QGuiApplication::primaryScreen();
    return (screen ? screen->logicalDotsPerInchY() : 96) / twipsPerInch;
}

/// No line begins beyond the edge, where it would be cut off.
int FirstIndent(const ParagraphFormat& format)
{
    return std::max(format[paragraph::First], -format[paragraph::Left]);
}

void SetTabs(QTextBlockFormat& format, const QList<QTextOption::Tab>& tabs)
{
    unsigned hash = 0;
    for (const QTextOption::Tab& tab : tabs)
        hash = 31 * hash + static_cast<unsigned>(tab.position);
    format.setTabPositions(tabs);
    format.setProperty(kHashedProperty, static_cast<int>(hash));
}

/// Whether a unit has a meaning of its own in a document, or none at all.
bool IsSpecial(QChar unit)
{
    return unit.isSurrogate() || unit == QChar::ParagraphSeparator
        || unit == QChar::ObjectReplacementCharacter || (unit >= QChar(0xfdd0) && unit <= QChar(0xfdef))
        || unit >= QChar(0xfffe);
}

}

DocumentBuilder::DocumentBuilder(QTextDocument& document, const Tables& tables)
    : fDocument(document)
    , fTables(tables)
    , fCursor(&document)
    , fPixelsPerTwip(PixelsPerTwip())
{
    fCursor.beginEditBlock();
}

DocumentBuilder::~DocumentBuilder() { fCursor.endEditBlock(); }

QString& DocumentBuilder::textIn(const CharacterFormat& format)
{
    if (fRuns.empty() || fRuns.back().format != format)
        fRuns.push_back({ fText.size(), format });
    return fText;
}

void DocumentBuilder::endParagraph(const ParagraphFormat& format, const CharacterFormat& end)
{
    replaceNoncharacters();
    if (fIsFirst) {
        fCursor.setBlockFormat(blockFormat(format));
        fCursor.setBlockCharFormat(charFormat(end));
    } else {
        fCursor.insertBlock(blockFormat(format), charFormat(end));
    }
    fIsFirst = false;
    for (size_t i = 0; i < fRuns.size(); i++) {
        const qsizetype runEnd = i + 1 < fRuns.size() ? fRuns[i + 1].start : fText.size();
        fCursor.insertText(
            fText.sliced(fRuns[i].start, runEnd - fRuns[i].start), charFormat(fRuns[i].format));
    }
    fText.clear();
    fRuns.clear();
}

/// Halves of surrogate pairs are put together by now, as they may come one by one.
void DocumentBuilder::replaceNoncharacters()
{
    for (qsizetype i = 0; i < fText.size(); i++) {
        if (!IsSpecial(fText.at(i)))
            continue;
        const bool isPair
            = fText.at(i).isHighSurrogate() && i + 1 < fText.size() && fText.at(i + 1).isLowSurrogate();
        if (isPair)
            i++;
        else
            fText[i] = QChar::ReplacementCharacter;
    }
}

void DocumentBuilder::setDefaultTabDistance(int twips)
{
    QTextOption option = fDocument.defaultTextOption();
    option.setTabStopDistance(pixels(twips));
    fDocument.setDefaultTextOption(option);
}

void DocumentBuilder::setLineHeight(QTextBlockFormat& made, const ParagraphFormat& format) const
{
    constexpr int single = 240;
    constexpr int least = 100; // twips
    const int spacing = format[paragraph::Spacing];
    if (format[paragraph::SpacingIsMultiple] && spacing > 0 && spacing != single)
        made.setLineHeight(
            std::max(spacing, single / 2) * 100.0 / single, QTextBlockFormat::ProportionalHeight);
    else if (!format[paragraph::SpacingIsMultiple] && spacing != 0)
        made.setLineHeight(pixels(std::max(std::abs(spacing), least)),
            spacing > 0 ? QTextBlockFormat::MinimumHeight : QTextBlockFormat::FixedHeight);
}

/// A document counts tab stops from where the first line begins, rich text from the edge.
QList<QTextOption::Tab> DocumentBuilder::tabsOf(const ParagraphFormat& format) const
{
    const int lineStart = format[paragraph::Left] + FirstIndent(format);
    QList<QTextOption::Tab> tabs;
    for (QTextOption::Tab tab : format.tabs) {
        tab.position = pixels(static_cast<int>(tab.position) - lineStart);
        if (tab.position > 0)
            tabs += tab;
    }
    // Where the first line hangs out, the indent of the others is a stop, too.
    if (FirstIndent(format) < 0)
        tabs += QTextOption::Tab(pixels(-FirstIndent(format)), QTextOption::LeftTab);
    std::ranges::stable_sort(tabs, {}, &QTextOption::Tab::position);
    return tabs;
}

QTextBlockFormat DocumentBuilder::blockFormat(const ParagraphFormat& format) const
{
    QTextBlockFormat made;
    const std::pair<void (QTextBlockFormat::*)(qreal), int> lengths[] = {
        { &QTextBlockFormat::setLeftMargin, format[paragraph::Left] },
        { &QTextBlockFormat::setRightMargin, format[paragraph::Right] },
        { &QTextBlockFormat::setTextIndent, FirstIndent(format) },
        { &QTextBlockFormat::setTopMargin, format[paragraph::Before] },
        { &QTextBlockFormat::setBottomMargin, format[paragraph::After] },
    };
    for (const auto& [set, twips] : lengths)
        if (twips != 0)
            (made.*set)(pixels(twips));
    if (format[paragraph::Alignment] != 0)
        made.setAlignment(Qt::Alignment(format[paragraph::Alignment]));
    if (format[paragraph::Direction] != 0)
        made.setLayoutDirection(Qt::RightToLeft);
    if (const QList<QTextOption::Tab> tabs = tabsOf(format); !tabs.isEmpty())
        SetTabs(made, tabs);
    setLineHeight(made, format);
    return made;
}

const QTextCharFormat& DocumentBuilder::charFormat(const CharacterFormat& format)
{
    const auto found = fCharFormats.find(format);
    if (found != fCharFormats.end())
        return found->second;
    if (fCharFormats.size() >= kMostFormats)
        return fCharFormats.begin()->second;
    return fCharFormats.emplace(format, madeCharFormat(format)).first->second;
}

QTextCharFormat DocumentBuilder::madeCharFormat(const CharacterFormat& format) const
{
    QTextCharFormat made;
    if (const Font* font = fTables.fonts.find(format[character::Font])) {
        if (const QStringList families = font->families(); !families.isEmpty())
            made.setFontFamilies(families);
        made.setProperty(kHashedProperty, format[character::Font]);
        if (font->kind != QFont::AnyStyle)
            made.setFontStyleHint(font->kind);
    }
    made.setFontPointSize(format[character::HalfPoints] / 2.0);
    if (format[character::Bold])
        made.setFontWeight(QFont::Bold);
    if (format[character::Italic])
        made.setFontItalic(true);
    if (format[character::Strike])
        made.setFontStrikeOut(true);
    if (format[character::Capitals])
        made.setFontCapitalization(static_cast<QFont::Capitalization>(format[character::Capitals]));
    if (format[character::Vertical])
        made.setVerticalAlignment(
            static_cast<QTextCharFormat::VerticalAlignment>(format[character::Vertical]));
    if (format[character::Underline])
        made.setUnderlineStyle(static_cast<QTextCharFormat::UnderlineStyle>(format[character::Underline]));
    const TextColors colors
        = fTables.colors.textColors(format[character::Color], format[character::Background]);
    if (colors.foreground)
        made.setForeground(*colors.foreground);
    if (colors.background)
        made.setBackground(*colors.background);
    if (format.link != 0) {
        made.setAnchor(true);
        made.setAnchorHref(fTables.links[format.link]);
        made.setForeground(fTables.linkColor);
        made.setUnderlineStyle(QTextCharFormat::SingleUnderline);
    }
    return made;
}

}
