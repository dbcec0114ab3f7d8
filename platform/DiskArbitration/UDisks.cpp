#include <DiskArbitration/UDisks.h>

#include <Host/MessageBus.h>
#include <Host/TextReading.h>

#include <array>
#include <chrono>
#include <string_view>
#include <systemd/sd-bus.h>

namespace da {

namespace {

using namespace std::chrono_literals;
constexpr std::chrono::microseconds kPatience = 1s; // once for the bus and once for the service
constexpr const char* kService = "org.freedesktop.UDisks2";
constexpr const char* kBlock = "org.freedesktop.UDisks2.Block";

struct Release {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, Release>;

/// A block device as the service describes it.
struct Block {
    std::optional<dev_t> device;
    std::string usage; ///< "filesystem", "crypto", "raid", "other"
    Contents contents;
};

struct TextProperty {
    std::string_view name;
    std::string& (*place)(Block&);
};

constexpr std::array kTexts {
    TextProperty { "IdUsage", [](Block& block) -> std::string& { return block.usage; } },
    TextProperty { "IdLabel", [](Block& block) -> std::string& { return block.contents.label; } },
    TextProperty { "IdUUID", [](Block& block) -> std::string& { return block.contents.uuid; } },
    TextProperty { "IdType", [](Block& block) -> std::string& { return block.contents.type; } },
};

// All that read answer false for a message that is not as it should be, in which they leave off.

/// Enters each element of an array in turn. @param read bool(): reads what is in it.
template <class Read> bool ForEachIn(sd_bus_message* message, char type, const char* contents, Read read)
{
    if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, nullptr) <= 0)
        return false;
    for (;;) {
        const int entered = sd_bus_message_enter_container(message, type, contents);
        if (entered <= 0)
            return entered == 0 && sd_bus_message_exit_container(message) >= 0;
        if (!read() || sd_bus_message_exit_container(message) < 0)
            return false;
    }
}

/// Reads a variant. @return whether it is there; a value of another type is skipped, and leaves `value` alone.
template <class Value> bool ReadVariant(sd_bus_message* message, char type, Value& value)
{
    const std::array<char, 2> wanted { type, '\0' };
    const char* contents = nullptr;
    if (sd_bus_message_peek_type(message, nullptr, &contents) <= 0 || contents == nullptr)
        return false;
    if (std::string_view(contents) != wanted.data())
        return sd_bus_message_skip(message, "v") >= 0;
    return sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, wanted.data()) > 0
        && sd_bus_message_read_basic(message, type, &value) > 0
        && sd_bus_message_exit_container(message) >= 0;
}

bool ReadProperty(sd_bus_message* message, Block& block)
{
    const char* name = nullptr;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &name) <= 0)
        return false;
    if (std::string_view(name) == "DeviceNumber") {
        uint64_t number = 0;
        const bool isRead = ReadVariant(message, SD_BUS_TYPE_UINT64, number);
        if (number != 0)
            block.device = number;
        return isRead;
    }
    for (const TextProperty& property : kTexts) {
        if (property.name != name)
            continue;
        const char* text = "";
        const bool isRead = ReadVariant(message, SD_BUS_TYPE_STRING, text);
        property.place(block) = CleanLine(text);
        return isRead;
    }
    return sd_bus_message_skip(message, "v") >= 0;
}

bool ReadInterface(sd_bus_message* message, Block& block)
{
    const char* name = nullptr;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &name) <= 0)
        return false;
    if (std::string_view(name) != kBlock)
        return sd_bus_message_skip(message, "a{sv}") >= 0;
    return ForEachIn(message, SD_BUS_TYPE_DICT_ENTRY, "sv", [&] { return ReadProperty(message, block); });
}

bool ReadObject(sd_bus_message* message, std::map<dev_t, Contents>& devices)
{
    Block block;
    if (sd_bus_message_skip(message, "o") < 0 || !ForEachIn(message, SD_BUS_TYPE_DICT_ENTRY, "sa{sv}", [&] {
            return ReadInterface(message, block);
        }))
        return false;
    if (block.usage != "filesystem")
        block.contents = {};
    if (block.device)
        devices[*block.device] = std::move(block.contents);
    return true;
}

/// @return null when there is no answer in time.
Message ManagedObjects(sd_bus* bus)
{
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus, &made, kService, "/org/freedesktop/UDisks2",
            "org.freedesktop.DBus.ObjectManager", "GetManagedObjects")
        < 0)
        return nullptr;
    const Message call(made);
    sd_bus_message* answer = nullptr;
    if (sd_bus_message_set_auto_start(call.get(), 0) < 0
        || sd_bus_call(bus, call.get(), static_cast<uint64_t>(kPatience.count()), nullptr, &answer) < 0)
        return nullptr;
    return Message(answer);
}

}

std::map<dev_t, Contents> ContentsFromUDisks(const std::string& systemBus)
{
    const BusConnection bus
        = ConnectToBus(systemBus, std::chrono::duration_cast<std::chrono::milliseconds>(kPatience));
    const Message answer = bus ? ManagedObjects(bus.get()) : nullptr;
    if (!answer || sd_bus_message_has_signature(answer.get(), "a{oa{sa{sv}}}") <= 0)
        return {};
    std::map<dev_t, Contents> devices;
    ForEachIn(answer.get(), SD_BUS_TYPE_DICT_ENTRY, "oa{sa{sv}}",
        [&] { return ReadObject(answer.get(), devices); });
    return devices;
}

}
