#include "ui/framework/rtf/Reader.h"

#include <algorithm>

// What the reader does with text, paragraphs and tables.

namespace rtf {

namespace {

constexpr int kDefaultSize = 24; ///< half points
constexpr int kSpaceBetweenRows = 80; ///< twips
constexpr qsizetype kMostTabs = 64;
constexpr int kWidestTab = 14400; ///< twips

/// Whether a character of Unicode's private area is a byte of some font of signs.
bool IsByteOfSigns(int character) { return character >= 0xf020 && character <= 0xf0ff; }

}

/// @return where text goes now; null for nowhere.
QString* Reader::textInProgress()
{
    switch (fState.destination) {
    case Destination::Body: {
        if (fState.character[character::Hidden])
            return nullptr;
        QString& text = fBuilder.textIn(fState.character);
        for (; fCellsEnded > 0; fCellsEnded--)
            text += u'\t';
        return &text;
    }
    case Destination::Instruction:
        return &fInstructions[fState.field];
    case Destination::Fonts:
        return &fTables.fonts.current().name;
    default:
        return nullptr;
    }
}

/// The code page of the text that comes now.
CodePage& Reader::page()
{
    if (fState.destination == Destination::Fonts)
        return fPages.page(fTables.fonts.current().page().value_or(fDocumentPage));
    const int font = fState.character[character::Font];
    if (fPage && fPageFont == font)
        return *fPage;
    const Font* known = fTables.fonts.find(font);
    fPage = &fPages.page(known ? known->page().value_or(fDocumentPage) : fDocumentPage);
    fPageFont = font;
    return *fPage;
}

void Reader::putBytes(std::string_view bytes)
{
    if (fState.destination == Destination::Colors)
        fTables.colors.takeText(bytes);
    else if (QString* text = textInProgress())
        fDecoder.decode(bytes, page(), *text);
}

void Reader::putCharacter(char16_t unit)
{
    if (QString* text = textInProgress())
        *text += QChar(unit);
}

/// @param number a character or a UTF-16 unit, which may have come out negative.
void Reader::putUnicode(int number)
{
    const int character = number < 0 ? number + 0x10000 : number;
    QString* text = character >= 0x20 && character <= 0x10ffff ? textInProgress() : nullptr;
    if (!text)
        return;
    if (!IsByteOfSigns(character)) {
        *text += QChar::fromUcs4(static_cast<char32_t>(character));
        return;
    }
    CodePage& signs = page().hasAscii() ? fPages.page(kSymbolPage) : page();
    *text += QChar(signs.characterOf(static_cast<unsigned char>(character)));
}

void Reader::setPlainCharacters()
{
    fState.character.properties = {};
    fState.character.properties[character::HalfPoints] = kDefaultSize;
    fState.character.properties[character::Font] = fDefaultFont;
}

void Reader::addTab(int twips, QTextOption::TabType type)
{
    if (twips > 0 && fState.paragraph.tabs.size() < kMostTabs)
        fState.paragraph.tabs += QTextOption::Tab(std::min(twips, kWidestTab), type, u'.');
}

void Reader::addCellEdge(int twips)
{
    if (fCellEdges.size() < static_cast<size_t>(kMostTabs))
        fCellEdges.push_back(std::clamp(twips, 0, kWidestTab));
}

/// Font words mean one thing in the table of fonts and another in text.
void Reader::runInFonts(Command command, int number)
{
    if (fState.destination != Destination::Fonts) {
        if (command == Command::Font)
            fState.character.properties[character::Font] = number;
        return;
    }
    fPage = nullptr;
    if (command == Command::Font)
        fTables.fonts.define(number);
    else if (command == Command::CharsetOfFont)
        fTables.fonts.current().charset = number;
    else
        fTables.fonts.current().codePage = number;
}

/// Words that divide text into paragraphs, rows and cells.
void Reader::runInBody(Command command)
{
    if (fState.destination != Destination::Body)
        return;
    const bool inTable = fState.paragraph[paragraph::InTable] != 0;
    switch (command) {
    case Command::Cell:
        fCellsEnded++;
        break;
    case Command::NestedRow:
        fCellsEnded = 0;
        putCharacter(QChar::LineSeparator);
        break;
    case Command::Row:
        endRow();
        break;
    case Command::EndParagraphIfAny:
        if (!inTable && !fBuilder.isParagraphEmpty())
            endParagraph();
        break;
    default:
        if (inTable) // paragraphs of a cell are lines of the row
            putCharacter(QChar::LineSeparator);
        else
            endParagraph();
        break;
    }
}

void Reader::endParagraph()
{
    fCellsEnded = 0;
    fBuilder.endParagraph(fState.paragraph, fState.character);
}

/// The cells begin at tab stops, and the last one has its further lines below its first.
void Reader::endRow()
{
    fCellsEnded = 0;
    ParagraphFormat row;
    row[paragraph::After] = kSpaceBetweenRows;
    if (!fCellEdges.empty())
        fCellEdges.pop_back(); // where nothing begins
    if (!fCellEdges.empty()) {
        row[paragraph::Left] = fCellEdges.back();
        row[paragraph::First] = -fCellEdges.back();
        for (const int edge : fCellEdges)
            row.tabs += QTextOption::Tab(edge, QTextOption::LeftTab);
    }
    fBuilder.endParagraph(row, fState.character);
}

}
