#include "ui/windows/InstallWindowController.h"

#include "app/AppController.h"
#include "install/AgentInstaller.h"
#include "install/DriverInterface.h"
#include "settings/NumVersion.h"
#include "settings/Preferences.h"
#include "ui/framework/ClickableTextField.h"
#include "ui/framework/Help.h"
#include "ui/framework/HelpButton.h"
#include "ui/framework/InvisibleButton.h"
#include "ui/framework/KeyEquivalent.h"
#include "ui/framework/Layout.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/framework/ZEK_WindowHeaderView.h"
#include "ui/windows/Texts.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

namespace {

std::shared_ptr<InstallWindowController> gInstallWindowControllerPtr;

/// What the window says for an operation; null for what it does not show then.
struct OperationTexts {
    CFStringRef button, buttonWithRestart;
    CFStringRef prompt1, prompt2, restartMessage;
    CFStringRef currentVersionTitle, newVersionTitle;
};

OperationTexts TextsFor(uint32_t operation)
{
    switch (operation) {
    case AppController::kInstall:
        return { CFSTR("Install"), CFSTR("InstallAndRestart"), CFSTR("kInstallWindowPrompt1Install"),
            CFSTR("kInstallWindowPrompt2Install"), CFSTR("kInstallWindowRestartAfterInstallMessage"), nullptr,
            CFSTR("kInstallVersionTitle") };
    case AppController::kUpdate:
        return { CFSTR("Update"), CFSTR("UpdateAndRestart"), CFSTR("kInstallWindowPrompt1Update"),
            CFSTR("kInstallWindowPrompt2Update"), CFSTR("kInstallWindowRestartAfterUpdateMessage"),
            CFSTR("kCurrentVersionTitle"), CFSTR("kUpdateVersionTitle") };
    default:
        return { CFSTR("Install"), CFSTR("Install"), CFSTR("kInstallWindowPrompt1NoAction"),
            CFSTR("kInstallWindowPrompt2NoAction"), nullptr, CFSTR("kCurrentVersionTitle"), nullptr };
    }
}

uint32_t Operation() { return AppController::appControllerPtr()->operation(); }

void SetVersionRow(QLabel& title, QLabel& value, CFStringRef titleKey)
{
    title.setVisible(titleKey != nullptr);
    value.setVisible(titleKey != nullptr);
    if (titleKey != nullptr)
        title.setText(Localized(titleKey));
}

}

void InstallWindowController::showInstallWindow()
{
    if (gInstallWindowControllerPtr != nullptr)
        return;
    const std::shared_ptr<InstallWindowController> controller(new InstallWindowController);
    if (!controller->init())
        return;
    gInstallWindowControllerPtr = controller;
    controller->showWindow();
}

InstallWindowController* InstallWindowController::openController()
{
    return gInstallWindowControllerPtr.get();
}

bool InstallWindowController::init() { return initWithWindowNibName("InstallWindow"); }

void InstallWindowController::connectOutlets(Nib& nib)
{
    nib.connectOutlet("fInvisibleCloseButtonPtr", fInvisibleCloseButtonPtr);
    nib.connectOutlet("fBlueHeaderViewPtr", fBlueHeaderViewPtr);
    nib.connectOutlet("fPrompt1Ptr", fPrompt1Ptr);
    nib.connectOutlet("fPrompt2Ptr", fPrompt2Ptr);
    nib.connectOutlet("fCurrentVersionTitlePtr", fCurrentVersionTitlePtr);
    nib.connectOutlet("fCurrentVersionPtr", fCurrentVersionPtr);
    nib.connectOutlet("fNewVersionTitlePtr", fNewVersionTitlePtr);
    nib.connectOutlet("fNewVersionPtr", fNewVersionPtr);
    nib.connectOutlet("fHighPoweredPortsTitlePtr", fHighPoweredPortsTitlePtr);
    nib.connectOutlet("fHighPoweredPortsStatusPtr", fHighPoweredPortsStatusPtr);
    nib.connectOutlet("fSendUsageDataButtonPtr", fSendUsageDataButtonPtr);
    nib.connectOutlet("fSendUsageDataMoreInfoPtr", fSendUsageDataMoreInfoPtr);
    nib.connectOutlet("fSendUsageDataPromptPtr", fSendUsageDataPromptPtr);
    nib.connectOutlet("fInstallButtonPtr", fInstallButtonPtr);
    nib.connectOutlet("fCancelButtonPtr", fCancelButtonPtr);
    connectAction(fInstallButtonPtr, [this] { installButtonClicked(); });
    connectAction(fCancelButtonPtr, [this] { cancelButtonClicked(); });
    connectAction(fInvisibleCloseButtonPtr, [this] { handleCloseKeyEquivalent(); });
    HelpButton* helpButton = nullptr;
    nib.connectOptionalOutlet("helpButton", helpButton);
    connectAction(helpButton, [this] { helpButtonClicked(); });
}

