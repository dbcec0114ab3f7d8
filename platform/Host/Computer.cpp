#include "Computer.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <initializer_list>
#include <strings.h>

namespace {

/// What makers of computers leave in, in lower case.
constexpr std::array<const char*, 16> kUntold { "0", "default string", "invalid", "n/a", "no dimm", "none",
    "not available", "not specified", "o.e.m.", "system manufacturer", "system product name",
    "system serial number", "system version", "to be filled by o.e.m.", "undefined", "unknown" };

/// @return the first text that is told.
std::string FirstTold(const HostTree& host, std::initializer_list<const char*> names)
{
    std::string text;
    for (const char* const name : names)
        text = text.empty() ? Told(host.text(name)) : text;
    return text;
}

}

std::string Told(const std::string& text)
{
    const auto isThat = [&text](const char* one) { return strcasecmp(text.c_str(), one) == 0; };
    return std::any_of(kUntold.begin(), kUntold.end(), isThat) ? "" : text;
}

std::string ComputerModel(const HostTree& host)
{
    return FirstTold(host, { "sys/class/dmi/id/product_name", "sys/firmware/devicetree/base/model" });
}

std::string ComputerSerialNumber(const HostTree& host)
{
    return FirstTold(
        host, { "sys/class/dmi/id/product_serial", "sys/firmware/devicetree/base/serial-number" });
}

std::string ComputerUUID(const HostTree& host)
{
    constexpr size_t digits = 32;
    std::string uuid = host.text("etc/machine-id");
    if (uuid.size() != digits || uuid.find_first_not_of("0123456789abcdef") != std::string::npos)
        return "";
    std::transform(
        uuid.begin(), uuid.end(), uuid.begin(), [](char c) { return static_cast<char>(std::toupper(c)); });
    for (const size_t place : { 20U, 16U, 12U, 8U }) // from the end, so that the others stay where they are
        uuid.insert(place, 1, '-');
    return uuid;
}
