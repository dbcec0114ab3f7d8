#include "install/RestartMac.h"

#include <CoreServices/CoreServices.h>

namespace {

/// A descriptor that is disposed of with its scope.
struct ScopedDesc {
    AEDesc desc {};
    ScopedDesc() = default;
    ScopedDesc(const ScopedDesc&) = delete;
    ScopedDesc& operator=(const ScopedDesc&) = delete;
    ~ScopedDesc() { AEDisposeDesc(&desc); }
};

}

int RestartMac()
{
    // The system process always has this serial number.
    const ProcessSerialNumber systemProcess { 0, 1 };
    ScopedDesc target, event, reply;
    if (const OSStatus status
        = AECreateDesc(typeProcessSerialNumber, &systemProcess, sizeof systemProcess, &target.desc))
        return status;
    if (const OSStatus status = AECreateAppleEvent(
            kCoreEventClass, kAERestart, &target.desc, kAutoGenerateReturnID, kAnyTransactionID, &event.desc))
        return status;
    return AESendMessage(&event.desc, &reply.desc, kAENoReply | kAECanSwitchLayer, kAEDefaultTimeout);
}
