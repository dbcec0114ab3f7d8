#include "tools/inspect/Media.h"

#include "tools/inspect/Words.h"
#include "util/DeviceNames.h"
#include "util/DiskStatistics.h"
#include "util/Disks.h"
#include "util/DriveIdentity.h"
#include "util/DriveNames.h"
#include "util/MediaTypes.h"
#include "util/Volumes.h"

#include <algorithm>
#include <array>

namespace {

using Buffer = std::array<char, 1024>;

/// A bus, with the numbers that drives on it have.
struct Bus {
    uint32_t code;
    const char* name;
    bool hasTarget;
    bool hasUnit;
};

constexpr std::array kBuses {
    Bus { kBusPCI, "PCI", false, false },
    Bus { kBusSATA, "SATA", false, false },
    Bus { kBusATA, "ATA", true, false },
    Bus { kBusFireWire, "FireWire", false, false },
    Bus { kBusSCSI, "SCSI", true, true },
    Bus { kBusSAS, "SAS", false, false },
    Bus { kBusFibreChannel, "Fibre Channel", false, false },
    Bus { kBusUSB, "USB 2", true, false },
    Bus { kBusFastUSB, "USB 3", true, false },
};

constexpr std::array kMediaTypes {
    Word { kMediaDisk, "disk" },
    Word { kMediaXsan, "Xsan" },
    Word { kMediaIPod, "iPod" },
    Word { kMediaCD, "CD" },
    Word { kMediaDVD, "DVD" },
    Word { kMediaBluRay, "Blu-ray" },
    Word { kMediaImage, "disk image" },
    Word { kMediaSSD, "SSD" },
    Word { kMediaAPFS, "APFS" },
};

struct Counter {
    CFStringRef counted; ///< as the driver names it
    const char* key;
    const char* title;
};

const std::array<Counter, 12>& Counters()
{
    static const std::array<Counter, 12> counters { {
        { CFSTR("Operations (Read)"), "operationsRead", "Operations read" },
        { CFSTR("Bytes (Read)"), "bytesRead", "Bytes read" },
        { CFSTR("Total Time (Read)"), "timeRead", "Time reading (ns)" },
        { CFSTR("Latency Time (Read)"), "latencyRead", "Latency reading (ns)" },
        { CFSTR("Errors (Read)"), "errorsRead", "Errors reading" },
        { CFSTR("Retries (Read)"), "retriesRead", "Retries reading" },
        { CFSTR("Operations (Write)"), "operationsWritten", "Operations written" },
        { CFSTR("Bytes (Write)"), "bytesWritten", "Bytes written" },
        { CFSTR("Total Time (Write)"), "timeWritten", "Time writing (ns)" },
        { CFSTR("Latency Time (Write)"), "latencyWritten", "Latency writing (ns)" },
        { CFSTR("Errors (Write)"), "errorsWritten", "Errors writing" },
        { CFSTR("Retries (Write)"), "retriesWritten", "Retries writing" },
    } };
    return counters;
}

/// The numbers in a BSD name.
std::vector<uint64_t> NumbersIn(const std::string& name)
{
    std::vector<uint64_t> numbers;
    bool isNumber = false;
    for (const char c : name) {
        const bool isDigit = c >= '0' && c <= '9';
        if (isDigit && !isNumber)
            numbers.push_back(0);
        if (isDigit)
            numbers.back() = numbers.back() * 10 + static_cast<uint64_t>(c - '0');
        isNumber = isDigit;
    }
    return numbers;
}

void AddBus(io_registry_entry_t media, Record& record)
{
    uint32_t code = kBusUnknown;
    TestForDiskOnSupportedBus(media, &code);
    const auto* const bus
        = std::find_if(kBuses.begin(), kBuses.end(), [code](const Bus& one) { return one.code == code; });
    const bool isKnown = bus != kBuses.end();
    const CFRef<CFTypeRef> ownWord
        = SearchedMember(media, CFSTR("Protocol Characteristics"), CFSTR("Physical Interconnect"));
    Buffer serialNumber {};
    FillInSerialNumber(media, code, serialNumber.data(), serialNumber.size());
    if (!isKnown)
        CopyASCII(SearchedMember(media, CFSTR("Device Characteristics"), CFSTR("Serial Number")).get(),
            serialNumber.data(), serialNumber.size());
    int32_t target = 0;
    int32_t unit = 0;
    GetTargetID_And_LUN(media, code, &target, &unit);
    record.push_back({ "bus", "Bus", isKnown ? Value(bus->name) : StringOrNone(ownWord.get()) });
    record.push_back({ "serialNumber", "Serial number", TextOrNone(serialNumber.data()) });
    record.push_back({ "target", "Target", isKnown && bus->hasTarget ? Value(int64_t { target }) : Value() });
    record.push_back({ "unit", "Unit", isKnown && bus->hasUnit ? Value(int64_t { unit }) : Value() });
}

void AddNames(io_registry_entry_t media, Record& record)
{
    Buffer make {};
    Buffer model {};
    Buffer firmware {};
    Buffer location {};
    FillInMakeModelAndFirmwareInfo(
        media, make.data(), make.size(), model.data(), model.size(), firmware.data(), firmware.size());
    FillInDeviceLocationWithIOServiceObject(media, location.data(), location.size());
    const bool hasModel = model[0] != 0;
    record.push_back({ "make", "Make", hasModel ? Value(make.data()) : Value() });
    record.push_back({ "model", "Model", TextOrNone(model.data()) });
    record.push_back({ "firmware", "Firmware", TextOrNone(firmware.data()) });
    record.push_back({ "location", "Location", TextOrNone(location.data()) });
}

void AddContent(const Medium& medium, Record& record)
{
    const io_registry_entry_t media = medium.object.get();
    Buffer uuid {};
    GPT_UUID_ForDisk(media, uuid.data(), uuid.size());
    record.push_back({ "partitionType", "Partition type",
        medium.isPartition ? PartitionWord(media) : DiskPartitionWord(media) });
    record.push_back({ "content", "Content", StringOrNone(OwnProperty(media, CFSTR("Content")).get()) });
    record.push_back({ "role", "Role", APFSRoleWord(media) });
    record.push_back({ "gptUUID", "GPT UUID", TextOrNone(uuid.data()) });
    record.push_back({ "isTRIMSupported", "TRIM", TestForTRIM_Support(media) });
    record.push_back({ "isRemovable", "Removable", IsDiskRemovable(medium.name.c_str()) });
}

void AddVolume(const Medium& medium, Record& record)
{
    io_name_t label {};
    IORegistryEntryGetName(medium.object.get(), label);
    Buffer path {};
    Buffer name {};
    if (GetVolumePathnameWithBSDName(medium.name.c_str(), path.data(), path.size()))
        ExtractVolumeNameFromPathname(path.data(), name.data(), name.size());
    record.push_back({ "label", "Label", TextOrNone(label) });
    record.push_back({ "volumePath", "Volume", TextOrNone(path.data()) });
    record.push_back({ "volumeName", "Volume name", TextOrNone(name.data()) });
}

/// The driver counts for the whole disk.
Value Statistics(const Medium& medium)
{
    const CFRef<CFDictionaryRef> counted(
        medium.isPartition ? nullptr : CreateStatisticsForDisk(medium.object.get()));
    Record statistics;
    for (const Counter& counter : Counters()) {
        const auto count
            = NumberFrom(counted ? CFDictionaryGetValue(counted.get(), counter.counted) : nullptr);
        if (count)
            statistics.push_back({ counter.key, counter.title, *count });
    }
    return counted ? Value(std::move(statistics)) : Value();
}

}

