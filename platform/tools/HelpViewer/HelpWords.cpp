#include "HelpWords.h"

#include "CoreFoundation/Runtime.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBundle.h>

#include <algorithm>
#include <array>
#include <string>

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

const HelpWords& UsersHelpWords()
{
    const cf::Owned<CFMutableArrayRef> languages(
        CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (const HelpWords& words : kWords)
        CFArrayAppendValue(languages.get(), cf::Owned<CFStringRef>(cf::MakeString(words.language)).get());
    const cf::Owned<CFArrayRef> preferred(CFBundleCopyPreferredLocalizationsFromArray(languages.get()));
    const std::string best = cf::Utf8(static_cast<CFStringRef>(CFArrayGetValueAtIndex(preferred.get(), 0)));
    return *std::find_if(
        kWords.begin(), kWords.end(), [&](const HelpWords& words) { return words.language == best; });
}
