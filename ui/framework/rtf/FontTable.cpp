#include "ui/framework/rtf/FontTable.h"
#include "ui/framework/rtf/CodePage.h"

#include <algorithm>
#include <array>
#include <utility>

namespace rtf {

namespace {

constexpr int kSymbolCharset = 2;

/// The code page of each charset. Those of the Mac are taken for Windows' of the same script where they differ in a
/// handful of signs only.
constexpr auto kPageOfCharset
    = std::to_array<std::pair<int, int>>({ { 0, 1252 }, { 77, 10000 }, { 78, 932 }, { 79, 949 }, { 80, 936 },
        { 81, 950 }, { 85, 10006 }, { 86, 10081 }, { 88, 10029 }, { 89, 10007 }, { 128, 932 }, { 129, 949 },
        { 134, 936 }, { 136, 950 }, { 161, 1253 }, { 162, 1254 }, { 163, 1258 }, { 177, 1255 }, { 178, 1256 },
        { 186, 1257 }, { 204, 1251 }, { 222, 874 }, { 238, 1250 }, { 254, 437 }, { 255, 850 } });

}

QStringList Font::families() const
{
    constexpr qsizetype longest = 100;
    const qsizetype end = name.indexOf(u';');
    const QString family = name.left(end < 0 ? longest : std::min(end, longest)).trimmed();
    // Signs become characters of their own, which any font can show. A name with a point at its start is the Mac's
    // system font, which the view has anyhow.
    if (page() == kSymbolPage || page() == kDingbatsPage || family.isEmpty() || family.startsWith(u'.'))
        return {};
    // A Mac names the face, "Helvetica-Bold"; the family has to be the same for all faces of a text.
    const qsizetype hyphen = family.indexOf(u'-');
    return hyphen > 0 ? QStringList { family.left(hyphen), family } : QStringList { family };
}

std::optional<int> Font::page() const
{
    if (codePage)
        return codePage;
    if (charset == kSymbolCharset && name.startsWith(u"Symbol"))
        return kSymbolPage;
    if (charset == kSymbolCharset && (name.startsWith(u"Wingdings") || name.contains(u"Dingbats")))
        return kDingbatsPage;
    const auto* const found = std::ranges::find(kPageOfCharset, charset, &std::pair<int, int>::first);
    return found == kPageOfCharset.end() ? std::nullopt : std::optional(found->second);
}

void FontTable::define(int number)
{
    fCurrent = &fFonts[number];
    *fCurrent = {};
}

const Font* FontTable::find(int number) const
{
    const auto found = fFonts.find(number);
    return found == fFonts.end() ? nullptr : &found->second;
}

}
