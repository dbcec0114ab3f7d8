#include <IOKit/HostDisks.h>

#include <IOKit/HostMedia.h>
#include <IOKit/HostStatistics.h>
#include <IOKit/HostStorageDevices.h>
#include <IOKit/Properties.h>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

namespace iokit {

namespace {

struct OpticalDriver {
    const char* deviceClass;
    const char* className;
};

constexpr std::array kDrivers {
    OpticalDriver { "IOBDBlockStorageDevice", "IOBDBlockStorageDriver" },
    OpticalDriver { "IODVDBlockStorageDevice", "IODVDBlockStorageDriver" },
    OpticalDriver { "IOCDBlockStorageDevice", "IOCDBlockStorageDriver" },
    OpticalDriver { "", "IOBlockStorageDriver" },
};

const char* DriverOf(const Entry& device)
{
    return std::find_if(kDrivers.begin(), kDrivers.end(), [&device](const OpticalDriver& one) {
        return *one.deviceClass == '\0' || device.conformsTo(one.deviceClass);
    })->className;
}

constexpr auto kUncounted = static_cast<uint64_t>(-1);

struct Disk {
    Drive drive;
    uint64_t unit; ///< the number of its BSD name, if it has a medium
};

/// The kernel gives every disk, and every medium put into a drive, a number that nothing else gets until the computer starts
/// again. With that, a BSD name means the same disk to all programs for as long as it lives.
std::vector<Disk> Numbered(std::vector<Drive> drives)
{
    std::vector<Disk> disks;
    for (Drive& drive : drives) {
        const uint64_t number = drive.device.number("diskseq").value_or(0);
        disks.push_back({ std::move(drive), number - 1 });
    }
    const auto isUncounted = [](const Disk& disk) { return disk.unit == kUncounted; };
    if (!std::all_of(disks.begin(), disks.end(), isUncounted)) {
        std::erase_if(disks, isUncounted); // is just going: names of the others must not depend on it
        return disks;
    }
    uint64_t next = 0;
    for (Disk& disk : disks)
        disk.unit = disk.drive.hasMedium() ? next++ : kUncounted;
    return disks;
}

class Builder {
public:
    Builder(Registry& registry, Entry& computer, HostDevices& devices)
        : fRegistry(registry)
        , fComputer(computer)
        , fDevices(devices)
    {
    }

    void add(const Disk& disk)
    {
        const Drive& drive = disk.drive;
        const std::vector<Entry*> above = fDevices.above(drive);
        const DriveFacts facts = FactsOf(drive, *above.front());
        Entry& device = AddStorageDevice(fRegistry, *above.front(), drive, facts);
        for (size_t i = 1; i < above.size(); ++i)
            fRegistry.link(*above[i], device);
        const char* const className = DriverOf(device);
        Entry& driver = fRegistry.add(device, className, className, "", nullptr);
        KeepStatistics(driver, drive.device);
        if (!drive.hasMedium())
            return;
        const bool isRemovable = drive.isImage() || drive.isRemovable();
        const bool isEjectable = isRemovable || facts.location == "External";
        AddMedia(fRegistry, driver, drive.device,
            { facts.mediaName(), disk.unit, facts.blockSize, isRemovable, isEjectable }, fMedia);
    }

    bool hasPartsOf(const Disk& disk) const
    {
        const std::vector<std::string>& parts = disk.drive.parts;
        return std::all_of(parts.begin(), parts.end(),
            [this](const std::string& name) { return fMedia.find(name) != fMedia.end(); });
    }

    /// It lies below all the media that it is put together from, as a Mac's logical volumes lie below their partitions; what
    /// is asked of it and only its disk knows is so found there.
    void addComposed(const Disk& disk)
    {
        std::vector<Entry*> parts;
        for (const std::string& name : disk.drive.parts) {
            if (const auto part = fMedia.find(name); part != fMedia.end())
                parts.push_back(part->second);
        }
        Entry& first = parts.empty() ? fComputer : *parts.front();
        Entry& driver = fRegistry.add(first, "IOStorage", kindOf(disk.drive), "", nullptr);
        for (size_t i = 1; i < parts.size(); ++i)
            fRegistry.link(*parts[i], driver);
        KeepStatistics(driver, disk.drive.device);
        AddMedia(fRegistry, driver, disk.drive.device,
            { nameOf(disk.drive), disk.unit, disk.drive.device.number("queue/logical_block_size"),
                disk.drive.isRemovable(), IsTrue(first.property("Ejectable")) },
            fMedia);
    }

private:
    static std::string kindOf(const Drive& drive)
    {
        return drive.name().starts_with("dm-") ? "Device Mapper"
            : drive.name().starts_with("md")   ? "Software RAID"
                                               : "Composed Disk";
    }

    static std::string nameOf(const Drive& drive)
    {
        for (const std::string& name : { drive.device.text("dm/name"), drive.device.udev("MD_DEVNAME") }) {
            if (!name.empty())
                return name;
        }
        return drive.name();
    }

    Registry& fRegistry;
    Entry& fComputer;
    HostDevices& fDevices;
    MediaByName fMedia;
};

}

void AddHostDisks(Registry& registry, Entry& computer, HostDevices& devices, const HostTree& host)
{
    Builder builder(registry, computer, devices);
    std::vector<Disk> composed;
    for (Disk& disk : Numbered(HostDrives(host))) {
        if (disk.drive.isComposed())
            composed.push_back(std::move(disk));
        else
            builder.add(disk);
    }
    // What is put together may be a part of others. A part that is missing, or lies in a circle, never comes.
    while (!composed.empty()) {
        auto next = std::find_if(
            composed.begin(), composed.end(), [&](const Disk& disk) { return builder.hasPartsOf(disk); });
        next = next != composed.end() ? next : composed.begin();
        builder.addComposed(*next);
        composed.erase(next);
    }
}

}
