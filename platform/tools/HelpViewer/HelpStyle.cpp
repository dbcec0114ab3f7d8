#include "HelpStyle.h"

#include <QColor>
#include <algorithm>
#include <cmath>

namespace {

constexpr double kReadableContrast = 4.5;

/// %1 text, %2 links, %3 what stands back, %4 the ground of code, %5 to %7 a quarter, a half and a whole
/// line's height.
constexpr const char* kStyleSheet = R"(
body { color: %1; line-height: 140%; }
a { color: %2; }
h1 { font-size: x-large; font-weight: bold; margin-top: 0; margin-bottom: %6px; }
h2 { font-size: large; font-weight: bold; margin-top: %7px; margin-bottom: %5px; }
h3 { font-weight: bold; margin-top: %6px; margin-bottom: %5px; }
p { margin-top: 0; margin-bottom: %6px; }
ul, ol { margin-top: 0; margin-bottom: %6px; }
li { margin-bottom: %5px; }
dt { font-weight: bold; }
dd { margin-bottom: %6px; }
th { text-align: left; font-weight: bold; color: %3; }
th, td { padding: %5px %6px %5px 0; }
code { background-color: %4; }
.note { color: %3; }
)";

QColor Mix(const QColor& colour, const QColor& other, double part)
{
    const auto channel = [part](double one, double two) { return one + (two - one) * part; };
    return QColor::fromRgbF(static_cast<float>(channel(colour.redF(), other.redF())),
        static_cast<float>(channel(colour.greenF(), other.greenF())),
        static_cast<float>(channel(colour.blueF(), other.blueF())));
}

/// As the eye weighs it: sRGB's relative luminance.
double Luminance(const QColor& colour)
{
    const auto linear
        = [](double c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF())
        + 0.0722 * linear(colour.blueF());
}

double Contrast(const QColor& one, const QColor& two)
{
    const auto [dark, light] = std::minmax({ Luminance(one), Luminance(two) });
    return (light + 0.05) / (dark + 0.05);
}

/// The colour, moved towards the text's until it can be read: many palettes keep a link's blue on black.
QColor Readable(const QColor& colour, const QColor& text, const QColor& ground)
{
    QColor result = colour;
    for (int step = 1; step <= 10 && Contrast(result, ground) < kReadableContrast; ++step)
        result = Mix(colour, text, step / 10.0);
    return result;
}

}

QString HelpStyleSheet(const QPalette& palette, const QFontMetrics& font)
{
    const QColor text = palette.color(QPalette::Text);
    const QColor ground = palette.color(QPalette::Base);
    const int line = font.height();
    return QString(kStyleSheet)
        .arg(text.name(), Readable(palette.color(QPalette::Link), text, ground).name(),
            Readable(Mix(text, ground, 0.35), text, ground).name(), Mix(ground, text, 0.08).name())
        .arg(line / 4)
        .arg(line / 2)
        .arg(line);
}

int HelpIndent(const QFontMetrics& font) { return font.height() * 3 / 2; }

int HelpColumnWidth(const QFontMetrics& font) { return font.averageCharWidth() * 78; }
