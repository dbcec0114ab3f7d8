#include "ui/framework/Layout.h"

#include "tests/framework/FrameworkTest.h"
#include "ui/framework/TextFitting.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>

namespace {

class LayoutTest : public FrameworkTest {
protected:
    LayoutTest() { resizeParent(); }

    void resizeParent() { parent.resize((QSizeF(500, 300) * PixelsPerPoint()).toSize()); }

    /// A button with a fitting size in points.
    FixedButton& button(const Rect& frame, double fittingWidth, double fittingHeight)
    {
        auto* const made = new FixedButton(&parent);
        made->fixedSize = (QSizeF(fittingWidth, fittingHeight) * PixelsPerPoint()).toSize();
        SetFrame(*made, frame);
        return *made;
    }
    QLabel& field(const Rect& frame, const QString& text)
    {
        auto* const made = new QLabel(text, &parent);
        SetFrame(*made, frame);
        return *made;
    }

    QWidget parent;
};

/// Half a pixel, to which frames are rounded.
double Rounding() { return 0.5 / PixelsPerPoint() + 1e-9; }

void ExpectNear(const Rect& frame, const Rect& expected)
{
    EXPECT_NEAR(frame.x, expected.x, Rounding());
    EXPECT_NEAR(frame.y, expected.y, 2 * Rounding());
    EXPECT_NEAR(frame.width, expected.width, Rounding());
    EXPECT_NEAR(frame.height, expected.height, Rounding());
}

}

TEST_F(LayoutTest, AButtonNeverShrinksAndGrowsWithAMargin)
{
    for (const bool large : { false, true }) {
        if (large)
            useLargeText();
        resizeParent();
        struct Case {
            double fittingWidth, fittingHeight, width;
        };
        for (const Case& c :
            { Case { 60, 20, 80 }, Case { 75, 20, 80 }, Case { 76, 20, 80 }, Case { 90, 20, 94 },
                Case { 90, 31, 94 }, Case { 90, 32, 102 }, Case { 67, 32, 80 }, Case { 70, 32, 82 } }) {
            FixedButton& control = button({ 100, 50, 80, 20 }, c.fittingWidth, c.fittingHeight);
            EXPECT_NEAR(SizeToFit(&control, true, 0), c.width - 80, 2 * Rounding());
            ExpectNear(Frame(control), { 100, 50, c.width, c.fittingHeight });
        }
    }
}

TEST_F(LayoutTest, ARowKeepsItsAlignmentWhileItsControlsGrow)
{
    FixedButton& first = button({ 200, 10, 80, 20 }, 90, 20);
    FixedButton& second = button({ 110, 10, 80, 20 }, 100, 20);
    const float shift = SizeToFit(&first, false, 0);
    EXPECT_EQ(shift, -14);
    EXPECT_EQ(Frame(first), (Rect { 186, 10, 94, 20 })) << "the right edge stays";
    EXPECT_EQ(SizeToFit(&second, false, shift), -38);
    EXPECT_EQ(Frame(second), (Rect { 72, 10, 104, 20 })) << "it moves by what both grew";

    FixedButton& left = button({ 20, 10, 80, 20 }, 90, 20);
    EXPECT_EQ(SizeToFit(&left, true, 6), 20);
    EXPECT_EQ(Frame(left), (Rect { 26, 10, 94, 20 }));
}

TEST_F(LayoutTest, OtherControlsTakeTheirFittingSize)
{
    QLabel& label = field({ 30, 40, 400, 100 }, "text");
    const QSize fitting = label.sizeHint();
    EXPECT_EQ(SizeToFit(&label, false, 3), static_cast<float>(3 + 400 - fitting.width()));
    EXPECT_EQ(Frame(label),
        (Rect { 433.0 - fitting.width(), 40, static_cast<double>(fitting.width()),
            static_cast<double>(fitting.height()) }));
    EXPECT_EQ(SizeToFit(nullptr, false, 3), 3);
    EXPECT_EQ(SizeToFit(nullptr, true, 3), 3);
}

TEST_F(LayoutTest, ATextFieldGrowsDownwardsAroundItsText)
{
    for (const bool large : { false, true }) {
        if (large)
            useLargeText();
        resizeParent();
        QLabel& text = field({ 20, 150, 200, 10 }, "");
        const QFontMetrics metrics = text.fontMetrics();
        const double wordWidth = metrics.horizontalAdvance("mmmm") / PixelsPerPoint();
        text.setText("mmmm mmmm mmmm");
        SetFrame(text, { 20, 150, wordWidth + 25, 10 });
        const double height = 3 * lineHeight(metrics) / PixelsPerPoint();
        EXPECT_NEAR(AdjustFrameOfTextView(text), height - 10, 2 * Rounding());
        const Rect frame = Frame(text);
        EXPECT_NEAR(frame.x, 20, Rounding());
        EXPECT_NEAR(frame.y + frame.height, 160, 2 * Rounding()) << "the upper edge stays";
        EXPECT_NEAR(frame.height, height, Rounding());
        EXPECT_NEAR(frame.width, wordWidth + 20, 2.0);
    }
}

TEST_F(LayoutTest, ATextFieldThatIsHighEnoughLowersItsUpperEdge)
{
    QLabel& text = field({ 20, 150, 200, 100 }, "one line");
    EXPECT_EQ(AdjustFrameOfTextView(text), 0.0F);
    EXPECT_EQ(Frame(text).y, 150);
    EXPECT_EQ(Frame(text).height, lineHeight(text.fontMetrics()));
    QLabel& empty = field({ 20, 150, 200, 100 }, "");
    EXPECT_EQ(AdjustFrameOfTextView(empty), 0.0F);
    EXPECT_EQ(Frame(empty), (Rect { 20, 150, 20, 0 }));
}

TEST_F(LayoutTest, EnablingAViewReachesTheControlsInItButNotThoseInControls)
{
    QGroupBox box(&parent);
    QWidget nested(&box);
    const QPushButton button(&nested);
    const QSlider slider(&box);
    QLabel label(&box);
    QLineEdit inner(&label);
    inner.setEnabled(false);
    RecursivelyEnableSubviews(&box, false);
    EXPECT_FALSE(button.isEnabled());
    EXPECT_FALSE(slider.isEnabled());
    EXPECT_FALSE(label.isEnabled());
    EXPECT_TRUE(box.isEnabled());
    EXPECT_TRUE(nested.isEnabled());
    RecursivelyEnableSubviews(&box, true);
    EXPECT_TRUE(button.isEnabled());
    EXPECT_TRUE(label.isEnabled());
    EXPECT_FALSE(inner.isEnabled());
    RecursivelyEnableSubviews(nullptr, true);
}
