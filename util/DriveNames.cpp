#include "util/DriveNames.h"

#include "util/RegistryProperties.h"
#include "util/StringConversions.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace {

using Names = std::array<char, 256>;

/// How drives of a maker call themselves.
struct Maker {
    std::string_view prefix;
    const char* make;
    size_t modelStart; ///< where the model follows, in characters from the start of the names
    std::array<std::string_view, 2>
        fillers {}; ///< words after the prefix that do not belong to the model either; "" for none
};

/// The first row whose prefix fits counts.
constexpr std::array kMakers {
    Maker { "APPLE", "Apple", 5, { " SSD ", " HDD " } },
    Maker { "Seagate", "Seagate", 7 },
    Maker { "ST", "Seagate", 0 }, // part of the model's number
    Maker { "ATA ST", "ATA ST", 4 }, // as it always was shown, also where it is Seagate's
    Maker { "TOSHIBA", "Toshiba", 7 },
    Maker { { "HGST\0", 5 }, "HGST", 4 }, // the whole names: with a model behind it, it is not told
    Maker { "Hitachi", "Hitachi", 7 },
    Maker { "WDC", "WD", 3 },
    Maker { "WD", "WD", 2 },
    Maker { "Promise", "Promise", 7 },
    Maker { "G-DRIVE", "G-Technology", 0 },
    Maker { "LaCie", "LaCie", 5 },
    Maker { "Drobo", "Drobo", 5 },
    Maker { "Pellurio", "ZEK", 0 },
    Maker { "Brisola", "ZEK", 0 },
    Maker { "Dunmere", "ZEK", 0 },
    Maker { "ZEK", "ZEK", 3 },
    Maker { "Intel", "Intel", 5 },
    Maker { "Samsung", "Samsung", 7, { " SSD " } },
    Maker { "SAMSUNG", "Samsung", 7 },
    Maker { "SanDisk", "SanDisk", 7 },
    Maker { "Crucial", "Crucial", 7, { "_" } },
    Maker { "CT", "Crucial", 0 },
    Maker { "OCZ", "OCZ", 3, { "-" } },
    Maker { "PNY", "PNY", 3 },
    Maker { "ADATA", "ADATA", 5 },
    Maker { "TS", "Transcend", 2 },
    Maker { "KINGSTON", "Kingston", 8 },
    Maker { "Kingston", "Kingston", 8 },
    Maker { "", "Unknown", 0 },
};

bool StartsWith(const char* text, std::string_view prefix)
{
    return std::memcmp(text, prefix.data(), prefix.size()) == 0;
}

/// @param names in a buffer of at least the prefix' size. @return one there always is: the last row fits all.
const Maker& MakerOf(const Names& names)
{
    return *std::find_if(kMakers.begin(), kMakers.end(),
        [&names](const Maker& maker) { return StartsWith(names.data(), maker.prefix); });
}

const char* ModelOf(const Maker& maker, const Names& names)
{
    const char* model = names.data() + maker.modelStart;
    const auto* const filler = std::find_if(maker.fillers.begin(), maker.fillers.end(),
        [model](std::string_view one) { return !one.empty() && std::string_view(model).starts_with(one); });
    if (filler != maker.fillers.end())
        model += filler->size();
    return model + std::strspn(model, " ");
}

/// Appends a characteristic of the device. @param separator is put before it, unless it is the first.
void AppendCharacteristic(io_registry_entry_t media, CFStringRef key, const char* separator, char* text,
    size_t size, size_t& length)
{
    Names own {};
    const CFRef<CFTypeRef> value = SearchedMember(media, CFSTR("Device Characteristics"), key);
    if (!CopyASCII(value.get(), own.data(), own.size()))
        return;
    if (length > 0)
        CatStrings(text, separator, size, &length, false);
    CatStrings(text, own.data(), size, &length, true);
}

}

void FillInModelAndFirmwareInfo(
    io_registry_entry_t media, char* model, size_t modelSize, char* firmware, size_t firmwareSize)
{
    Clear(model, modelSize);
    Clear(firmware, firmwareSize);
    size_t modelLength = 0;
    AppendCharacteristic(media, CFSTR("Vendor Name"), "", model, modelSize, modelLength);
    AppendCharacteristic(media, CFSTR("Product Name"), " ", model, modelSize, modelLength);
    size_t firmwareLength = 0;
    AppendCharacteristic(media, CFSTR("Product Revision Level"), "", firmware, firmwareSize, firmwareLength);
}

void FillInMakeModelAndFirmwareInfo(io_registry_entry_t media, char* make, size_t makeSize, char* model,
    size_t modelSize, char* firmware, size_t firmwareSize)
{
    Names names {};
    FillInModelAndFirmwareInfo(media, names.data(), names.size(), firmware, firmwareSize);
    const Maker& maker = MakerOf(names);
    Clear(make, makeSize);
    Clear(model, modelSize);
    CopyText(make, maker.make, makeSize);
    CopyText(model, ModelOf(maker, names), modelSize);
}
