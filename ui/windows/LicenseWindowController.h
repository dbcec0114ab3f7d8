#pragma once

#include "ui/framework/ZEK_WindowController.h"

class InvisibleButton;
class LicenseTextView;
class QPushButton;

/// Shows the end-user license agreement and tells the application controller the answer. Whatever closes the window hands on
/// to that controller. Main thread only.
class LicenseWindowController : public ZEK_WindowController {
public:
    /// Shows the window; nothing while one is open.
    static void showLicenseWindow();
    /// The open window's controller; null while there is none.
    static LicenseWindowController* openController();

    void awakeFromNib() override;
    void close() override;

    void agreeButtonClicked();
    void disagreeButtonClicked();
    void handleCloseKeyEquivalent();

protected:
    void connectOutlets(Nib& nib) override;

private:
    LicenseWindowController() = default;
    bool init();

    InvisibleButton* fInvisibleCloseButtonPtr = nullptr;
    LicenseTextView* fLicenceAgreementTextViewPtr = nullptr;
    QPushButton* fAgreeButtonPtr = nullptr;
    QPushButton* fDisagreeButtonPtr = nullptr;
};
