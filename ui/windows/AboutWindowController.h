#pragma once

#include "ui/framework/ZEK_WindowController.h"

class ClickableTextField;
class InvisibleButton;
class QLabel;

/// The About window: product, version, two links, copyright. Closing it changes nothing else. Main thread only.
class AboutWindowController : public ZEK_WindowController {
public:
    /// Shows the window, or brings the open one to the front.
    static void showAboutWindow();
    /// The open window's controller; null while there is none.
    static AboutWindowController* openController();

    void awakeFromNib() override;
    void close() override;
    void windowWillCloseNotification(ZEK_Window& closing) override;

    void handleCloseKeyEquivalent();

protected:
    void connectOutlets(Nib& nib) override;

private:
    AboutWindowController() = default;
    bool init();

    InvisibleButton* fInvisibleCloseButtonPtr = nullptr;
    QLabel* fProductStringPtr = nullptr;
    QLabel* fProductInfoTitleStringPtr = nullptr;
    ClickableTextField* fProductInfoURLStringPtr = nullptr;
    QLabel* fTechSupportTitleStringPtr = nullptr;
    ClickableTextField* fTechSupportURLStringPtr = nullptr;
    QLabel* fCopyright1StringPtr = nullptr;
    QLabel* fCopyright2StringPtr = nullptr;
    QLabel* fVersionStringPtr = nullptr;
};
