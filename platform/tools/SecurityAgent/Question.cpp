#include "Question.h"

#include <QChar>

namespace {

bool CanBeShown(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

}

QString Showable(const std::string& utf8, size_t limit)
{
    std::u32string characters = QString::fromStdString(utf8).toStdU32String();
    for (char32_t& character : characters) {
        if (!CanBeShown(character))
            character = QChar::ReplacementCharacter;
    }
    if (characters.size() > limit) {
        const size_t tail = (limit - 1) / 2;
        characters.replace(limit - 1 - tail, characters.size() - limit + 1, 1, U'…');
    }
    return QString::fromStdU32String(characters);
}
