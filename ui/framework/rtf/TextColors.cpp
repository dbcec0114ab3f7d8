#include "ui/framework/rtf/TextColors.h"

#include <algorithm>

namespace rtf {

namespace {

// What people take for black and white: word processors have defaults a little off.
bool IsBlack(const QColor& color) { return std::max({ color.red(), color.green(), color.blue() }) < 0x30; }
bool IsWhite(const QColor& color) { return std::min({ color.red(), color.green(), color.blue() }) > 0xf4; }

}

void ColorTable::setPart(int part, int value)
{
    if (!fNext)
        fNext.emplace();
    fNext->at(static_cast<size_t>(part)) = std::clamp(value, 0, 255);
}

void ColorTable::takeText(std::string_view bytes)
{
    for (auto ends = std::ranges::count(bytes, ';'); ends > 0; ends--) {
        fColors.push_back(
            fNext ? std::optional(QColor((*fNext)[0], (*fNext)[1], (*fNext)[2])) : std::nullopt);
        fNext.reset();
    }
}

std::optional<QColor> ColorTable::find(int number) const
{
    const auto index = static_cast<size_t>(number);
    return number > 0 && index < fColors.size() ? fColors[index] : std::nullopt;
}

TextColors ColorTable::textColors(int foreground, int background) const
{
    TextColors colors { find(foreground), find(background) };
    if (colors.background && IsWhite(*colors.background))
        colors.background.reset();
    if (colors.background) {
        if (!colors.foreground) // the palette's is for the palette's background
            colors.foreground = qGray(colors.background->rgb()) < 0x80 ? Qt::white : Qt::black;
        return colors;
    }
    if (colors.foreground && (IsBlack(*colors.foreground) || IsWhite(*colors.foreground)))
        colors.foreground.reset();
    return colors;
}

}
