// The graphics cards with their displays.

#include "profile/Facts.h"
#include "profile/Reports.h"

#include <Host/TextReading.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <numeric>

namespace profile {

namespace {

constexpr std::array<Fact, 3> kGraphics { {
    { "spdisplays_vendor-id", "device/vendor" },
    { "spdisplays_device-id", "device/device" },
    { "spdisplays_revision-id", "device/revision" },
} };

// What a display says of itself, in a block that it hands out.
constexpr size_t kBlock = 128;
constexpr size_t kDescriptor = 18;
constexpr std::string_view kMagic("\x00\xFF\xFF\xFF\xFF\xFF\xFF\x00", 8);

enum Tag : uint8_t { serialTag = 0xFF, nameTag = 0xFC };

uint8_t Byte(const std::string& bytes, size_t at) { return static_cast<uint8_t>(bytes[at]); }

bool IsWhole(const std::string& bytes)
{
    if (bytes.size() < kBlock || !bytes.starts_with(kMagic))
        return false;
    const auto sum = [](unsigned total, char byte) { return total + static_cast<uint8_t>(byte); };
    return std::accumulate(bytes.begin(), bytes.begin() + kBlock, 0U, sum) % 256 == 0;
}

template <class... Numbers> std::string Text(const char* format, Numbers... numbers)
{
    std::array<char, 48> text {};
    std::snprintf(text.data(), text.size(), format, numbers...);
    return text.data();
}

/// Of the first timing, which is the display's own.
std::string Resolution(const std::string& bytes, size_t at)
{
    const unsigned width = Byte(bytes, at + 2) | (Byte(bytes, at + 4) & 0xF0U) << 4U;
    const unsigned height = Byte(bytes, at + 5) | (Byte(bytes, at + 7) & 0xF0U) << 4U;
    return width != 0 && height != 0 ? Text("%u x %u", width, height) : "";
}

/// Adds the display's name, maker, product, serial number, time of making and own resolution. @param bytes may be anything;
/// damaged ones add nothing.
void AddDisplayFacts(Item& item, const std::string& bytes)
{
    constexpr size_t firstDescriptor = 54;
    if (!IsWhole(bytes))
        return;
    for (size_t at = firstDescriptor; at + kDescriptor < kBlock; at += kDescriptor) {
        const std::string text = bytes.substr(at + 5, kDescriptor - 5);
        const bool isText = Byte(bytes, at) == 0 && Byte(bytes, at + 1) == 0;
        if (isText && Byte(bytes, at + 3) == nameTag)
            item.set("_name", CleanLine(text));
        if (isText && Byte(bytes, at + 3) == serialTag)
            item.set("spdisplays_display-serial-number", CleanLine(text));
    }
    item.set("_spdisplays_display-vendor-id", Text("%02x%02x", Byte(bytes, 8), Byte(bytes, 9)));
    item.set("_spdisplays_display-product-id", Text("%02x%02x", Byte(bytes, 11), Byte(bytes, 10)));
    item.set("_spdisplays_display-year", Text("%d", 1990 + Byte(bytes, 17)));
    if (Byte(bytes, 16) >= 1 && Byte(bytes, 16) <= 54)
        item.set("_spdisplays_display-week", Text("%d", Byte(bytes, 16)));
    if (Byte(bytes, firstDescriptor) != 0 || Byte(bytes, firstDescriptor + 1) != 0)
        item.set("_spdisplays_pixels", Resolution(bytes, firstDescriptor));
}

std::string LastComponent(const std::string& path) { return std::filesystem::path(path).filename(); }

/// @param connector in sys/class/drm, "card0-HDMI-A-1".
Item Display(const HostTree& tree, const std::string& connector)
{
    const std::string folder = "sys/class/drm/" + connector + "/";
    const std::string kind = connector.substr(connector.find('-') + 1);
    const bool isBuiltIn = kind.starts_with("eDP") || kind.starts_with("LVDS") || kind.starts_with("DSI");
    Item item;
    AddDisplayFacts(item, tree.bytes(folder + "edid"));
    item.set("_name", kind);
    item.set("_spdisplays_pixels", tree.text(folder + "modes")); // of which the preferred one comes first
    item.set("spdisplays_connection_type", isBuiltIn ? "spdisplays_internal" : kind);
    item.set(
        "spdisplays_online", tree.text(folder + "enabled") == "enabled" ? "spdisplays_yes" : "spdisplays_no");
    return item;
}

Item Graphics(const HostTree& tree, const std::string& card, const std::vector<std::string>& names)
{
    const std::string folder = "sys/class/drm/" + card + "/";
    const std::string address = PciAddressIn(tree, tree.resolved(folder + "device"));
    Item item(address.empty() ? "" : PciName(tree, address));
    item.set("_name", LastComponent(tree.resolved(folder + "device/driver"))).set("_name", card);
    item.set("sppci_model", item.text("_name")).set("sppci_device_type", "spdisplays_gpu");
    item.set("spdisplays_vendor", ValueOf(tree.udev("+pci:" + address), "ID_VENDOR_FROM_DATABASE"));
    AddFacts(item, tree, folder, kGraphics);
    if (const std::optional<int64_t> memory = tree.number(folder + "device/mem_info_vram_total"))
        item.set("spdisplays_vram", BinarySize(*memory));
    Item::List displays;
    for (const std::string& name : names) {
        if (name.starts_with(card + "-") && tree.text("sys/class/drm/" + name + "/status") == "connected")
            displays.push_back(Display(tree, name));
    }
    return item.set("spdisplays_ndrvs", displays);
}

}

Item::List DisplayItems(const HostTree& tree)
{
    const std::vector<std::string> names = tree.names("sys/class/drm");
    Item::List items;
    for (const std::string& name : names) {
        if (name.starts_with("card") && name.find('-') == std::string::npos)
            items.push_back(Graphics(tree, name, names));
    }
    return items;
}

} // namespace profile
