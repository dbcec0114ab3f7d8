#include "ui/windows/DialogWindowController.h"

#include "install/DriverInterface.h"
#include "util/Bundle.h"

#include <array>

namespace {

struct AlertTexts {
    bool isFailure;
    bool tellsOfRestart; ///< once the driver has changed, the alert asks for a restart
    CFStringRef title, message, firstButton;
    CFStringRef cancelButton; ///< the default button where there is one: going ahead takes a click
};

/// By alert number, from 1 on.
const std::array<AlertTexts, 8>& Catalogue()
{
    static const std::array<AlertTexts, 8> alerts { {
        { false, true, CFSTR("kInstallSuccessfulTitle"), CFSTR("kInstallSuccessfulMessage"), CFSTR("OK"),
            nullptr },
        { true, false, CFSTR("kInstallFailedTitle"), CFSTR("kInstallFailedMessage"), CFSTR("OK"), nullptr },
        { false, true, CFSTR("kUpdateSuccessfulTitle"), CFSTR("kUpdateSuccessfulMessage"), CFSTR("OK"),
            nullptr },
        { true, false, CFSTR("kUpdateFailedTitle"), CFSTR("kUpdateFailedMessage"), CFSTR("OK"), nullptr },
        { false, true, CFSTR("kUninstallSuccessfulTitle"), CFSTR("kUninstallSuccessfulMessage"), CFSTR("OK"),
            nullptr },
        { true, false, CFSTR("kUninstallFailedTitle"), CFSTR("kUninstallFailedMessage"), CFSTR("OK"),
            nullptr },
        { false, false, CFSTR("kInstallDriverTitle"), CFSTR("kInstallDriverMessage"),
            CFSTR("InstallAndRestart"), CFSTR("Cancel") },
        { false, false, CFSTR("kUpdateDriverTitle"), CFSTR("kUpdateDriverMessage"), CFSTR("UpdateAndRestart"),
            CFSTR("Cancel") },
    } };
    return alerts;
}

}

std::unique_ptr<DialogWindowController> DialogWindowController::initWithAlertPanelNumber(int32_t panelNumber)
{
    std::unique_ptr<DialogWindowController> dialog(new DialogWindowController);
    if (!dialog->initWithWindowNibName("DialogWindow"))
        return nullptr;
    dialog->fAlertLevel = kInformation;
    dialog->fHelpHint = 0;
    dialog->lookupWindowStringsWithAlertPanelNumber(panelNumber);
    dialog->retainAllStrings();
    return dialog;
}

void DialogWindowController::lookupWindowStringsWithAlertPanelNumber(int32_t panelNumber)
{
    const DriverInterface* const driver = DriverInterface::driverInterfacePtr();
    const bool restartRequired = driver != nullptr && driver->restartRequired();
    if (panelNumber < 1 || panelNumber > static_cast<int32_t>(Catalogue().size()))
        return;
    const AlertTexts& texts = Catalogue()[static_cast<size_t>(panelNumber - 1)];
    const bool asksForRestart = texts.tellsOfRestart && restartRequired;
    fAlertLevel = texts.isFailure ? kStop : kInformation;
    fTitleStringPtr = LocalizedString(texts.title);
    fPromptStringPtr = LocalizedString(texts.message);
    if (asksForRestart)
        *fPromptStringPtr += "\n\n" + LocalizedString(CFSTR("kRestartToCompleteDriverInstallMessage"));
    fFirstButtonStringPtr = LocalizedString(asksForRestart ? CFSTR("Restart") : texts.firstButton);
    if (texts.cancelButton == nullptr)
        return;
    fSecondButtonStringPtr = LocalizedString(texts.cancelButton);
    fReturnKeyButton = 2;
    fCommandPeriodKeyButton = 2;
}
