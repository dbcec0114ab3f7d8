#include "HelpWords.h"

#include "UsersWords.h"

namespace {

constexpr std::array<HelpWords, 6> kWords = { {
    { "en", "Back", "Forward", "Contents", "Search", "Not found" },
    { "de", "Zurück", "Vorwärts", "Inhalt", "Suchen", "Nicht gefunden" },
    { "es", "Atrás", "Adelante", "Contenido", "Buscar", "No encontrado" },
    { "fr", "Précédent", "Suivant", "Sommaire", "Rechercher", "Introuvable" },
    { "ja", "戻る", "進む", "目次", "検索", "見つかりません" },
    { "zh-Hans", "后退", "前进", "目录", "搜索", "未找到" },
} };

}

const HelpWords& UsersHelpWords() { return UsersWords(kWords); }
