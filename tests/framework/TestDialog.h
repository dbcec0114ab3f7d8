#pragma once

#include "tests/framework/FrameworkTest.h"
#include "ui/framework/ZEK_DialogWindowController.h"

#include <QLabel>

/// A label whose fitting size is 10 by 16 points for each character of its text.
class FixedLabel : public QLabel {
public:
    explicit FixedLabel(QWidget* parent = nullptr)
        : QLabel(parent)
    {
    }
    QSize sizeHint() const override { return FixedButton::fittingSize(text(), 16); }
};

/// An alert that a test fills, and that writes down which hooks were called.
class TestDialog : public ZEK_DialogWindowController {
public:
    using ZEK_DialogWindowController::fAlertLevel;
    using ZEK_DialogWindowController::fCommandPeriodKeyButton;
    using ZEK_DialogWindowController::fFirstButtonStringPtr;
    using ZEK_DialogWindowController::fHelpHint;
    using ZEK_DialogWindowController::fMoreInfoStringPtr;
    using ZEK_DialogWindowController::fMoreInfoURL_StringPtr;
    using ZEK_DialogWindowController::fPromptStringPtr;
    using ZEK_DialogWindowController::fQuitResult;
    using ZEK_DialogWindowController::fQuitResultValid;
    using ZEK_DialogWindowController::fReturnKeyButton;
    using ZEK_DialogWindowController::fSecondButtonStringPtr;
    using ZEK_DialogWindowController::fSuppressDialogKeyPtr;
    using ZEK_DialogWindowController::fThirdButtonStringPtr;
    using ZEK_DialogWindowController::fTimeStampStringPtr;
    using ZEK_DialogWindowController::fTitleStringPtr;

    bool init() { return initWithWindowNibName("Dialog"); }
    template <class View> View& view(const char* outlet) { return *window()->findChild<View*>(outlet); }

    std::vector<std::string> events;
    bool prelogin = false;

protected:
    bool runningPrelogin() const override { return prelogin; }
    void handleDialogButtonAction(int32_t result) override { note("action " + std::to_string(result)); }
    void handleQuit() override { note("quit"); }

private:
    void note(const std::string& event)
    {
        events.push_back(event + (window()->isVisible() ? "" : ", closed"));
    }
};

/// An alert's nib: texts in rows on the left, the buttons below them.
class DialogTest : public FrameworkTest {
protected:
    DialogTest()
    {
        RegisterNibClass("FixedLabel", [](QWidget* parent) { return new FixedLabel(parent); });
        writeDialogNib(control("HelpButton", "fHelpButtonPtr", { 10, 165, 26, 26 }, kBelow));
    }

    /// The pitches of the prompt and the time stamp, and of that and the link, are 26 and 22.
    void writeDialogNib(const std::string& helpButton) const
    {
        writeNib("Dialog",
            control("QLabel", "fWindowBadgePtr", { 10, 10, 64, 64 })
                + control("FixedLabel", "fTitlePtr", { 80, 10, 200, 16 })
                + control(
                    "QLabel", "fPromptPtr", { 80, 40, 200, 40 }, property("autoresizingMask", "width minY"))
                + control("QLabel", "fTimeStampPtr", { 80, 90, 200, 16 })
                + control("ClickableTextField", "fMoreInfoLinkPtr", { 80, 112, 200, 16 })
                + control("QCheckBox", "fDontDisplayWarningAgainButtonPtr", { 80, 140, 200, 20 }, kBelow)
                + helpButton + control("FixedButton", "fThirdButtonPtr", { 44, 166, 60, 24 }, kBelow)
                + control("FixedButton", "fSecondButtonPtr", { 130, 166, 70, 24 }, kBelowRight)
                + control("FixedButton", "fFirstButtonPtr", { 210, 166, 80, 24 }, kBelowRight));
    }

    const std::string kBelow = property("autoresizingMask", "maxX maxY");
    const std::string kBelowRight = property("autoresizingMask", "minX maxY");
};