std::vector<Medium> AllMedia()
{
    IORef all;
    IOServiceGetMatchingServices(kIOMasterPortDefault, IOServiceMatching("IOMedia"), all.receive());
    std::vector<Medium> media;
    while (IORef object { IOIteratorNext(all.get()) }) {
        std::array<char, 16> name {};
        bool isPartition = false;
        GetBSDNameAndSizes(object.get(), &isPartition, name.data(), name.size(), nullptr, nullptr, nullptr);
        if (name[0] != 0)
            media.push_back({ std::move(object), name.data(), isPartition });
    }
    std::stable_sort(media.begin(), media.end(), [](const Medium& first, const Medium& second) {
        return NumbersIn(first.name) < NumbersIn(second.name);
    });
    return media;
}

std::string DiskNameOf(const Medium& medium)
{
    std::array<char, 16> name {};
    ExtractBSD_DiskNameFromBSD_PartitionName(medium.name.c_str(), name.data(), name.size());
    return name.data();
}

bool IsLabelOfModel(const Value& label)
{
    const auto* const text = std::get_if<std::string>(&label);
    return text != nullptr && text->ends_with("Media");
}

Record MediaFacts::describe(const Medium& medium)
{
    uint64_t size = 0;
    uint32_t blockSize = 0;
    uint32_t maximumTransfer = 0;
    GetBSDNameAndSizes(medium.object.get(), nullptr, nullptr, 0, &size, &blockSize, &maximumTransfer);
    Record record;
    record.push_back({ "name", "Name", medium.name });
    record.push_back({ "disk", "Part of", medium.isPartition ? Value(DiskNameOf(medium)) : Value() });
    record.push_back(SizeField("size", "Size", Number(size)));
    record.push_back({ "mediaType", "Media type", mediaType(medium) });
    AddNames(medium.object.get(), record);
    AddBus(medium.object.get(), record);
    AddContent(medium, record);
    AddVolume(medium, record);
    record.push_back(SizeField("blockSize", "Block size", blockSize > 0 ? Number(blockSize) : Value()));
    record.push_back(SizeField("maximumTransfer", "Largest transfer", Number(maximumTransfer)));
    record.push_back({ "statistics", "Statistics", Statistics(medium) });
    return record;
}

Value MediaFacts::mediaType(const Medium& medium)
{
    const std::string disk = DiskNameOf(medium);
    auto known = std::find_if(
        fMediaTypes.begin(), fMediaTypes.end(), [&disk](const auto& one) { return one.first == disk; });
    if (known == fMediaTypes.end()) {
        IORef whole(CreateIOKitObjectWithBSDName(disk.c_str()));
        const io_registry_entry_t media = whole ? whole.get() : medium.object.get();
        known = fMediaTypes.insert(known, { disk, GetMediaTypeWithIOServiceObject(media) });
    }
    return Worded(kMediaTypes, known->second);
}
