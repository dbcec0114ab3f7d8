#include "boot/StartEntries.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>

namespace {

constexpr const char* kOrder = "BootOrder";
constexpr uint64_t kActive = 1;
constexpr uint64_t kHardDrive = 0x0104; ///< a device path's node: type 4, subtype 1
constexpr uint64_t kEndType = 0x7f;
constexpr uint64_t kIsUUID = 2; ///< a kind of signature

/// Takes numbers from bytes, the least significant byte first.
class Bytes {
public:
    explicit Bytes(std::string_view bytes)
        : fBytes(bytes)
    {
    }
    bool has(size_t size) const { return fBytes.size() >= size; }
    /// @param size, here and below, of what there is.
    uint64_t number(size_t size)
    {
        uint64_t number = 0;
        for (size_t i = size; i > 0; --i)
            number = number << 8U | static_cast<unsigned char>(fBytes[i - 1]);
        fBytes.remove_prefix(size);
        return number;
    }
    std::string_view take(size_t size)
    {
        const std::string_view taken = fBytes.substr(0, size);
        fBytes.remove_prefix(size);
        return taken;
    }

private:
    std::string_view fBytes;
};

/// @param bytes 16 of them; the first three parts are numbers, the least significant byte first.
std::string UUIDOf(std::string_view bytes)
{
    constexpr std::array places { 3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15 };
    std::string text;
    for (const int place : places) {
        std::array<char, 3> digits { "-" };
        if (place >= 0)
            std::snprintf(digits.data(), digits.size(), "%02X",
                static_cast<unsigned>(static_cast<unsigned char>(bytes[static_cast<size_t>(place)])));
        text += digits.data();
    }
    return text;
}

/// @param node what follows its heading. @return "" for a partition without a UUID.
std::string PartitionIn(std::string_view node)
{
    constexpr size_t signature = 20;
    constexpr size_t size = 38;
    if (node.size() < size || static_cast<unsigned char>(node[size - 1]) != kIsUUID)
        return {};
    return UUIDOf(node.substr(signature, 16));
}

/// @param path of the program to start, through devices and folders. @return the partition; "" where it leads over none.
std::string PartitionOn(std::string_view path)
{
    constexpr size_t heading = 4;
    for (Bytes rest(path); rest.has(heading);) {
        const uint64_t kind = rest.number(2);
        const uint64_t size = rest.number(2);
        if ((kind & 0xffU) == kEndType || size < heading || !rest.has(size - heading))
            break;
        const std::string_view node = rest.take(size - heading);
        if (kind == kHardDrive)
            return PartitionIn(node);
    }
    return {};
}

struct Order {
    std::string bytes; ///< two for each entry
    std::vector<std::optional<StartEntry>> entries;
};

std::optional<Order> ReadOrder(const iokit::EfiVariables& firmware)
{
    const std::optional<std::string> bytes = firmware.value(kOrder);
    if (!bytes || bytes->size() % 2 != 0)
        return {};
    Order order { *bytes, {} };
    Bytes rest(order.bytes);
    while (rest.has(2)) {
        std::array<char, 12> name {};
        std::snprintf(name.data(), name.size(), "Boot%04X", static_cast<unsigned>(rest.number(2)));
        const std::optional<std::string> entry = firmware.value(name.data());
        order.entries.push_back(entry ? StartEntryIn(*entry) : std::nullopt);
    }
    return order;
}

}

std::optional<StartEntry> StartEntryIn(std::string_view bytes)
{
    Bytes rest(bytes);
    if (!rest.has(6))
        return {};
    StartEntry entry { (rest.number(4) & kActive) != 0, "" };
    const uint64_t pathSize = rest.number(2);
    uint64_t character = 1;
    while (character != 0 && rest.has(2)) // of what the user is shown
        character = rest.number(2);
    if (character != 0 || !rest.has(pathSize))
        return {};
    entry.partition = PartitionOn(rest.take(pathSize));
    return entry;
}

bool StartsFrom(const iokit::EfiVariables& firmware, const std::vector<std::string>& partitions)
{
    const Order order = ReadOrder(firmware).value_or(Order());
    const auto first = std::find_if(
        order.entries.begin(), order.entries.end(), [](const auto& one) { return one && one->isActive; });
    return first != order.entries.end()
        && std::find(partitions.begin(), partitions.end(), (*first)->partition) != partitions.end();
}

int StartFrom(const iokit::EfiVariables& firmware, const std::vector<std::string>& partitions)
{
    const std::optional<Order> order = ReadOrder(firmware);
    if (!order)
        return firmware.value(kOrder) ? EBADMSG : ENOENT;
    for (const std::string& partition : partitions) {
        const auto fits = std::find_if(order->entries.begin(), order->entries.end(),
            [&](const auto& one) { return one && one->isActive && one->partition == partition; });
        if (fits == order->entries.end())
            continue;
        std::string bytes = order->bytes;
        const auto place = bytes.begin() + 2 * (fits - order->entries.begin());
        std::rotate(bytes.begin(), place, place + 2);
        return bytes == order->bytes ? 0 : firmware.set(kOrder, bytes);
    }
    return ENOENT;
}
