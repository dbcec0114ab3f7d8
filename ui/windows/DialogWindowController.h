#pragma once

#include "ui/framework/ZEK_DialogWindowController.h"

/// One of the installer's alerts, by its number (AppController::Alert). To be shown and run as its base tells. Main thread
/// only.
class DialogWindowController : public ZEK_DialogWindowController {
public:
    /// @param panelNumber a number outside 1 to 8 gives an empty alert that only Escape dismisses.
    /// @return null, with a message on standard error, when its nib cannot be loaded.
    static std::unique_ptr<DialogWindowController> initWithAlertPanelNumber(int32_t panelNumber);

private:
    DialogWindowController() = default;
    void lookupWindowStringsWithAlertPanelNumber(int32_t panelNumber);
};
