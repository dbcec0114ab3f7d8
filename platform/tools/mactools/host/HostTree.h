#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using TextPairs = std::map<std::string, std::string>;

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
    /// The content without blanks and null characters around it.
    std::string text(const std::string& name) const;
    /// The decimal or, with "0x", hexadecimal number that the content is.
    std::optional<int64_t> number(const std::string& name) const;

    /// The names in a folder, in the order of people: "usb2" before "usb10".
    std::vector<std::string> names(const std::string& folder) const;
    /// The name without symbolic links: "sys/class/block/sda" is "sys/devices/…/block/sda". "" when it leads nowhere or
    /// out of the tree.
    std::string resolved(const std::string& name) const;

    /// What udev has found out about a device, without the names' "E:".
    /// @param id "b8:0" for a block device, "+pci:0000:00:02.0" for one of a bus.
    TextPairs udev(const std::string& id) const;

private:
    std::string fRoot; ///< ends in a slash
};

/// Text of lines such as "name = value", both trimmed. Of equal names the last counts.
TextPairs PairsOf(std::string_view text, char separator);
/// @return the value, or "" where there is none.
std::string ValueOf(const TextPairs& pairs, const std::string& name);

/// Without blanks and null characters at both ends.
std::string Trimmed(std::string_view text);
/// Undoes "\x20", as udev writes what is special, and "\040", as the table of mounts does.
std::string Unescaped(std::string_view text);
/// @param text decimal, or hexadecimal with "0x", with nothing else in it.
/// @return nothing when it is no number, or one that nothing here can have: its size is at most 2^48.
std::optional<int64_t> NumberIn(std::string_view text);
