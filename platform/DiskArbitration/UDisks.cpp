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
constexpr std::string_view kBlock = "org.freedesktop.UDisks2.Block";
constexpr std::string_view kDrive = "org.freedesktop.UDisks2.Drive";
constexpr std::string_view kFilesystem = "org.freedesktop.UDisks2.Filesystem";
constexpr std::string_view kLoop = "org.freedesktop.UDisks2.Loop";

/// Any object of the service's.
struct Object {
    std::optional<dev_t> device {}; ///< of a block device
    std::string usage {}; ///< "filesystem", "crypto", "raid", "other"
    ServedBlock block {};
    std::optional<ServedDrive> drive {};
};

struct TextProperty {
    std::string_view name;
    char type;
    std::string& (*place)(Object&);
};

constexpr std::array kTextsOfBlocks {
    TextProperty { "Drive", 'o', [](Object& object) -> std::string& { return object.block.drive; } },
    TextProperty { "IdUsage", 's', [](Object& object) -> std::string& { return object.usage; } },
    TextProperty {
        "IdLabel", 's', [](Object& object) -> std::string& { return object.block.contents.label; } },
    TextProperty { "IdUUID", 's', [](Object& object) -> std::string& { return object.block.contents.uuid; } },
    TextProperty { "IdType", 's', [](Object& object) -> std::string& { return object.block.contents.type; } },
};

struct Flag {
    std::string_view name;
    bool ServedDrive::*place;
};

constexpr std::array kFlagsOfDrives {
    Flag { "Ejectable", &ServedDrive::isEjectable },
    Flag { "CanPowerOff", &ServedDrive::canPowerOff },
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

/// @return whether the name was read.
bool ReadName(sd_bus_message* message, std::string_view& name)
{
    const char* text = nullptr;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &text) <= 0)
        return false;
    name = text;
    return true;
}

bool ReadBlockProperty(sd_bus_message* message, Object& object)
{
    std::string_view name;
    if (!ReadName(message, name))
        return false;
    if (name == "DeviceNumber") {
        uint64_t number = 0;
        const bool isRead = ReadVariant(message, SD_BUS_TYPE_UINT64, number);
        if (number != 0)
            object.device = number;
        return isRead;
    }
    for (const TextProperty& property : kTextsOfBlocks) {
        if (property.name != name)
            continue;
        const char* text = "";
        const bool isRead = ReadVariant(message, property.type, text);
        property.place(object) = CleanLine(text);
        return isRead;
    }
    return sd_bus_message_skip(message, "v") >= 0;
}

bool ReadDriveProperty(sd_bus_message* message, ServedDrive& drive)
{
    std::string_view name;
    if (!ReadName(message, name))
        return false;
    for (const Flag& flag : kFlagsOfDrives) {
        if (flag.name != name)
            continue;
        int value = 0;
        const bool isRead = ReadVariant(message, SD_BUS_TYPE_BOOLEAN, value);
        drive.*flag.place = value != 0;
        return isRead;
    }
    return sd_bus_message_skip(message, "v") >= 0;
}

bool ReadInterface(sd_bus_message* message, Object& object)
{
    std::string_view name;
    if (!ReadName(message, name))
        return false;
    object.block.hasFileSystem |= name == kFilesystem;
    object.block.isLoop |= name == kLoop;
    if (name == kBlock)
        return ForEachIn(
            message, SD_BUS_TYPE_DICT_ENTRY, "sv", [&] { return ReadBlockProperty(message, object); });
    if (name != kDrive)
        return sd_bus_message_skip(message, "a{sv}") >= 0;
    ServedDrive& drive = object.drive.emplace();
    return ForEachIn(
        message, SD_BUS_TYPE_DICT_ENTRY, "sv", [&] { return ReadDriveProperty(message, drive); });
}

bool ReadObject(sd_bus_message* message, ServedObjects& objects)
{
    const char* path = nullptr;
    Object object;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_OBJECT_PATH, &path) <= 0
        || !ForEachIn(
            message, SD_BUS_TYPE_DICT_ENTRY, "sa{sv}", [&] { return ReadInterface(message, object); }))
        return false;
    if (object.usage != "filesystem")
        object.block.contents = {};
    object.block.object = path;
    if (object.device)
        objects.blocks[*object.device] = std::move(object.block);
    if (object.drive)
        objects.drives[path] = *object.drive;
    return true;
}

/// @return null when there is no answer in time.
Message AskForObjects(sd_bus* bus)
{
    const Message question = QuestionForObjects(bus);
    sd_bus_message* answer = nullptr;
    if (!question || sd_bus_message_set_auto_start(question.get(), 0) < 0
        || sd_bus_call(bus, question.get(), static_cast<uint64_t>(kPatience.count()), nullptr, &answer) < 0)
        return nullptr;
    return Message(answer);
}

}

void ReleaseMessage::operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }

Message QuestionForObjects(sd_bus* bus)
{
    sd_bus_message* question = nullptr;
    sd_bus_message_new_method_call(bus, &question, kDiskService, "/org/freedesktop/UDisks2",
        "org.freedesktop.DBus.ObjectManager", "GetManagedObjects");
    return Message(question);
}

ServedObjects ReadObjects(sd_bus_message* answer)
{
    ServedObjects objects;
    if (sd_bus_message_has_signature(answer, "a{oa{sa{sv}}}") > 0)
        ForEachIn(answer, SD_BUS_TYPE_DICT_ENTRY, "oa{sa{sv}}", [&] { return ReadObject(answer, objects); });
    return objects;
}

ServedObjects ObjectsFromUDisks(const std::string& systemBus)
{
    const BusConnection bus
        = ConnectToBus(systemBus, std::chrono::duration_cast<std::chrono::milliseconds>(kPatience));
    const Message answer = bus ? AskForObjects(bus.get()) : nullptr;
    return answer ? ReadObjects(answer.get()) : ServedObjects();
}

}
