#pragma once

#include <Host/HostAppearance.h>
#include <QObject>
#include <QPalette>

/// Calm colours for an application on a desktop that has chosen none.
QPalette ApplicationPalette(bool dark);

/// Whether the application is shown in dark colours now.
bool AppearanceIsDark();

/// Lets the application follow the desktop's choice of light or dark while it runs: that of the desktop's settings where
/// there is one, else the toolkit's palette. Each change is told as "AppleInterfaceThemeChangedNotification" through the
/// distributed notification center, as a Mac's own system does. One object, as long as the QApplication lives.
class AppearanceFollower : public QObject {
    Q_OBJECT

public:
    AppearanceFollower();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void applyScheme();
    void tellChange();

    const QPalette fDesktopPalette;
    bool fWasDark = false;
    HostAppearance fDesktop;
};
