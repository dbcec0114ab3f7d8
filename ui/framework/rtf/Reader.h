#pragma once

#include "ui/framework/rtf/CodePage.h"
#include "ui/framework/rtf/ControlWords.h"
#include "ui/framework/rtf/DocumentBuilder.h"
#include "ui/framework/rtf/Tokenizer.h"

namespace rtf {

/// Carries out what rich text says, group by group; for one text.
class Reader {
public:
    /// @param bytes beginning with "{\rtf". @param document empty, without history. All must outlive the reader.
    Reader(std::string_view bytes, QTextDocument& document, const QColor& linkColor);

    void read();

private:
    /// What a group takes over from the one around it, and forgets at its end.
    struct State {
        CharacterFormat character;
        ParagraphFormat paragraph;
        Destination destination = Destination::Body;
        Destination outside = Destination::Body; ///< where the innermost field or choice of texts stands
        bool beginsLabel = false; ///< of a list's item, where spaces are to be left out
        int unicodeSkip = 1;
        size_t field = 0; ///< the innermost, by its number; 0 for none
    };

    void openGroup();
    void closeGroup();
    void skipGroup() { fSkippedGroups = 1; }
    bool skipsCharacter();

    void take(const Token& token);
    void takeText(std::string_view bytes);
    void takeWord(const Token& token);
    void takeSymbol(int32_t symbol);
    void carryOut(const ControlWord& word, const Token& token);

    void enter(Destination destination);
    void enterField();
    void enterResult();

    void run(Command command, int number);
    void runInFonts(Command command, int number);
    void runInBody(Command command);

    void putBytes(std::string_view bytes);
    void putCharacter(char16_t unit);
    void putUnicode(int number);
    QString* textInProgress();
    CodePage& page();

    void setPlainCharacters();
    void addTab(int twips, QTextOption::TabType type);
    void addCellEdge(int twips);
    void endParagraph();
    void endRow();

    Tokenizer fTokens;
    Tables fTables;
    DocumentBuilder fBuilder;
    CodePages fPages;
    CodePage* fPage = nullptr; ///< that of fPageFont; null where it has to be found anew
    int fPageFont = 0;
    TextDecoder fDecoder;
    State fState;
    std::vector<State> fOuter; ///< the states of the groups around the present one
    size_t fSkippedGroups = 0; ///< how many of the present groups count for nothing
    bool fIsOptional = false; ///< the group counts only if the next word is known
    int fToSkip = 0; ///< how many characters to come are for readers without Unicode
    int fDocumentPage = 1252;
    int fDefaultFont = 0;
    std::vector<QString> fInstructions; ///< of the fields, by number
    QTextOption::TabType fTabType = QTextOption::LeftTab; ///< of the next tab stop
    std::vector<int> fCellEdges; ///< of the table's row, in twips
    size_t fCellsEnded = 0; ///< of the row, since its last text
};

}
