#pragma once

#include "ui/framework/ZEK_WindowController.h"

class ClickableTextField;
class InvisibleButton;
class QCheckBox;
class QLabel;
class QPushButton;
class ZEK_WindowHeaderView;

/// The installer's main window: what is about to happen, the versions, whether the driver is there, and for a fresh
/// installation whether usage data may be sent. Whatever closes it hands on to the application controller. Main thread only.
class InstallWindowController : public ZEK_WindowController {
public:
    /// Shows the window; nothing while one is open.
    static void showInstallWindow();
    /// The open window's controller; null while there is none.
    static InstallWindowController* openController();

    void awakeFromNib() override;
    void close() override;

    void installButtonClicked();
    void cancelButtonClicked();
    void helpButtonClicked();
    void handleCloseKeyEquivalent();

protected:
    void connectOutlets(Nib& nib) override;

private:
    InstallWindowController() = default;
    bool init();
    void setButtons(bool restartMightBeRequired);
    void setPrompts(bool restartMightBeRequired);
    void setVersions();
    void setUsageDataRows();

    InvisibleButton* fInvisibleCloseButtonPtr = nullptr;
    ZEK_WindowHeaderView* fBlueHeaderViewPtr = nullptr;
    QLabel* fPrompt1Ptr = nullptr;
    QLabel* fPrompt2Ptr = nullptr;
    QLabel* fCurrentVersionTitlePtr = nullptr;
    QLabel* fCurrentVersionPtr = nullptr;
    QLabel* fNewVersionTitlePtr = nullptr;
    QLabel* fNewVersionPtr = nullptr;
    QLabel* fHighPoweredPortsTitlePtr = nullptr;
    QLabel* fHighPoweredPortsStatusPtr = nullptr;
    QCheckBox* fSendUsageDataButtonPtr = nullptr;
    ClickableTextField* fSendUsageDataMoreInfoPtr = nullptr;
    QLabel* fSendUsageDataPromptPtr = nullptr;
    QPushButton* fInstallButtonPtr = nullptr;
    QPushButton* fCancelButtonPtr = nullptr;
};
