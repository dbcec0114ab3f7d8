#include "ui/framework/Modal.h"

#include "ui/framework/ZEK_Window.h"
#include "util/CFText.h"

#include <QEventLoop>

namespace {

struct ModalRun {
    QEventLoop loop;
    int32_t code = 0;
    ModalRun* outer = nullptr;
};

ModalRun* gInnermostRun = nullptr;

void WindowWillClose(CFNotificationCenterRef, void* run, CFNotificationName, const void*, CFDictionaryRef)
{
    static_cast<ModalRun*>(run)->loop.quit();
}

}

int32_t RunModalForWindow(const ZEK_Window& window)
{
    ModalRun run;
    run.outer = gInnermostRun;
    gInnermostRun = &run;
    const CFNotificationCenterRef center = CFNotificationCenterGetLocalCenter();
    CFNotificationCenterAddObserver(center, &run, WindowWillClose, CFText(kWindowWillCloseNotification).get(),
        &window, CFNotificationSuspensionBehaviorDeliverImmediately);
    run.loop.exec();
    CFNotificationCenterRemoveEveryObserver(center, &run);
    gInnermostRun = run.outer;
    return run.code;
}

void StopModalWithCode(int32_t code)
{
    if (gInnermostRun == nullptr)
        return;
    gInnermostRun->code = code;
    gInnermostRun->loop.quit();
}
