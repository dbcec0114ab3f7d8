#include "HostWindows/AppearanceFollower.h"

#include <CoreFoundation/CoreFoundation.h>
#include <QApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <QStyle>

namespace {

struct PaletteColors {
    QRgb window, base, alternateBase, button, text, placeholder, disabled, accent, link, edge;
};
constexpr PaletteColors kLight { 0xFFF5F5F6, 0xFFFFFFFF, 0xFFF0F0F2, 0xFFFBFBFC, 0xFF1F2023, 0xFF6B6E75,
    0xFF9A9DA3, 0xFF005DA8, 0xFF005DA8, 0xFFB4B7BD };
constexpr PaletteColors kDark { 0xFF2A2B2E, 0xFF1E1F22, 0xFF26272A, 0xFF46484D, 0xFFEDEEF0, 0xFFA3A6AD,
    0xFF7C7F86, 0xFF1A66B0, 0xFF6FB7F7, 0xFF141517 };

QPalette PaletteOf(const PaletteColors& colors)
{
    const auto brush = [](QRgb color) { return QBrush(QColor(color)); };
    QPalette palette(brush(colors.text), brush(colors.button), QColor(colors.button).lighter(120),
        brush(colors.edge), QColor(colors.edge).lighter(115), brush(colors.text), QColor(Qt::white),
        brush(colors.base), brush(colors.window));
    palette.setColor(QPalette::AlternateBase, QColor(colors.alternateBase));
    palette.setColor(QPalette::ToolTipBase, colors.base);
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.placeholder);
    palette.setColor(QPalette::Highlight, colors.accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, colors.link);
    palette.setColor(QPalette::LinkVisited, colors.link);
    for (const QPalette::ColorRole role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
        palette.setColor(QPalette::Disabled, role, colors.disabled);
    return palette;
}

bool IsDark(const QPalette& palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

/// The desktop's own colours where it has chosen any and they fit, else ours.
QPalette PaletteFor(bool dark, const QPalette& desktop)
{
    const bool isDesktopsChoice = desktop != QApplication::style()->standardPalette();
    if (isDesktopsChoice && IsDark(desktop) == dark)
        return desktop;
    return ApplicationPalette(dark);
}

}

QPalette ApplicationPalette(bool dark) { return PaletteOf(dark ? kDark : kLight); }

bool AppearanceIsDark() { return IsDark(QApplication::palette()); }

AppearanceFollower::AppearanceFollower()
    : fDesktopPalette(QApplication::palette())
    , fWasDark(AppearanceIsDark())
    , fDesktop([this] { applyScheme(); })
{
    qApp->installEventFilter(this);
    applyScheme();
    if (fDesktop.descriptor() < 0)
        return;
    auto* const notifier = new QSocketNotifier(fDesktop.descriptor(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] { fDesktop.process(); });
}

void AppearanceFollower::applyScheme()
{
    const HostColorScheme scheme = fDesktop.colorScheme();
    const bool isChosen = scheme == HostColorScheme::dark || scheme == HostColorScheme::light;
    const bool dark = isChosen ? scheme == HostColorScheme::dark : IsDark(fDesktopPalette);
    QApplication::setPalette(PaletteFor(dark, fDesktopPalette));
}

bool AppearanceFollower::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        tellChange();
    return false;
}

void AppearanceFollower::tellChange()
{
    if (AppearanceIsDark() == fWasDark)
        return;
    fWasDark = !fWasDark;
    CFNotificationCenterPostNotification(CFNotificationCenterGetDistributedCenter(),
        CFSTR("AppleInterfaceThemeChangedNotification"), nullptr, nullptr, true);
}
