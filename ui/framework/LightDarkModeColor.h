#pragma once

#include <QColor>
#include <memory>

/// A colour with one value for the light and one for the dark appearance. It notices changes of the appearance, and looks at it
/// again when it is next asked. Components are those of sRGB, 0 to 1; larger ones are kept. Main thread only.
class LightDarkModeColor {
public:
    // Each makes a colour, or answers null where a given one has no sRGB components.

    /// The dark value has each component 10 % brighter.
    static std::unique_ptr<LightDarkModeColor> colorWithNSColor(const QColor& color);
    static std::unique_ptr<LightDarkModeColor> colorWithSRGBRed(
        double red, double green, double blue, double alpha);
    static std::unique_ptr<LightDarkModeColor> colorWithLightModeColor(
        const QColor& lightModeColor, const QColor& darkModeColor);
    static std::unique_ptr<LightDarkModeColor> colorWithLightModeWhite(
        double lightModeWhite, double lightModeAlpha, double darkModeWhite, double darkModeAlpha);
    static std::unique_ptr<LightDarkModeColor> colorwithSRGBLightModeRed(double lightModeRed,
        double lightModeGreen, double lightModeBlue, double lightModeAlpha, double darkModeRed,
        double darkModeGreen, double darkModeBlue, double darkModeAlpha);

    ~LightDarkModeColor();
    LightDarkModeColor(const LightDarkModeColor&) = delete;
    LightDarkModeColor& operator=(const LightDarkModeColor&) = delete;

    /// The colour to use now.
    QColor color();
    /// Looks at the appearance; before system version 10.14, which introduced the dark one, it stays light.
    void updateColor();
    /// Marks the colour as one to look again.
    void appearanceHasChanged();

private:
    LightDarkModeColor(const QColor& light, const QColor& dark);

    bool fInDarkMode = false;
    bool fAppearanceHasChanged = false;
    QColor fLightModeColorPtr;
    QColor fDarkModeColorPtr;
};
