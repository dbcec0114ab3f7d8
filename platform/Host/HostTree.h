#pragma once

#include <Host/TextReading.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The files in which the host tells about itself: /sys, /proc, /run/udev and others. Names have no slash at the start:
/// "sys/power/state". What is missing or may not be read has told nothing, which is no failure. Every answer is bounded.
class HostTree {
public:
    /// @param root the folder that holds "sys", "proc" and so on; symbolic links in there are followed.
    explicit HostTree(std::string root = "/");

    std::string path(const std::string& name) const { return fRoot + name; } ///< as the host knows the file
    bool has(const std::string& name) const;

    /// @param limit bytes. @return what the file holds; "" where that is more.
    std::string bytes(const std::string& name, size_t limit = size_t { 64 } * 1024) const;
    /// The content's CleanLine().
    std::string text(const std::string& name) const;
    /// The NumberIn() the content.
    std::optional<int64_t> number(const std::string& name) const;

    /// The names in a folder, by ComesBefore().
    std::vector<std::string> names(const std::string& folder) const;
    /// The name without symbolic links: "sys/class/block/sda" is "sys/devices/…/block/sda". "" when it leads nowhere or
    /// out of the tree.
    std::string resolved(const std::string& name) const;

    /// The UdevProperties() of a device; none where there is no udev or it does not know the device.
    /// @param id "b8:0" for a block device, "+pci:0000:00:02.0" for one of a bus.
    TextPairs udev(const std::string& id) const;

private:
    std::string fRoot; ///< ends in a slash
};

/// What udev has found out about a device. @param record of its database. @return the properties without the "E:" before
/// their names; where udev writes characters as "\x20" that is undone.
TextPairs UdevProperties(std::string_view record);