void InstallWindowController::awakeFromNib()
{
    const DriverInterface* const driver = DriverInterface::driverInterfacePtr();
    const bool restartMightBeRequired = driver != nullptr && driver->restartMightBeRequired();
    window()->setWindowTitle(Localized(CFSTR("kInstallWindowTitle")));
    setButtons(restartMightBeRequired);
    setPrompts(restartMightBeRequired);
    setVersions();
    fHighPoweredPortsTitlePtr->setText(Localized(CFSTR("High-Powered Ports:")));
    const bool driverPresent = driver != nullptr && driver->driverPresent();
    fHighPoweredPortsStatusPtr->setText(Localized(driverPresent ? CFSTR("Enabled") : CFSTR("Disabled")));
    setUsageDataRows();
}

void InstallWindowController::setButtons(bool restartMightBeRequired)
{
    const OperationTexts texts = TextsFor(Operation());
    fInstallButtonPtr->setText(Localized(restartMightBeRequired ? texts.buttonWithRestart : texts.button));
    fInstallButtonPtr->setEnabled(texts.newVersionTitle != nullptr);
    fCancelButtonPtr->setText(Localized(CFSTR("Cancel")));
    const float shift = SizeToFit(fInstallButtonPtr, false, 0.0F);
    SizeToFit(fCancelButtonPtr, false, shift);
    SizeToFit(fInvisibleCloseButtonPtr, false, shift);
    SetReturnKeyEquivalent(*fInstallButtonPtr);
}

void InstallWindowController::setPrompts(bool restartMightBeRequired)
{
    const OperationTexts texts = TextsFor(Operation());
    fPrompt1Ptr->setText(Localized(texts.prompt1));
    const bool tellsOfRestart = restartMightBeRequired && texts.restartMessage != nullptr;
    fPrompt2Ptr->setText(
        Localized(texts.prompt2) + (tellsOfRestart ? Localized(texts.restartMessage) : QString()));
    SetVersionRow(*fCurrentVersionTitlePtr, *fCurrentVersionPtr, texts.currentVersionTitle);
    SetVersionRow(*fNewVersionTitlePtr, *fNewVersionPtr, texts.newVersionTitle);
}

void InstallWindowController::setVersions()
{
    char agentVersion[16] = {};
    ConvertNumVersionToString(
        AgentInstaller::agentInstallerPtr()->agentVersion(), agentVersion, sizeof agentVersion, true);
    fCurrentVersionPtr->setText(QString::fromLatin1(agentVersion));
    fNewVersionPtr->setText(
        QString::fromStdString(AppController::appControllerPtr()->versionAsString().value_or("")));
}

void InstallWindowController::setUsageDataRows()
{
    const bool shown = Operation() == AppController::kInstall;
    fSendUsageDataButtonPtr->setVisible(shown);
    fSendUsageDataMoreInfoPtr->setVisible(shown);
    fSendUsageDataPromptPtr->setVisible(shown);
    if (!shown)
        return;
    fSendUsageDataButtonPtr->setText(Localized(CFSTR("kSendUsageDataButton")));
    fSendUsageDataMoreInfoPtr->setStringValue(LocalizedString(CFSTR("kSendUsageDataMoreInfo")));
    fSendUsageDataMoreInfoPtr->setURL_WithString(LocalizedString(CFSTR("kSendUsageDataMoreInfoURL")));
    fSendUsageDataPromptPtr->setText(Localized(CFSTR("kSendUsageDataPrompt")));
    fSendUsageDataButtonPtr->setChecked(true);
}

void InstallWindowController::close()
{
    AppController* const application = AppController::appControllerPtr();
    const std::shared_ptr<InstallWindowController> self = std::move(gInstallWindowControllerPtr);
    ZEK_WindowController::close();
    application->goToNextState();
}

void InstallWindowController::installButtonClicked()
{
    if (!fSendUsageDataButtonPtr->isHidden())
        Preferences::preferencesPtr()->setCollectUsageInfo(fSendUsageDataButtonPtr->isChecked());
    AppController::appControllerPtr()->prepareToStartOperation();
    close();
}

void InstallWindowController::cancelButtonClicked()
{
    AppController::appControllerPtr()->prepareToQuit();
    close();
}

void InstallWindowController::helpButtonClicked() { ShowHelp(""); }

void InstallWindowController::handleCloseKeyEquivalent() { cancelButtonClicked(); }
