#pragma once

#include "ui/framework/ZEK_WindowController.h"

class ClickableTextField;
class HelpButton;
class QCheckBox;
class QLabel;
class QPushButton;

/// The base of alerts: up to three buttons, a badge, title and prompt, and where wanted a time stamp, a link and a box for
/// not showing the alert again. A subclass fills the settings; the nib's controls are then laid out around
/// the texts. To be shown with showWindow() and run with RunModalForWindow(), which gives 1, 2 or 3 for the button used, or
/// 0 when it was dismissed otherwise. Main thread only.
class ZEK_DialogWindowController : public ZEK_WindowController {
public:
    /// Whether the user asked not to see this alert again; the caller then does not show it.
    bool suppressDialog() const;

    QAbstractButton* returnCancelButton() const override;
    void cancelOperation() override;
    void windowWillCloseNotification(ZEK_Window& closing) override;
    void awakeFromNib() override;

    void handleButtonClicked(const QAbstractButton* sender);
    void helpButtonClicked();

protected:
    enum AlertLevel : int32_t { kInformation = 0, kCaution = 1, kStop = 2 };

    bool initWithWindowNibName(const std::string& nibName);
    void connectOutlets(Nib& nib) override;

    // Hooks.
    virtual void retainAllStrings(); ///< called by a subclass once it has filled the texts
    virtual bool runningPrelogin() const; ///< whether nobody has logged in yet, so that there is no help
    virtual void handleDialogButtonAction(int32_t result); ///< told of the answer before the run ends
    virtual void handleQuit(); ///< after an answer that is to quit

    // What the subclass fills before the window is first asked for. Texts without a value do not show.
    int32_t fAlertLevel = kInformation;
    std::optional<std::string> fTitleStringPtr, fPromptStringPtr, fTimeStampStringPtr;
    std::optional<std::string> fMoreInfoStringPtr; ///< the link's text
    std::optional<std::string> fMoreInfoURL_StringPtr;
    std::optional<std::string> fFirstButtonStringPtr, fSecondButtonStringPtr, fThirdButtonStringPtr;
    std::optional<std::string> fSuppressDialogKeyPtr; ///< where to keep that the user wants to see it no more
    int32_t fReturnKeyButton = 0; ///< 1 to 3; others give no button the Return key
    int32_t fCommandPeriodKeyButton = 0; ///< 1 to 3; others name no cancel button
    bool fQuitResultValid = false;
    int32_t fQuitResult = 0; ///< the answer that is to quit, where valid
    int32_t fHelpHint = 0;

private:
    float setButtonTitle(int32_t number, const std::optional<std::string>& title, bool anchorLeft,
        float offset, double& neededWidth);
    float setTitle();
    float setPrompt(float widthGrowth);
    void setWindowBadge();
    void setButtonTitles();
    void setTitleAndPromptStrings();
    void setSuppressDialogText();
    QPushButton* button(int32_t number) const;

    QLabel* fTitlePtr = nullptr;
    QLabel* fPromptPtr = nullptr;
    QLabel* fTimeStampPtr = nullptr;
    ClickableTextField* fMoreInfoLinkPtr = nullptr;
    QLabel* fWindowBadgePtr = nullptr;
    QPushButton* fFirstButtonPtr = nullptr;
    QPushButton* fSecondButtonPtr = nullptr;
    QPushButton* fThirdButtonPtr = nullptr;
    HelpButton* fHelpButtonPtr = nullptr;
    QCheckBox* fDontDisplayWarningAgainButtonPtr = nullptr;
};
