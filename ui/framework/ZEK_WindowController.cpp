#include "ui/framework/ZEK_WindowController.h"

#include "app/ZEK_AppController.h"
#include "ui/framework/KeyEquivalent.h"
#include "ui/framework/WindowPosition.h"
#include "util/CFText.h"

#include <QAbstractButton>
#include <cstdio>

namespace {

void WindowWillClose(
    CFNotificationCenterRef, void* observer, CFNotificationName, const void* object, CFDictionaryRef)
{
    auto* const window = static_cast<ZEK_Window*>(const_cast<void*>(object));
    static_cast<ZEK_WindowController*>(observer)->windowWillCloseNotification(*window);
}

/// The key of the controller's window where the application remembers window positions, else nothing.
std::optional<std::string> RememberedPositionKey(const ZEK_WindowController& controller)
{
    const ZEK_AppController* const application = ZEK_AppController::appControllerPtr();
    if (application == nullptr || !application->rememberWindowPostions())
        return std::nullopt;
    return controller.returnWindowPositionKey();
}

}

ZEK_WindowController::~ZEK_WindowController()
{
    CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetLocalCenter(), this);
    if (fWindow == nullptr)
        return;
    fWindow->setWindowController(nullptr);
    fWindow->deleteLater(); // this may be the middle of one of its events, whose handlers are still to return
}

bool ZEK_WindowController::initWithWindowNibName(const std::string& nibName)
{
    Nib nib(nibName);
    if (nib.isLoaded())
        connectOutlets(nib);
    if (!nib.error().empty()) {
        std::fprintf(stderr, "%s\n", nib.error().c_str());
        return false;
    }
    fWindow = nib.releaseWindow();
    fWindow->setWindowController(this);
    return true;
}

void ZEK_WindowController::connectAction(QAbstractButton* button, std::function<void()> action)
{
    if (button == nullptr)
        return;
    QObject::connect(button, &QAbstractButton::clicked, &fTarget, [this, action = std::move(action)] {
        if (fWindow != nullptr && fWindow->isVisible())
            action();
    });
}

ZEK_Window* ZEK_WindowController::window()
{
    if (fWindow != nullptr && !fIsAwake) {
        fIsAwake = true;
        awakeFromNib();
    }
    return fWindow;
}

std::optional<std::string> ZEK_WindowController::returnWindowPositionKey() const { return std::nullopt; }

QAbstractButton* ZEK_WindowController::returnCancelButton() const { return nullptr; }

void ZEK_WindowController::cancelOperation()
{
    highlightCancelButton();
    close();
}

void ZEK_WindowController::highlightCancelButton()
{
    if (QAbstractButton* const button = returnCancelButton())
        HighlightButton(*button);
}

void ZEK_WindowController::showWindow()
{
    ZEK_Window* const shown = window();
    if (shown == nullptr)
        return;
    CFNotificationCenterAddObserver(CFNotificationCenterGetLocalCenter(), this, WindowWillClose,
        CFText(kWindowWillCloseNotification).get(), shown,
        CFNotificationSuspensionBehaviorDeliverImmediately);
    const std::optional<std::string> key = RememberedPositionKey(*this);
    if (!key || !RestoreWindowPosition(*shown, *key))
        shown->center();
    shown->makeKeyAndOrderFront();
}

void ZEK_WindowController::showWindowWithoutRestoringWindowPositions()
{
    if (ZEK_Window* const shown = window())
        shown->makeKeyAndOrderFront();
}

void ZEK_WindowController::windowWillCloseNotification(ZEK_Window& closing)
{
    if (const std::optional<std::string> key = RememberedPositionKey(*this))
        SaveWindowPosition(&closing, *key);
}

void ZEK_WindowController::close()
{
    if (fWindow != nullptr)
        fWindow->close();
}
