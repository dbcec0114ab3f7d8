// USB buses, each with the tree of what is plugged into it.

#include "profile/Drives.h"
#include "profile/Facts.h"
#include "profile/Reports.h"

#include <array>

namespace profile {

namespace {

const std::string kDevices = "sys/bus/usb/devices/";

constexpr std::array<Fact, 6> kDevice { {
    { "_name", "product" },
    { "manufacturer", "manufacturer" },
    { "vendor_id", "idVendor", "0x" },
    { "product_id", "idProduct", "0x" },
    { "serial_num", "serial" },
    { "bus_power_used", "bMaxPower" },
} };

struct Speed {
    const char* megabits;
    const char* word;
};
constexpr std::array<Speed, 6> kSpeeds { {
    { "1.5", "low_speed" },
    { "12", "full_speed" },
    { "480", "high_speed" },
    { "5000", "super_speed" },
    { "10000", "super_speed_plus" },
    { "20000", "super_speed_plus" },
} };

/// @return what the name of a device directly at `parent` begins with: "1-" for "usb1", "1-2." for "1-2".
std::string ChildPrefix(const std::string& parent)
{
    return parent.starts_with("usb") ? parent.substr(3) + "-" : parent + ".";
}

bool IsChild(const std::string& name, const std::string& prefix)
{
    return name.starts_with(prefix)
        && name.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
}

void AddSpeed(Item& item, const HostTree& tree, const std::string& name)
{
    const std::string megabits = tree.text(kDevices + name + "/speed");
    for (const Speed& speed : kSpeeds) {
        if (megabits == speed.megabits)
            item.set("device_speed", speed.word);
    }
}

/// @return "1.00" for the kernel's "0100".
std::string Release(const std::string& digits)
{
    const bool isWhole = digits.size() == 4;
    return isWhole ? (digits[0] == '0' ? "" : digits.substr(0, 1)) + digits[1] + "." + digits.substr(2) : "";
}

/// What USB reports are made from.
struct Devices {
    const HostTree& tree;
    std::vector<std::string> names;
    std::vector<iokit::Drive> drives;
    BSDNames bsdNames;
};

/// Every name is longer than its parent's, and the host limits their length, so this ends.
Item::List Children(const Devices& all, const std::string& parent)
{
    const HostTree& tree = all.tree;
    Item::List items;
    for (const std::string& name : all.names) {
        if (!IsChild(name, ChildPrefix(parent)))
            continue;
        const TextPairs known = tree.udev("c" + tree.text(kDevices + name + "/dev"));
        Item item;
        AddFacts(item, tree, kDevices + name + "/", kDevice);
        item.set("_name", ValueOf(known, "ID_MODEL_FROM_DATABASE")).set("_name", "USB Device");
        item.set("manufacturer", ValueOf(known, "ID_VENDOR_FROM_DATABASE"));
        item.set("bcd_device", Release(tree.text(kDevices + name + "/bcdDevice")));
        AddSpeed(item, tree, name);
        Item::List media;
        for (const iokit::Drive& drive : all.drives) {
            const bool isHere = drive.device.folder().find("/" + name + ":") != std::string::npos;
            if (isHere) // on an interface, which is called "1-2:1.0"
                media.push_back(DriveItem(drive, all.bsdNames));
        }
        items.push_back(item.set("Media", media).set("_items", Children(all, name)));
    }
    return items;
}

}

Item::List UsbItems(const HostTree& tree)
{
    const Devices all { tree, tree.names(kDevices), iokit::HostDrives(tree), BSDNames(tree) };
    Item::List buses;
    for (const std::string& name : all.names) {
        if (!name.starts_with("usb"))
            continue;
        Item bus("USB " + tree.text(kDevices + name + "/version") + " Bus");
        AddSpeed(bus, tree, name);
        const std::string address = PciAddressIn(tree, tree.resolved(kDevices + name));
        bus.set("host_controller", address.empty() ? "" : PciName(tree, address));
        buses.push_back(bus.set("_items", Children(all, name)));
    }
    return buses;
}

} // namespace profile
