#include <IOKit/PartitionContents.h>

#include <CoreFoundation/CFUUID.h>
#include <CoreFoundation/Runtime.h>
#include <Host/TextReading.h>

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <optional>
#include <string_view>

namespace iokit {

namespace {

struct NamedScheme {
    std::string_view type;
    PartitionScheme scheme;
};

constexpr std::array kSchemes {
    NamedScheme { "gpt", { "IOGUIDPartitionScheme", "GUID_partition_scheme" } },
    NamedScheme { "dos", { "IOFDiskPartitionScheme", "FDisk_partition_scheme" } },
    NamedScheme { "mac", { "IOApplePartitionScheme", "Apple_partition_scheme" } },
};
constexpr PartitionScheme kOtherScheme { "IOPartitionScheme", "" };

struct NumberedContent {
    int64_t number;
    const char* name;
};

constexpr std::array kContents {
    NumberedContent { 0x01, "DOS_FAT_12" },
    NumberedContent { 0x04, "DOS_FAT_16_S" },
    NumberedContent { 0x06, "DOS_FAT_16" },
    NumberedContent { 0x07, "Windows_NTFS" },
    NumberedContent { 0x0a, "Boot_Manager" },
    NumberedContent { 0x0b, "DOS_FAT_32" },
    NumberedContent { 0x0c, "Windows_FAT_32" },
    NumberedContent { 0x0e, "Windows_FAT_16" },
    NumberedContent { 0x11, "DOS_FAT_12_Hidden" },
    NumberedContent { 0x14, "DOS_FAT_16_S_Hidden" },
    NumberedContent { 0x16, "DOS_FAT_16_Hidden" },
    NumberedContent { 0x17, "Windows_NTFS_Hidden" },
    NumberedContent { 0x1b, "DOS_FAT_32_Hidden" },
    NumberedContent { 0x1c, "Windows_FAT_32_Hidden" },
    NumberedContent { 0x1e, "Windows_FAT_16_Hidden" },
    NumberedContent { 0x63, "UNIX" },
    NumberedContent { 0x82, "Linux_Swap" },
    NumberedContent { 0x83, "Linux" },
    NumberedContent { 0x84, "Hibernation" },
    NumberedContent { 0x8e, "Linux_LVM" },
    NumberedContent { 0xa5, "FreeBSD" },
    NumberedContent { 0xa6, "OpenBSD" },
    NumberedContent { 0xa8, "Apple_UFS" },
    NumberedContent { 0xa9, "NetBSD" },
    NumberedContent { 0xab, "Apple_Boot" },
    NumberedContent { 0xac, "Apple_RAID" },
    NumberedContent { 0xaf, "Apple_HFS" },
    NumberedContent { 0xfd, "Linux_RAID" },
};

constexpr std::array<int64_t, 3> kFrames { 0x05, 0x0f, 0x85 };

/// @return what "0xc" says; none where the type is no number.
std::optional<int64_t> Number(const std::string& type)
{
    return type.starts_with("0x") ? NumberIn(type) : std::nullopt;
}

std::string ContentOfNumber(int64_t number)
{
    const auto* const known = std::find_if(kContents.begin(), kContents.end(),
        [number](const NumberedContent& content) { return content.number == number; });
    if (known != kContents.end())
        return known->name;
    std::array<char, 24> digits {};
    std::snprintf(digits.data(), digits.size(), "0x%02" PRIX64, number);
    return digits.data();
}

}

const PartitionScheme& PartitionSchemeOfType(const std::string& type)
{
    const auto* const known = std::find_if(
        kSchemes.begin(), kSchemes.end(), [&type](const NamedScheme& named) { return named.type == type; });
    return known != kSchemes.end() ? known->scheme : kOtherScheme;
}

std::string UUIDText(const std::string& text)
{
    const cf::Owned<CFStringRef> string(cf::MakeString(text));
    const cf::Owned<CFUUIDRef> uuid(string ? CFUUIDCreateFromString(nullptr, string.get()) : nullptr);
    const cf::Owned<CFStringRef> capitals(uuid ? CFUUIDCreateString(nullptr, uuid.get()) : nullptr);
    return capitals ? cf::Utf8(capitals.get()) : "";
}

std::string PartitionContent(const std::string& type)
{
    if (const std::optional<int64_t> number = Number(type))
        return ContentOfNumber(*number);
    const std::string guid = UUIDText(type);
    return guid.empty() ? type : guid;
}

bool IsPartitionFrame(const std::string& type)
{
    const std::optional<int64_t> number = Number(type);
    return number && std::find(kFrames.begin(), kFrames.end(), *number) != kFrames.end();
}

}
