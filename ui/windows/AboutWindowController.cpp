#include "ui/windows/AboutWindowController.h"

#include "app/AppController.h"
#include "ui/framework/ClickableTextField.h"
#include "ui/framework/InvisibleButton.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/windows/Texts.h"
#include "util/CFText.h"

#include <QLabel>

namespace {

std::shared_ptr<AboutWindowController> gAboutWindowControllerPtr;

/// The text for a key with its one "%@" replaced.
std::string FormattedText(CFStringRef formatKey, const std::string& argument)
{
    const CFRef<CFStringRef> format = CFText(LocalizedString(formatKey));
    const CFRef<CFStringRef> value = CFText(argument);
    const CFRef<CFStringRef> text(
        CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, format.get(), value.get()));
    return StdString(text.get());
}

void SetLink(ClickableTextField& field, CFStringRef labelKey, CFStringRef urlKey)
{
    field.setStringValue(LocalizedString(labelKey));
    field.setURL_WithString(LocalizedString(urlKey));
}

}

void AboutWindowController::showAboutWindow()
{
    if (gAboutWindowControllerPtr != nullptr) {
        gAboutWindowControllerPtr->window()->makeKeyAndOrderFront();
        return;
    }
    const std::shared_ptr<AboutWindowController> controller(new AboutWindowController);
    if (!controller->init())
        return;
    gAboutWindowControllerPtr = controller;
    controller->showWindow();
}

AboutWindowController* AboutWindowController::openController() { return gAboutWindowControllerPtr.get(); }

bool AboutWindowController::init() { return initWithWindowNibName("AboutWindow"); }

void AboutWindowController::connectOutlets(Nib& nib)
{
    nib.connectOutlet("fInvisibleCloseButtonPtr", fInvisibleCloseButtonPtr);
    nib.connectOutlet("fProductStringPtr", fProductStringPtr);
    nib.connectOutlet("fProductInfoTitleStringPtr", fProductInfoTitleStringPtr);
    nib.connectOutlet("fProductInfoURLStringPtr", fProductInfoURLStringPtr);
    nib.connectOutlet("fTechSupportTitleStringPtr", fTechSupportTitleStringPtr);
    nib.connectOutlet("fTechSupportURLStringPtr", fTechSupportURLStringPtr);
    nib.connectOutlet("fCopyright1StringPtr", fCopyright1StringPtr);
    nib.connectOutlet("fCopyright2StringPtr", fCopyright2StringPtr);
    nib.connectOutlet("fVersionStringPtr", fVersionStringPtr);
    connectAction(fInvisibleCloseButtonPtr, [this] { handleCloseKeyEquivalent(); });
}

void AboutWindowController::awakeFromNib()
{
    const AppController& application = *AppController::appControllerPtr();
    const std::string product = application.productNamePtr();
    const std::string version = application.versionAsString().value_or("");
    window()->setWindowTitle(QString::fromStdString(FormattedText(CFSTR("kAboutWindowTitle"), product)));
    fProductStringPtr->setText(QString::fromStdString(product));
    fProductInfoTitleStringPtr->setText(Localized(CFSTR("kAboutWindowProductInfo")));
    SetLink(*fProductInfoURLStringPtr, CFSTR("kAboutWindowProductInfoURL_Label"),
        CFSTR("kAboutWindowProductInfoURL"));
    fTechSupportTitleStringPtr->setText(Localized(CFSTR("kAboutWindowTechSupport")));
    SetLink(*fTechSupportURLStringPtr, CFSTR("kAboutWindowTechSupportURL_Label"),
        CFSTR("kAboutWindowTechSupportURL"));
    fVersionStringPtr->setText(
        Localized(CFSTR("kAboutWindowVersion")) + " " + QString::fromStdString(version));
    fCopyright1StringPtr->setText(Localized(CFSTR("kAboutWindowCopyright1")));
    fCopyright2StringPtr->setText(Localized(CFSTR("kAboutWindowCopyright2")));
}

void AboutWindowController::handleCloseKeyEquivalent() { window()->performClose(); }

void AboutWindowController::close()
{
    const std::shared_ptr<AboutWindowController> self = std::move(gAboutWindowControllerPtr);
    ZEK_WindowController::close();
}

void AboutWindowController::windowWillCloseNotification(ZEK_Window& closing)
{
    const std::shared_ptr<AboutWindowController> self = std::move(gAboutWindowControllerPtr);
    ZEK_WindowController::windowWillCloseNotification(closing);
}
