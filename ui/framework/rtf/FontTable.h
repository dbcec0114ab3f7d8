#pragma once

#include <QFont>
#include <QString>
#include <QStringList>
#include <optional>
#include <unordered_map>

namespace rtf {

/// A font as the text defines it.
struct Font {
    QString name; ///< ends at its first semicolon
    QFont::StyleHint kind = QFont::AnyStyle;
    std::optional<int> charset; ///< by the numbers that Windows gives to scripts
    std::optional<int> codePage;

    /// The families to look for, the best first.
    QStringList families() const;
    /// What the font's bytes stand for; nothing where the document says so. See CodePages.
    std::optional<int> page() const;
};

class FontTable {
public:
    /// Begins the definition of a font, anew if there was one of that number.
    void define(int number);
    /// The font whose definition was begun last.
    Font& current() { return *fCurrent; }
    /// @return null for one that is not defined.
    const Font* find(int number) const;

private:
    std::unordered_map<int, Font> fFonts;
    Font fNobodys; ///< takes what comes before the first definition
    Font* fCurrent = &fNobodys;
};

}
