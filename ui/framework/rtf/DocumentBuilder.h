#pragma once

#include "ui/framework/rtf/FontTable.h"
#include "ui/framework/rtf/Format.h"
#include "ui/framework/rtf/TextColors.h"

#include <QTextCharFormat>
#include <QTextCursor>
#include <map>
#include <vector>

class QTextDocument;

namespace rtf {

/// What character formats refer to by number.
struct Tables {
    FontTable fonts;
    ColorTable colors;
    std::vector<QString> links; ///< addresses; the first is that of what is no link
    QColor linkColor;
};

/// Writes paragraph by paragraph into an empty document, in one edit block.
class DocumentBuilder {
public:
    /// @param document and tables must outlive the builder; the tables may still grow.
    DocumentBuilder(QTextDocument& document, const Tables& tables);
    ~DocumentBuilder();
    DocumentBuilder(const DocumentBuilder&) = delete;
    DocumentBuilder& operator=(const DocumentBuilder&) = delete;

    /// @return the text of the paragraph so far, to append to; what is appended has this format.
    QString& textIn(const CharacterFormat& format);
    bool isParagraphEmpty() const { return fText.isEmpty(); }
    /// Writes the paragraph. @param end how high the line is when there is no text.
    void endParagraph(const ParagraphFormat& format, const CharacterFormat& end);
    void setDefaultTabDistance(int twips);

private:
    struct Run {
        qsizetype start;
        CharacterFormat format;
    };

    void replaceNoncharacters();
    void setLineHeight(QTextBlockFormat& made, const ParagraphFormat& format) const;
    QList<QTextOption::Tab> tabsOf(const ParagraphFormat& format) const;
    QTextBlockFormat blockFormat(const ParagraphFormat& format) const;
    const QTextCharFormat& charFormat(const CharacterFormat& format);
    QTextCharFormat madeCharFormat(const CharacterFormat& format) const;
    double pixels(int twips) const { return twips * fPixelsPerTwip; }

    QTextDocument& fDocument;
    const Tables& fTables;
    QTextCursor fCursor;
    double fPixelsPerTwip;
    bool fIsFirst = true; ///< the empty document's own paragraph is still to be used
    QString fText;
    std::vector<Run> fRuns;
    std::map<CharacterFormat, QTextCharFormat> fCharFormats;
};

}
