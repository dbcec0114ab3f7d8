#include "SystemRestart.h"

#include "MacErrors.h"

#include <chrono>
#include <sdbus-c++/sdbus-c++.h>

namespace {

constexpr std::chrono::minutes kPatience { 2 };

struct Meaning {
    std::string_view error;
    OSStatus status;
};
constexpr Meaning kMeanings[] = {
    { "org.freedesktop.DBus.Error.AccessDenied", permErr },
    { "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired", permErr },
    { "org.freedesktop.DBus.Error.ServiceUnknown", procNotFound },
    { "org.freedesktop.DBus.Error.NameHasNoOwner", procNotFound },
    { "org.freedesktop.DBus.Error.FileNotFound", procNotFound }, // not even a bus
};

OSStatus StatusOf(const sdbus::Error& error)
{
    for (const Meaning& meaning : kMeanings) {
        if (meaning.error == error.getName())
            return meaning.status;
    }
    return ioErr;
}

}

OSStatus RestartSystem()
try {
    constexpr bool interactive = true;
    const auto bus = sdbus::createSystemBusConnection();
    const auto manager = sdbus::createProxy(*bus, "org.freedesktop.login1", "/org/freedesktop/login1");
    manager->callMethod("Reboot")
        .onInterface("org.freedesktop.login1.Manager")
        .withTimeout(kPatience)
        .withArguments(interactive);
    return noErr;
} catch (const sdbus::Error& error) {
    return StatusOf(error);
}
