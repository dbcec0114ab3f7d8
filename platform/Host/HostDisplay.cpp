#include "Host/HostDisplay.h"

#if __APPLE__

bool HostHasDisplay() { return true; }
void HostPrepareForWindows() { }

#else

#include "MessageBus.h"
#include "UserBus.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

bool HostHasDisplay()
{
    // The last is the toolkit's own: whoever names a platform knows what is there.
    static constexpr const char* variables[] = { "WAYLAND_DISPLAY", "DISPLAY", "QT_QPA_PLATFORM" };
    return std::any_of(std::begin(variables), std::end(variables), [](const char* variable) {
        const char* const value = std::getenv(variable);
        return value != nullptr && *value != '\0';
    });
}

void HostPrepareForWindows()
{
    constexpr std::chrono::seconds patience { 2 };
    const std::string bus = UserBusAddress();
    if (!bus.empty() && !BusAnswers(bus, patience))
        setenv("DBUS_SESSION_BUS_ADDRESS", "none:", 1);
}

#endif
