#include "tests/framework/TestDialog.h"
#include "ui/framework/ClickableTextField.h"

#include <QCheckBox>
#include <QImage>

namespace {

class DialogLayoutTest : public DialogTest {
protected:
    DialogLayoutTest()
    {
        dialog.fTitleStringPtr = "Title";
        dialog.fPromptStringPtr = "Prompt";
        dialog.fTimeStampStringPtr = "Today";
        dialog.fMoreInfoStringPtr = "More";
        dialog.fMoreInfoURL_StringPtr = "https://zek.example/";
        dialog.fSuppressDialogKeyPtr = "Key";
        dialog.fFirstButtonStringPtr = "OK";
    }

    /// Where a control is, from the upper left corner of the window.
    QRect place(const char* outlet) { return dialog.view<QWidget>(outlet).geometry(); }
    QSize windowSize() { return dialog.window()->contentSize(); }

    TestDialog dialog;
};

}

TEST_F(DialogLayoutTest, WhatFitsStaysAsDrawn)
{
    dialog.fSecondButtonStringPtr = "No";
    dialog.fThirdButtonStringPtr = "Later";
    ASSERT_TRUE(dialog.init());
    EXPECT_EQ(windowSize(), QSize(300, 200)) << "26 + 26 for help, 80 + 12, 70 + 12, 60 + 12: just enough";
    EXPECT_EQ(place("fFirstButtonPtr"), QRect(210, 166, 80, 24));
    EXPECT_EQ(place("fThirdButtonPtr"), QRect(44, 166, 60, 24));
    EXPECT_EQ(place("fTimeStampPtr"), QRect(80, 90, 200, 16));
    EXPECT_EQ(place("fMoreInfoLinkPtr"), QRect(80, 112, 200, 16));
    EXPECT_EQ(dialog.view<QLabel>("fTimeStampPtr").text(), "Today");
    EXPECT_TRUE(dialog.view<QLabel>("fTitlePtr").font().bold());
    EXPECT_FALSE(dialog.view<QLabel>("fPromptPtr").font().bold());
    EXPECT_TRUE(dialog.view<QLabel>("fMoreInfoLinkPtr").font().underline());
    EXPECT_EQ(dialog.view<QCheckBox>("fDontDisplayWarningAgainButtonPtr").text(), "kSuppressDialogText");
}

TEST_F(DialogLayoutTest, WideButtonsWidenTheWindow)
{
    dialog.fFirstButtonStringPtr = "Ten chars."; // 104
    dialog.fSecondButtonStringPtr = "Nine char"; // 94
    dialog.fThirdButtonStringPtr = "Seven c"; // 74
    ASSERT_TRUE(dialog.init());
    EXPECT_EQ(windowSize(), QSize(52 + 104 + 94 + 74 + 3 * 12, 200));
    const int right = windowSize().width() - 10;
    EXPECT_EQ(place("fFirstButtonPtr"), QRect(right - 104, 166, 104, 24));
    EXPECT_EQ(place("fSecondButtonPtr"), QRect(right - 104 - 10 - 94, 166, 94, 24)) << "the gap stays";
    EXPECT_EQ(place("fThirdButtonPtr"), QRect(44, 166, 74, 24));
}

TEST_F(DialogLayoutTest, AButtonWithoutTitleIsHiddenAndNeedsNoRoom)
{
    writeDialogNib("");
    dialog.fFirstButtonStringPtr.reset();
    dialog.fSecondButtonStringPtr = std::string(29, 'x'); // 294 + 12
    ASSERT_TRUE(dialog.init());
    EXPECT_EQ(windowSize().width(), 306) << "there is no help button either";
    EXPECT_TRUE(dialog.view<QWidget>("fFirstButtonPtr").isHidden());
    EXPECT_TRUE(dialog.view<QWidget>("fThirdButtonPtr").isHidden());
    EXPECT_FALSE(dialog.view<QWidget>("fSecondButtonPtr").isHidden());
    EXPECT_EQ(place("fSecondButtonPtr").right(), 199 + 6) << "not shifted by a button that is not there";
}

