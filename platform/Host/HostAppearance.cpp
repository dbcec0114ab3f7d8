#include "HostAppearance.h"

#include <utility>

#if __APPLE__

struct HostAppearance::Portal { };

HostAppearance::HostAppearance(std::function<void()>) { }
HostAppearance::~HostAppearance() = default;
int HostAppearance::descriptor() const { return -1; }
void HostAppearance::process() { }
HostColorScheme HostAppearance::colorScheme() const { return HostColorScheme::unknown; }

#else

#include "MessageBus.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kSettings = "org.freedesktop.portal.Settings";
constexpr const char* kNamespace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";

constexpr const char* kPortalOwnerChanged
    = "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
      "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='org.freedesktop.portal.Desktop'";

struct Release {
    void operator()(sd_event* event) const { sd_event_unref(event); }
    // Without flushing, which would wait for a bus that does not read.
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};

/// @return the choice in the variant that the message is at, which portals wrap in another one when asked,
/// but not in the signal; none when it holds no 32-bit number.
std::optional<HostColorScheme> ReadScheme(sd_bus_message* message)
{
    char type = 0;
    const char* contents = nullptr;
    while (sd_bus_message_peek_type(message, &type, &contents) > 0 && type == SD_BUS_TYPE_VARIANT) {
        if (sd_bus_message_enter_container(message, type, contents) < 0)
            return std::nullopt;
    }
    uint32_t value = 0;
    if (type != SD_BUS_TYPE_UINT32 || sd_bus_message_read_basic(message, type, &value) <= 0)
        return std::nullopt;
    switch (value) {
    case 1:
        return HostColorScheme::dark;
    case 2:
        return HostColorScheme::light;
    default:
        return HostColorScheme::noPreference;
    }
}

void TakeScheme(sd_bus_message* message, void* scheme)
{
    auto* const known = static_cast<HostColorScheme*>(scheme);
    *known = ReadScheme(message).value_or(*known);
}

// What the bus calls back, with the scheme to update. All answer 0: others may see the message as well.

int OnAnswer(sd_bus_message* message, void* scheme, sd_bus_error*)
{
    // Errors have another signature: no portal, or one without this setting.
    if (sd_bus_message_has_signature(message, "v") > 0)
        TakeScheme(message, scheme);
    return 0;
}

int OnSettingChanged(sd_bus_message* message, void* scheme, sd_bus_error*)
{
    const char* group = nullptr;
    const char* key = nullptr;
    if (sd_bus_message_has_signature(message, "ssv") > 0
        && sd_bus_message_read(message, "ss", &group, &key) > 0 && std::string_view(group) == kNamespace
        && std::string_view(key) == kKey)
        TakeScheme(message, scheme);
    return 0;
}

/// Read, which every version of the portal has; what replaces it, ReadOne, only newer ones.
bool Ask(sd_bus* bus, void* scheme)
{
    return sd_bus_call_method_async(bus, nullptr, kPortal, kPortalPath, kSettings, "Read", OnAnswer, scheme,
               "ss", kNamespace, kKey)
        >= 0;
}

int OnOwnerChanged(sd_bus_message* message, void* scheme, sd_bus_error*)
{
    const char* newOwner = nullptr;
    if (sd_bus_message_read(message, "sss", nullptr, nullptr, &newOwner) > 0 && *newOwner != '\0')
        Ask(sd_bus_message_get_bus(message), scheme); // failing, it leaves the last answer
    return 0;
}

/// Handles one thing that has come, without waiting. @return whether there was one.
bool HandleOne(sd_event* event)
{
    // sd_event_run() is these steps too, but refuses an armed loop, which a new portal's is.
    int ready = sd_event_get_state(event) == SD_EVENT_ARMED ? 0 : sd_event_prepare(event);
    if (ready == 0)
        ready = sd_event_wait(event, 0);
    return ready > 0 && sd_event_dispatch(event) >= 0;
}

}

struct HostAppearance::Portal {
    std::unique_ptr<sd_event, Release> event;
    std::unique_ptr<sd_bus, Release> bus;
    HostColorScheme scheme = HostColorScheme::unknown;

    /// Connects and queues the question, all without waiting. @return false when there is no bus.
    bool start();
};

bool HostAppearance::Portal::start()
{
    const char* const addresses = secure_getenv("DBUS_SESSION_BUS_ADDRESS");
    if (addresses != nullptr && !NamesSocketsOnly(addresses))
        return false;

    sd_event* newEvent = nullptr;
    if (sd_event_new(&newEvent) < 0)
        return false;
    event.reset(newEvent);
    sd_bus* newBus = nullptr;
    if (sd_bus_open_user(&newBus) < 0)
        return false;
    bus.reset(newBus);

    // A portal may take its time, with the whole desktop starting. Listening before asking misses nothing.
    // Arming makes the descriptor readable for what is to be sent; nothing can have come yet.
    return sd_bus_set_method_call_timeout(newBus, UINT64_MAX) >= 0
        && sd_bus_attach_event(newBus, newEvent, SD_EVENT_PRIORITY_NORMAL) >= 0
        && sd_bus_match_signal_async(newBus, nullptr, kPortal, kPortalPath, kSettings, "SettingChanged",
               OnSettingChanged, nullptr, &scheme)
        >= 0
        && sd_bus_add_match_async(newBus, nullptr, kPortalOwnerChanged, OnOwnerChanged, nullptr, &scheme) >= 0
        && Ask(newBus, &scheme) && sd_event_prepare(newEvent) == 0;
}

HostAppearance::HostAppearance(std::function<void()> changed)
    : fChanged(std::move(changed))
    , fPortal(std::make_unique<Portal>())
{
    if (!fPortal->start())
        fPortal.reset();
}

HostAppearance::~HostAppearance() = default;

int HostAppearance::descriptor() const { return fPortal ? sd_event_get_fd(fPortal->event.get()) : -1; }

void HostAppearance::process()
{
    if (!fPortal)
        return;
    for (HostColorScheme before = fPortal->scheme; HandleOne(fPortal->event.get());
         before = fPortal->scheme) {
        // Only here, outside the bus's callback, may the receiver run a main loop of its own.
        if (fPortal->scheme != before && fChanged)
            fChanged();
    }
}

HostColorScheme HostAppearance::colorScheme() const
{
    return fPortal ? fPortal->scheme : HostColorScheme::unknown;
}

#endif
