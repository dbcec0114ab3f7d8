#include "ui/windows/LicenseWindowController.h"

#include "app/AppController.h"
#include "settings/Preferences.h"
#include "ui/framework/InvisibleButton.h"
#include "ui/framework/KeyEquivalent.h"
#include "ui/framework/Layout.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/windows/LicenseTextView.h"
#include "ui/windows/Texts.h"
#include "util/CFText.h"

#include <QPushButton>

namespace {

std::shared_ptr<LicenseWindowController> gLicenseWindowControllerPtr;

}

void LicenseWindowController::showLicenseWindow()
{
    if (gLicenseWindowControllerPtr != nullptr)
        return;
    const std::shared_ptr<LicenseWindowController> controller(new LicenseWindowController);
    if (!controller->init())
        return;
    gLicenseWindowControllerPtr = controller;
    controller->showWindow();
}

LicenseWindowController* LicenseWindowController::openController()
{
    return gLicenseWindowControllerPtr.get();
}

bool LicenseWindowController::init()
{
    RegisterNibClass("LicenseTextView", [](QWidget* parent) { return new LicenseTextView(parent); });
    return initWithWindowNibName("LicenseWindow");
}

void LicenseWindowController::connectOutlets(Nib& nib)
{
    nib.connectOutlet("fInvisibleCloseButtonPtr", fInvisibleCloseButtonPtr);
    nib.connectOutlet("fLicenceAgreementTextViewPtr", fLicenceAgreementTextViewPtr);
    nib.connectOutlet("fAgreeButtonPtr", fAgreeButtonPtr);
    nib.connectOutlet("fDisagreeButtonPtr", fDisagreeButtonPtr);
    connectAction(fAgreeButtonPtr, [this] { agreeButtonClicked(); });
    connectAction(fDisagreeButtonPtr, [this] { disagreeButtonClicked(); });
    connectAction(fInvisibleCloseButtonPtr, [this] { handleCloseKeyEquivalent(); });
}

void LicenseWindowController::awakeFromNib()
{
    window()->setWindowTitle(Localized(CFSTR("kLicenseWindowTitle")));
    fAgreeButtonPtr->setText(Localized(CFSTR("Agree")));
    const float shift = SizeToFit(fAgreeButtonPtr, false, 0.0F);
    fDisagreeButtonPtr->setText(Localized(CFSTR("Disagree")));
    SizeToFit(fDisagreeButtonPtr, false, shift);
    SetReturnKeyEquivalent(*fAgreeButtonPtr);
    fLicenceAgreementTextViewPtr->setFocus(); // where the arrow keys scroll
    fLicenceAgreementTextViewPtr->setAccessibleName(Localized(CFSTR("kLicenseTextName")));
    const CFRef<CFURLRef> agreement = MainBundleResource(CFSTR("License Agreement.rtf"), CFSTR(""));
    fLicenceAgreementTextViewPtr->readRTFDFromFile(FileSystemPath(agreement.get()));
}

void LicenseWindowController::close()
{
    AppController* const application = AppController::appControllerPtr();
    const std::shared_ptr<LicenseWindowController> self = std::move(gLicenseWindowControllerPtr);
    ZEK_WindowController::close();
    application->goToNextState();
}

void LicenseWindowController::agreeButtonClicked()
{
    AppController::appControllerPtr()->licenseAcceptedByUser(true);
    Preferences::preferencesPtr()->setLastDisplayedVersionOfEndUserLicense(AppController::kLicenseVersion);
    close();
}

void LicenseWindowController::disagreeButtonClicked()
{
    AppController::appControllerPtr()->licenseAcceptedByUser(false);
    close();
}

void LicenseWindowController::handleCloseKeyEquivalent() { disagreeButtonClicked(); }
