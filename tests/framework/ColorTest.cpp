#include "ui/framework/LightDarkModeColor.h"

#include "tests/framework/FrameworkTest.h"
#include "ui/framework/ZEK_WindowHeaderView.h"

#include <QImage>

namespace {

class ColorTest : public FrameworkTest {
protected:
    void setSystem(const std::string& version) const
    {
        TestVolume::write(volume.root() / "System/Library/CoreServices/SystemVersion.plist",
            "<plist version=\"1.0\"><dict><key>ProductVersion</key><string>" + version
                + "</string></dict></plist>");
    }

    /// The colour in the middle of what a view paints over magenta.
    static QColor painted(QWidget& view)
    {
        QImage image(20, 20, QImage::Format_RGB32);
        image.fill(Qt::magenta);
        view.resize(image.size());
        view.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
        return image.pixelColor(10, 10);
    }
};

}

TEST_F(ColorTest, TheAppearanceIsLookedAtOnlyOnceAfterAnyNumberOfChanges)
{
    const auto color = LightDarkModeColor::colorWithLightModeColor(Qt::yellow, Qt::blue);
    EXPECT_EQ(color->color(), QColor(Qt::yellow));
    setDark(true);
    EXPECT_EQ(color->color(), QColor(Qt::yellow)) << "nobody has told yet";
    tellAppearanceChange();
    tellAppearanceChange();
    EXPECT_EQ(color->color(), QColor(Qt::blue));
    setDark(false);
    EXPECT_EQ(color->color(), QColor(Qt::blue));
    tellAppearanceChange();
    setDark(true);
    EXPECT_EQ(color->color(), QColor(Qt::blue)) << "it is dark again when it looks";
    EXPECT_EQ(LightDarkModeColor::colorWithLightModeColor(Qt::yellow, Qt::blue)->color(), QColor(Qt::blue));
}

TEST_F(ColorTest, ASystemWithoutDarkAppearanceIsAlwaysLight)
{
    setDark(true);
    setSystem("10.13.6");
    const auto color = LightDarkModeColor::colorWithLightModeColor(Qt::yellow, Qt::blue);
    tellAppearanceChange();
    EXPECT_EQ(color->color(), QColor(Qt::yellow));
    setSystem("10.14");
    tellAppearanceChange();
    EXPECT_EQ(color->color(), QColor(Qt::blue));
}

TEST_F(ColorTest, TheDarkColorIsATenthBrighterAndNotCutOff)
{
    setDark(true);
    const QColor made = LightDarkModeColor::colorWithSRGBRed(0.2, 0.5, 1.0, 0.75)->color();
    EXPECT_NEAR(made.redF(), 0.22, 0.001);
    EXPECT_NEAR(made.greenF(), 0.55, 0.001);
    EXPECT_NEAR(made.blueF(), 1.1, 0.001);
    EXPECT_NEAR(made.alphaF(), 0.75, 0.001);
    EXPECT_NEAR(
        LightDarkModeColor::colorWithNSColor(QColor::fromHsvF(0, 1, 0.5F))->color().redF(), 0.55, 0.001);
    const auto white = LightDarkModeColor::colorWithLightModeWhite(0.9, 0.8, 0.3, 0.4);
    EXPECT_EQ(white->color(), QColor::fromRgbF(0.3F, 0.3F, 0.3F, 0.4F));
    setDark(false);
    tellAppearanceChange();
    EXPECT_EQ(white->color(), QColor::fromRgbF(0.9F, 0.9F, 0.9F, 0.8F));
}

TEST_F(ColorTest, WithoutAColorThereIsNone)
{
    EXPECT_EQ(LightDarkModeColor::colorWithNSColor(QColor()), nullptr);
    EXPECT_EQ(LightDarkModeColor::colorWithLightModeColor(QColor(), Qt::blue), nullptr);
    EXPECT_EQ(LightDarkModeColor::colorWithLightModeColor(Qt::blue, QColor()), nullptr);
}

TEST_F(ColorTest, AHeaderViewIsBlueOnceItIsAwake)
{
    ZEK_WindowHeaderView view;
    EXPECT_EQ(painted(view), QColor(Qt::magenta));
    view.awakeFromNib();
    EXPECT_EQ(painted(view), QColor(0, 93, 168));
    setDark(true);
    tellAppearanceChange();
    EXPECT_EQ(painted(view), QColor(0, 102, 185));
}
