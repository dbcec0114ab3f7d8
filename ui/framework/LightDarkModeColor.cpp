#include "ui/framework/LightDarkModeColor.h"

#include "settings/SystemVersion.h"

#include <CoreFoundation/CoreFoundation.h>
#include <HostWindows/AppearanceFollower.h>

namespace {

constexpr double kDarkModeBrightness = 1.1;

struct Components {
    double red, green, blue, alpha;
};

QColor Color(const Components& c)
{
    return QColor::fromRgbF(static_cast<float>(c.red), static_cast<float>(c.green),
        static_cast<float>(c.blue), static_cast<float>(c.alpha));
}

void AppearanceHasChanged(
    CFNotificationCenterRef, void* color, CFNotificationName, const void*, CFDictionaryRef)
{
    static_cast<LightDarkModeColor*>(color)->appearanceHasChanged();
}

}

LightDarkModeColor::LightDarkModeColor(const QColor& light, const QColor& dark)
    : fLightModeColorPtr(light)
    , fDarkModeColorPtr(dark)
{
    updateColor();
    CFNotificationCenterAddObserver(CFNotificationCenterGetDistributedCenter(), this, AppearanceHasChanged,
        CFSTR("AppleInterfaceThemeChangedNotification"), nullptr,
        CFNotificationSuspensionBehaviorDeliverImmediately);
}

LightDarkModeColor::~LightDarkModeColor()
{
    CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetDistributedCenter(), this);
}

std::unique_ptr<LightDarkModeColor> LightDarkModeColor::colorwithSRGBLightModeRed(double lightModeRed,
    double lightModeGreen, double lightModeBlue, double lightModeAlpha, double darkModeRed,
    double darkModeGreen, double darkModeBlue, double darkModeAlpha)
{
    return std::unique_ptr<LightDarkModeColor>(
        new LightDarkModeColor(Color({ lightModeRed, lightModeGreen, lightModeBlue, lightModeAlpha }),
            Color({ darkModeRed, darkModeGreen, darkModeBlue, darkModeAlpha })));
}

std::unique_ptr<LightDarkModeColor> LightDarkModeColor::colorWithSRGBRed(
    double red, double green, double blue, double alpha)
{
    return colorwithSRGBLightModeRed(red, green, blue, alpha, red * kDarkModeBrightness,
        green * kDarkModeBrightness, blue * kDarkModeBrightness, alpha);
}

std::unique_ptr<LightDarkModeColor> LightDarkModeColor::colorWithNSColor(const QColor& color)
{
    if (!color.isValid())
        return nullptr;
    return colorWithSRGBRed(color.redF(), color.greenF(), color.blueF(), color.alphaF());
}

std::unique_ptr<LightDarkModeColor> LightDarkModeColor::colorWithLightModeColor(
    const QColor& lightModeColor, const QColor& darkModeColor)
{
    if (!lightModeColor.isValid() || !darkModeColor.isValid())
        return nullptr;
    return colorwithSRGBLightModeRed(lightModeColor.redF(), lightModeColor.greenF(), lightModeColor.blueF(),
        lightModeColor.alphaF(), darkModeColor.redF(), darkModeColor.greenF(), darkModeColor.blueF(),
        darkModeColor.alphaF());
}

std::unique_ptr<LightDarkModeColor> LightDarkModeColor::colorWithLightModeWhite(
    double lightModeWhite, double lightModeAlpha, double darkModeWhite, double darkModeAlpha)
{
    return colorwithSRGBLightModeRed(lightModeWhite, lightModeWhite, lightModeWhite, lightModeAlpha,
        darkModeWhite, darkModeWhite, darkModeWhite, darkModeAlpha);
}

void LightDarkModeColor::appearanceHasChanged() { fAppearanceHasChanged = true; }

void LightDarkModeColor::updateColor()
{
    if (SystemVersion() >= kFirstSystemWithDarkAppearance)
        fInDarkMode = AppearanceIsDark();
}

QColor LightDarkModeColor::color()
{
    if (fAppearanceHasChanged) {
        fAppearanceHasChanged = false;
        updateColor();
    }
    return fInDarkMode ? fDarkModeColorPtr : fLightModeColorPtr;
}
