#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// Reading text that comes from devices, files and people and may be any bytes.

/// Text made fit for XML and terminals: control characters but tab and line feed go, and what is no UTF-8 shows as U+FFFD.
std::string CleanText(std::string_view bytes);

/// The first line that is not empty, up to a null character if it has one, made fit in the same way, without blanks
/// around it; "" where there is none.
std::string CleanLine(std::string_view bytes);

using TextPairs = std::map<std::string, std::string>;

/// Text of lines such as "name = value", each of both as its CleanLine(). Of equal names the last counts.
TextPairs PairsOf(std::string_view text, char separator);
/// @return the value, or "" where there is none.
std::string ValueOf(const TextPairs& pairs, const std::string& name);

/// Undoes "\x20", as udev writes what is special, and "\040", as the table of mounts does.
std::string Unescaped(std::string_view text);
/// @param text decimal, or hexadecimal with "0x", with nothing else in it.
/// @return nothing when it is no number, or one that nothing here can have: its size is at most 2^48, as that of a disk in
/// sectors.
std::optional<int64_t> NumberIn(std::string_view text);

/// The order of people: "usb2" comes before "usb10".
bool ComesBefore(const std::string& first, const std::string& second);
