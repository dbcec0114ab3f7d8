#include "ui/framework/rtf/Reader.h"
#include "ui/framework/rtf/Hyperlink.h"

#include <QTextDocument>
#include <algorithm>
#include <utility>

namespace rtf {

namespace {

constexpr size_t kDeepest = 500; ///< word processors stay below 50
constexpr int kMostSkipped = 32; ///< characters in place of one; word processors need four at most
constexpr int kDefaultTabDistance = 720; ///< twips

bool IsControl(int character) { return character < 0x20 && character != '\t'; }

}

Reader::Reader(std::string_view bytes, QTextDocument& document, const QColor& linkColor)
    : fTokens(bytes)
    , fTables { {}, {}, {}, linkColor }
    , fBuilder(document, fTables)
{
    fInstructions.emplace_back(); // that of no field
    fTables.links.emplace_back();
    fBuilder.setDefaultTabDistance(kDefaultTabDistance);
    setPlainCharacters();
}

void Reader::read()
{
    for (Token token = fTokens.next(); token.kind != Token::Kind::End; token = fTokens.next()) {
        if (token.kind == Token::Kind::Open)
            openGroup();
        else if (token.kind == Token::Kind::Close && fOuter.size() == 1 && fSkippedGroups < 2)
            break; // the end of the text; the last paragraph still needs its format
        else if (token.kind == Token::Kind::Close)
            closeGroup();
        else if (fSkippedGroups == 0)
            take(token);
    }
    if (!fBuilder.isParagraphEmpty())
        endParagraph();
}

void Reader::openGroup()
{
    fToSkip = 0;
    fIsOptional = false;
    fDecoder.drop();
    if (fSkippedGroups > 0) {
        fSkippedGroups++;
        return;
    }
    fOuter.push_back(fState);
    if (fOuter.size() > kDeepest)
        skipGroup();
}

void Reader::closeGroup()
{
    fToSkip = 0;
    fIsOptional = false;
    fDecoder.drop();
    if (fSkippedGroups > 0 && --fSkippedGroups > 0)
        return;
    fState = std::move(fOuter.back());
    fOuter.pop_back();
}

/// Whether the next character is not for readers with Unicode; it is then taken as skipped.
bool Reader::skipsCharacter()
{
    if (fToSkip == 0)
        return false;
    fToSkip--;
    return true;
}

void Reader::take(const Token& token)
{
    if (token.kind == Token::Kind::Word) {
        takeWord(token);
    } else if (token.kind == Token::Kind::Symbol) {
        takeSymbol(token.number);
    } else if (token.kind == Token::Kind::Text) {
        takeText(token.text);
    } else if (!skipsCharacter() && !IsControl(token.number)) {
        const char byte[] = { static_cast<char>(token.number) };
        putBytes({ byte, 1 });
    }
}

void Reader::takeText(std::string_view bytes)
{
    const size_t skipped = std::min(static_cast<size_t>(fToSkip), bytes.size());
    fToSkip -= static_cast<int>(skipped);
    bytes.remove_prefix(skipped);
    // A space before a number would push it over the tab stop that the text is to begin at.
    if (fState.beginsLabel)
        bytes.remove_prefix(std::min(bytes.find_first_not_of(' '), bytes.size()));
    fState.beginsLabel = fState.beginsLabel && bytes.empty();
    if (!bytes.empty())
        putBytes(bytes);
}

void Reader::takeSymbol(int32_t symbol)
{
    constexpr std::pair<char, char16_t> characters[]
        = { { '~', u'\u00a0' }, { '-', u'\u00ad' }, { '_', u'\u2011' }, { '\t', u'\t' } };
    const auto* const found = std::ranges::find(characters, symbol, &std::pair<char, char16_t>::first);
    if (found != std::end(characters) && !skipsCharacter())
        putCharacter(found->second);
    else if (symbol == '\n')
        runInBody(Command::EndParagraph);
    else if (symbol == '*')
        fIsOptional = true;
}

void Reader::takeWord(const Token& token)
{
    const ControlWord* word = FindControlWord(token.text);
    if (std::exchange(fIsOptional, false) && (!word || word->action != Action::Enter)) {
        skipGroup();
        return;
    }
    const bool isCharacter = word && word->action == Action::Character;
    if (isCharacter && skipsCharacter())
        return;
    if (!isCharacter) { // what stands for a character is never more than characters
        fToSkip = 0;
        fDecoder.drop();
    }
    if (word)
        carryOut(*word, token);
}

void Reader::carryOut(const ControlWord& word, const Token& token)
{
    const int32_t switched = token.hasNumber && token.number == 0 ? 0 : word.value;
    const int32_t number = token.hasNumber ? token.number : word.value;
    switch (word.action) {
    case Action::Character:
        putCharacter(static_cast<char16_t>(word.value));
        break;
    case Action::SetCharacter:
        fState.character.properties.at(word.target) = switched;
        break;
    case Action::CharacterNumber:
        fState.character.properties.at(word.target) = std::clamp(number, word.low, word.high);
        break;
    case Action::SetParagraph:
        fState.paragraph.properties.at(word.target) = switched;
        break;
    case Action::ParagraphNumber:
        fState.paragraph.properties.at(word.target) = std::clamp(number, word.low, word.high);
        break;
    case Action::Enter:
        enter(static_cast<Destination>(word.value));
        break;
    case Action::CodePage:
        run(Command::CodePage, word.value);
        break;
    case Action::ColorPart:
        fTables.colors.setPart(word.value, token.number);
        break;
    case Action::FontKind:
        if (fState.destination == Destination::Fonts)
            fTables.fonts.current().kind = static_cast<QFont::StyleHint>(word.value);
        break;
    case Action::TabKind:
        fTabType = static_cast<QTextOption::TabType>(word.value);
        break;
    case Action::Run:
        run(static_cast<Command>(word.value), token.number);
        break;
    }
}

void Reader::enter(Destination destination)
{
    switch (destination) {
    case Destination::Skipped:
        skipGroup();
        break;
    case Destination::Label:
        fState.beginsLabel = true;
        break;
    case Destination::Field:
        enterField();
        break;
    case Destination::Result:
        enterResult();
        break;
    case Destination::Alternatives:
        fState.outside = std::exchange(fState.destination, destination);
        break;
    case Destination::UnicodeAlternative:
        fState.destination = fState.outside;
        break;
    default:
        fState.destination = destination;
        break;
    }
}

void Reader::enterField()
{
    fState.outside = fState.destination;
    fState.field = fInstructions.size();
    fInstructions.emplace_back();
    fTables.links.emplace_back();
}

void Reader::enterResult()
{
    if (fState.outside != Destination::Body) { // what another field's instruction is made of
        skipGroup();
        return;
    }
    fState.destination = Destination::Body;
    if (const QString instruction = std::exchange(fInstructions[fState.field], {}); !instruction.isEmpty())
        fTables.links[fState.field] = HyperlinkAddress(instruction);
    if (!fTables.links[fState.field].isEmpty())
        fState.character.link = fState.field;
}

void Reader::run(Command command, int number)
{
    switch (command) {
    case Command::CodePage:
        fDocumentPage = number;
        fPage = nullptr;
        break;
    case Command::DefaultFont:
        fDefaultFont = number;
        fState.character.properties[character::Font] = number;
        break;
    case Command::DefaultTabs:
        fBuilder.setDefaultTabDistance(std::clamp(number, 100, 5000));
        break;
    case Command::PlainCharacters:
        setPlainCharacters();
        break;
    case Command::PlainParagraph:
        fState.paragraph = {};
        break;
    case Command::TabStop:
        addTab(number, std::exchange(fTabType, QTextOption::LeftTab));
        break;
    case Command::RowDefaults:
        fCellEdges.clear();
        break;
    case Command::CellEdge:
        addCellEdge(number);
        break;
    case Command::Unicode:
        putUnicode(number);
        fToSkip = fState.unicodeSkip;
        break;
    case Command::UnicodeSkip:
        fState.unicodeSkip = std::clamp(number, 0, kMostSkipped);
        break;
    case Command::Font:
    case Command::CharsetOfFont:
    case Command::CodePageOfFont:
        runInFonts(command, number);
        break;
    default:
        runInBody(command);
        break;
    }
}

}