TEST_F(DialogLayoutTest, AHighPromptMovesWhatIsBelowAndTheWindowsEdge)
{
    dialog.fPromptStringPtr = "1\n2\n3\n4\n5\n6\n7\n8";
    ASSERT_TRUE(dialog.init());
    dialog.window();
    const QFontMetrics metrics = dialog.view<QLabel>("fPromptPtr").fontMetrics();
    const int height = 8 * lineHeight(metrics);
    ASSERT_GT(height, 40);
    const int growth = height - 40;
    EXPECT_EQ(windowSize(), QSize(300, 200 + growth));
    EXPECT_EQ(
        place("fPromptPtr"), QRect(80, 40, metrics.size(0, "1\n2\n3\n4\n5\n6\n7\n8").width() + 20, height));
    EXPECT_EQ(place("fTimeStampPtr").y(), 90 + growth);
    EXPECT_EQ(place("fMoreInfoLinkPtr").y(), 112 + growth);
    EXPECT_EQ(place("fFirstButtonPtr").y(), 166 + growth);
}

TEST_F(DialogLayoutTest, ALongTitleWidensTheWindowAndThePrompt)
{
    dialog.fTitleStringPtr = std::string(30, 'x');
    dialog.fPromptStringPtr = "A prompt that is wider than the field it was drawn for";
    ASSERT_TRUE(dialog.init());
    EXPECT_EQ(windowSize(), QSize(400, 200));
    EXPECT_EQ(place("fTitlePtr"), QRect(80, 10, 300, 16));
    const QLabel& prompt = dialog.view<QLabel>("fPromptPtr");
    const int textWidth = prompt.fontMetrics().horizontalAdvance(prompt.text());
    ASSERT_GT(textWidth, 180) << "the field alone would not do";
    ASSERT_LT(textWidth, 280);
    EXPECT_NEAR(prompt.width(), textWidth + 20, 2);
    EXPECT_EQ(prompt.height(), lineHeight(prompt.fontMetrics()));
}

TEST_F(DialogLayoutTest, AbsentRowsShrinkTheWindow)
{
    dialog.fTimeStampStringPtr.reset();
    ASSERT_TRUE(dialog.init());
    EXPECT_EQ(windowSize(), QSize(300, 200 - 26));
    EXPECT_TRUE(dialog.view<QWidget>("fTimeStampPtr").isHidden());
    EXPECT_EQ(place("fMoreInfoLinkPtr").y(), 112 - 26);
    EXPECT_EQ(place("fFirstButtonPtr").y(), 166 - 26);

    TestDialog bare;
    bare.fFirstButtonStringPtr = "OK";
    ASSERT_TRUE(bare.init());
    EXPECT_EQ(bare.window()->contentSize(), QSize(300, 200 - 26 - 22 - 44));
    EXPECT_TRUE(bare.view<QWidget>("fMoreInfoLinkPtr").isHidden());
    EXPECT_TRUE(bare.view<QWidget>("fDontDisplayWarningAgainButtonPtr").isHidden());
    EXPECT_EQ(bare.view<QLabel>("fPromptPtr").geometry(), QRect(80, 40, 200, 40)) << "no prompt, as drawn";

    useLargeText();
    TestDialog large;
    ASSERT_TRUE(large.init());
    EXPECT_NEAR(Frame(*large.window()).height, 200 - 26 - 22 - 44, 2 / PixelsPerPoint());
}

TEST_F(DialogLayoutTest, TheBadgeTellsHowSeriousItIs)
{
    const auto draw = [this](const char* name, Qt::GlobalColor color) {
        QImage image(64, 64, QImage::Format_RGB32);
        image.fill(color);
        ASSERT_TRUE(image.save(QString::fromStdString((volume.resources() / name).string()), "PNG"));
    };
    draw("DialogInfoBadge.tiff", Qt::blue);
    draw("DialogCautionBadge.tiff", Qt::yellow);
    const std::pair<int32_t, QColor> levels[]
        = { { 0, Qt::blue }, { 1, Qt::yellow }, { 3, Qt::blue }, { -1, Qt::blue } };
    for (const auto& [level, color] : levels) {
        TestDialog badged;
        badged.fAlertLevel = level;
        ASSERT_TRUE(badged.init());
        EXPECT_EQ(badged.view<QLabel>("fWindowBadgePtr").pixmap().toImage().pixelColor(32, 32), color)
            << level;
    }
    dialog.fAlertLevel = 2;
    ASSERT_TRUE(dialog.init());
    EXPECT_TRUE(dialog.view<QLabel>("fWindowBadgePtr").pixmap().isNull()) << "there is no such image";
}
