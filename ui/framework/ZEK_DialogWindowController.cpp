#include "ui/framework/ZEK_DialogWindowController.h"

#include "app/ZEK_AppController.h"
#include "ui/framework/ClickableTextField.h"
#include "ui/framework/Geometry.h"
#include "ui/framework/HelpButton.h"
#include "ui/framework/Images.h"
#include "ui/framework/KeyEquivalent.h"
#include "ui/framework/Layout.h"
#include "ui/framework/Modal.h"
#include "ui/framework/TextFitting.h"
#include "ui/framework/ZEK_Window.h"
#include "util/Bundle.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <algorithm>

namespace {

/// What a prompt keeps clear on either side.
constexpr double kPromptInset = 10.0;
/// The row of the box for not showing the alert again.
constexpr double kSuppressRowHeight = 44.0;

struct Badge {
    const char* image;
    CFStringRef name; ///< for who cannot see it
};

Badge BadgeFor(int32_t alertLevel)
{
    switch (alertLevel) {
    case 2:
        return { "DialogStopBadge.tiff", CFSTR("kAlertBadgeStop") };
    case 1:
        return { "DialogCautionBadge.tiff", CFSTR("kAlertBadgeCaution") };
    default:
        return { "DialogInfoBadge.tiff", CFSTR("kAlertBadgeInfo") };
    }
}

QString Text(const std::string& text) { return QString::fromStdString(text); }

void MoveDown(QWidget& view, double distance)
{
    Rect frame = Frame(view);
    frame.y -= distance;
    SetFrame(view, frame);
}

/// Changes a window's size; its lower left corner stays.
void GrowWindow(ZEK_Window& window, double width, double height)
{
    Rect frame = Frame(window);
    frame.width += width;
    frame.height += height;
    SetFrame(window, frame);
}

}

bool ZEK_DialogWindowController::initWithWindowNibName(const std::string& nibName)
{
    if (!ZEK_WindowController::initWithWindowNibName(nibName))
        return false;
    fReturnKeyButton = 1;
    if (const ZEK_AppController* const application = ZEK_AppController::appControllerPtr())
        fHelpHint = application->defaultHelpHint();
    return true;
}

void ZEK_DialogWindowController::connectOutlets(Nib& nib)
{
    nib.connectOutlet("fTitlePtr", fTitlePtr);
    nib.connectOutlet("fPromptPtr", fPromptPtr);
    nib.connectOutlet("fTimeStampPtr", fTimeStampPtr);
    nib.connectOutlet("fMoreInfoLinkPtr", fMoreInfoLinkPtr);
    nib.connectOutlet("fWindowBadgePtr", fWindowBadgePtr);
    nib.connectOutlet("fFirstButtonPtr", fFirstButtonPtr);
    nib.connectOutlet("fSecondButtonPtr", fSecondButtonPtr);
    nib.connectOutlet("fThirdButtonPtr", fThirdButtonPtr);
    nib.connectOptionalOutlet("fHelpButtonPtr", fHelpButtonPtr);
    nib.connectOutlet("fDontDisplayWarningAgainButtonPtr", fDontDisplayWarningAgainButtonPtr);
}

void ZEK_DialogWindowController::retainAllStrings() { }

bool ZEK_DialogWindowController::runningPrelogin() const { return false; }

void ZEK_DialogWindowController::handleDialogButtonAction(int32_t) { }

void ZEK_DialogWindowController::handleQuit() { }

void ZEK_DialogWindowController::windowWillCloseNotification(ZEK_Window&) { }

bool ZEK_DialogWindowController::suppressDialog() const
{
    const ZEK_AppController* const application = ZEK_AppController::appControllerPtr();
    return application != nullptr && application->suppressDialogWithKey(fSuppressDialogKeyPtr.value_or(""));
}

void ZEK_DialogWindowController::awakeFromNib()
{
    window()->setWindowModality(Qt::ApplicationModal);
    window()->setWindowFlags(
        Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    if (const ZEK_AppController* const application = ZEK_AppController::appControllerPtr())
        window()->setWindowTitle(Text(application->productNamePtr()));
    setWindowBadge();
    setButtonTitles();
    setTitleAndPromptStrings();
    setSuppressDialogText();
    if (fHelpButtonPtr == nullptr)
        return;
    connectAction(fHelpButtonPtr, [this] { helpButtonClicked(); });
    if (runningPrelogin())
        fHelpButtonPtr->hide();
}

void ZEK_DialogWindowController::setWindowBadge()
{
    const Badge badge = BadgeFor(fAlertLevel);
    const QPixmap image
        = ImageNamed(badge.image, fWindowBadgePtr->size(), fWindowBadgePtr->devicePixelRatioF());
    if (image.isNull())
        return;
    fWindowBadgePtr->setPixmap(image);
    fWindowBadgePtr->setAccessibleName(Text(LocalizedString(badge.name)));
}

QPushButton* ZEK_DialogWindowController::button(int32_t number) const
{
    switch (number) {
    case 1:
        return fFirstButtonPtr;
    case 2:
        return fSecondButtonPtr;
    case 3:
        return fThirdButtonPtr;
    default:
        return nullptr;
    }
}

/// Titles and places one button, or hides it. @return the offset for the next one in its row.
float ZEK_DialogWindowController::setButtonTitle(int32_t number, const std::optional<std::string>& title,
    bool anchorLeft, float offset, double& neededWidth)
{
    QPushButton* const control = button(number);
    if (!title) {
        control->hide();
        return 0.0F;
    }
    control->setText(Text(*title));
    const float result = SizeToFit(control, anchorLeft, offset);
    if (fReturnKeyButton == number)
        SetReturnKeyEquivalent(*control);
    connectAction(control, [this, control] { handleButtonClicked(control); });
    const Rect frame = Frame(*control);
    neededWidth += frame.width + frame.height / 2;
    return result;
}

void ZEK_DialogWindowController::setButtonTitles()
{
    const Rect help = fHelpButtonPtr != nullptr ? Frame(*fHelpButtonPtr) : Rect();
    double neededWidth = help.width + help.height;
    const float shift = setButtonTitle(1, fFirstButtonStringPtr, false, 0.0F, neededWidth);
    setButtonTitle(2, fSecondButtonStringPtr, false, shift, neededWidth);
    setButtonTitle(3, fThirdButtonStringPtr, true, 0.0F, neededWidth);
    const double width = Frame(*window()).width;
    if (neededWidth > width)
        GrowWindow(*window(), neededWidth - width, 0);
}

/// @return by how much the title is wider than its field was.
float ZEK_DialogWindowController::setTitle()
{
    if (!fTitleStringPtr)
        return 0.0F;
    Rect frame = Frame(*fTitlePtr);
    const double oldWidth = frame.width;
    QFont font = fTitlePtr->font();
    font.setBold(true);
    fTitlePtr->setFont(font);
    fTitlePtr->setText(Text(*fTitleStringPtr));
    frame.width = FittingSize(*fTitlePtr).width();
    frame.height = FittingSize(*fTitlePtr).height();
    SetFrame(*fTitlePtr, frame);
    return std::max(0.0F, static_cast<float>(frame.width - oldWidth));
}

/// @return by how much the prompt is higher than its field was.
float ZEK_DialogWindowController::setPrompt(float widthGrowth)
{
    if (!fPromptStringPtr)
        return 0.0F;
    fPromptPtr->setText(Text(*fPromptStringPtr));
    const Rect frame = Frame(*fPromptPtr);
    const TextSize text = BoundingSize(*fPromptPtr, frame.width + widthGrowth - 2 * kPromptInset);
    const float heightDelta = std::max(0.0F, static_cast<float>(text.height - frame.height));
    SetFrame(*fPromptPtr,
        { frame.x, frame.y - heightDelta, text.width + 2 * kPromptInset - widthGrowth, text.height });
    return heightDelta;
}

void ZEK_DialogWindowController::setTitleAndPromptStrings()
{
    const double promptY = Frame(*fPromptPtr).y;
    const double timeStampY = Frame(*fTimeStampPtr).y;
    const double linkY = Frame(*fMoreInfoLinkPtr).y;

    const float widthGrowth = setTitle();
    double heightDelta = setPrompt(widthGrowth);
    if (fTimeStampStringPtr) {
        fTimeStampPtr->setText(Text(*fTimeStampStringPtr));
        MoveDown(*fTimeStampPtr, heightDelta);
    } else {
        fTimeStampPtr->hide();
        heightDelta -= promptY - timeStampY;
    }
    if (fMoreInfoStringPtr) {
        if (fMoreInfoURL_StringPtr)
            fMoreInfoLinkPtr->setURL_WithString(*fMoreInfoURL_StringPtr);
        fMoreInfoLinkPtr->setStringValue(*fMoreInfoStringPtr);
        MoveDown(*fMoreInfoLinkPtr, heightDelta);
    } else {
        fMoreInfoLinkPtr->hide();
        heightDelta -= timeStampY - linkY;
    }
    GrowWindow(*window(), widthGrowth, heightDelta);
}

void ZEK_DialogWindowController::setSuppressDialogText()
{
    if (fSuppressDialogKeyPtr) {
        fDontDisplayWarningAgainButtonPtr->setText(Text(LocalizedString(CFSTR("kSuppressDialogText"))));
        fDontDisplayWarningAgainButtonPtr->setChecked(false);
        return;
    }
    fDontDisplayWarningAgainButtonPtr->hide();
    GrowWindow(*window(), 0, -kSuppressRowHeight);
}

void ZEK_DialogWindowController::helpButtonClicked()
{
    if (const ZEK_AppController* const application = ZEK_AppController::appControllerPtr())
        application->openHelpPageWithHelpHint(fHelpHint);
}

QAbstractButton* ZEK_DialogWindowController::returnCancelButton() const
{
    if (QPushButton* const named = button(fCommandPeriodKeyButton))
        return named;
    const bool onlyFirst = fFirstButtonStringPtr && !fSecondButtonStringPtr && !fThirdButtonStringPtr;
    return onlyFirst ? fFirstButtonPtr : nullptr;
}

void ZEK_DialogWindowController::cancelOperation()
{
    const QAbstractButton* const cancelButton = returnCancelButton();
    highlightCancelButton();
    handleButtonClicked(cancelButton);
}

void ZEK_DialogWindowController::handleButtonClicked(const QAbstractButton* sender)
{
    int32_t result = 0;
    for (int32_t number = 1; number <= 3 && result == 0; ++number)
        result = sender != nullptr && sender == button(number) ? number : 0;
    handleDialogButtonAction(result);
    if (fSuppressDialogKeyPtr && fDontDisplayWarningAgainButtonPtr->isChecked()) {
        if (ZEK_AppController* const application = ZEK_AppController::appControllerPtr())
            application->setSuppressDialogWithKey(*fSuppressDialogKeyPtr);
    }
    StopModalWithCode(result);
    close();
    if (fQuitResultValid && fQuitResult == result)
        handleQuit();
}
