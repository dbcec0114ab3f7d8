#include "Flat.h"

#include "tests/support/HostFolder.h"

#include <gtest/gtest.h>
#include <profile/Reports.h>

namespace {

using namespace profile;

constexpr const char* kPci = "sys/bus/pci/devices/";

class HardwareProfileTest : public testing::Test {
protected:
    /// A disk that hangs on a PCI device. @param place of the disk below that device.
    void addDisk(const std::string& disk, const std::string& address, const std::string& place,
        HostFolder::Texts attributes = {}, const HostFolder::Texts& udev = {})
    {
        const std::string device = "pci0000:00/" + address;
        attributes.merge(HostFolder::Texts {
            { "size", "2000409264" }, { "removable", "0" }, { "queue/rotational", "0" } });
        host.disk((device + '/').append(place), disk, attributes, udev);
        host.add(kPci, { { address, "-> sys/devices/" + device } });
    }

    HostFolder host;
};

TEST_F(HardwareProfileTest, TellsWhatTheComputerIsWithoutWhatItsMakerLeftOpen)
{
    host.add("sys/class/dmi/id/",
        { { "product_family", "To be filled by O.E.M.\n" }, { "product_name", "Book 5\n" },
            { "bios_version", "1.02\n" }, { "product_serial", "Default string\n" } });
    host.add("etc/", { { "machine-id", "3d1219c7c4c5404aaa1f6d2a48adfda4\n" } });
    for (const std::string cpu : { "0", "1", "2", "3" })
        host.add("sys/devices/system/cpu/cpu" + cpu + "/topology/",
            { { "physical_package_id", "0\n" }, { "core_id", std::to_string(std::stoi(cpu) % 2) + "\n" } });
    host.add("sys/devices/system/",
        { { "cpu/cpu0/cpufreq/cpuinfo_max_freq", "2800000\n" }, { "memory/block_size_bytes", "8000000\n" },
            { "memory/memory0/online", "1\n" }, { "memory/memory1/online", "1\n" },
            { "memory/memory2/online", "0\n" } });
    host.add("proc/",
        { { "cpuinfo", "processor\t: 0\nmodel name\t: Fast 7\n\nprocessor\t: 1\nmodel name\t: Fa" } });

    EXPECT_EQ(Flat(HardwareItems(host.tree())),
        "[{_name: hardware_overview, machine_name: Book 5, machine_model: Book 5, boot_rom_version: 1.02, "
        "platform_UUID: 3D1219C7-C4C5-404A-AA1F-6D2A48ADFDA4, cpu_type: Fast 7, current_processor_speed: 2.8 "
        "GHz, packages: 1, "
        "number_processors: 2, physical_memory: 256 MB}]");
    EXPECT_EQ(Flat(MemoryItems(host.tree())), "[{_name: global_name, SPMemoryDataType: 256 MB}]");
}

TEST_F(HardwareProfileTest, ListsMemoryModulesAndEmptySlots)
{
    host.add("run/udev/data/",
        { { "+dmi:id",
            "I:123\nE:MEMORY_ARRAY_EC_TYPE=Multi-bit ECC\nE:MEMORY_DEVICE_0_SIZE=17179869184\n"
            "E:MEMORY_DEVICE_0_LOCATOR=DIMM0\nE:MEMORY_DEVICE_0_BANK_LOCATOR=BANK 0\n"
            "E:MEMORY_DEVICE_0_TYPE=DDR4\nE:MEMORY_DEVICE_0_SPEED_MTS=3200\n"
            "E:MEMORY_DEVICE_0_SERIAL_NUMBER=Unknown\nE:MEMORY_DEVICE_1_PRESENT=0\n"
            "E:MEMORY_DEVICE_1_LOCATOR=DIMM1\n" } });

    EXPECT_EQ(Flat(MemoryItems(host.tree())),
        "[{_name: global_name, global_ecc_state: ecc_enabled, _items: [{_name: BANK 0/DIMM0, dimm_size: 16 "
        "GB, "
        "dimm_type: DDR4, dimm_speed: 3200 MHz}, {_name: DIMM1, dimm_size: empty, dimm_status: empty}]}]");
}

TEST_F(HardwareProfileTest, ListsDisksUnderTheirControllers)
{
    addDisk("sda", "0000:00:17.0", "ata1/host0/target0:0:0/0:0:0:0",
        { { "dev", "8:0" }, { "device/model", "Samsung SSD 860 " },
            { "device/vpd_pg80", std::string("\0\x80\0\x08  S3Z8NB\0", 13) } },
        { { "ID_MODEL_ENC", "Samsung\\x20SSD\\x20860\\x20EVO\\x20\\x20" }, { "ID_SERIAL_SHORT", "wwn" } });
    host.partition(1, {});
    addDisk("nvme0n1", "0000:01:00.0", "nvme/nvme0",
        { { "device/model", "Fast 1" }, { "device/serial", "N1" }, { "device/firmware_rev", "3B" } });
    addDisk("sdb", "0000:00:18.0", "host1/port-1:0/end_device-1:0/target1:0:0/1:0:0:0");
    addDisk("sdc", "0000:00:19.0", "host2/target2:0:0/2:0:0:0");
    addDisk("sdd", "0000:00:1a.0", "host3/target3:0:0/3:0:0:0",
        { { "device/../spi_transport/target3:0:0/period", "25" } });
    host.add("run/udev/data/", { { "+pci:0000:00:17.0", "E:ID_MODEL_FROM_DATABASE=AHCI Controller\n" } });
    host.add(std::string(kPci) + "0000:01:00.0/", { { "vendor", "0x144d\n" }, { "device", "0xa808\n" } });
    const std::string size
        = "size: 1.02 TB, size_in_bytes: 1024209543168, removable_media: no, spsata_medium_type: Solid State";

    EXPECT_EQ(Flat(SataItems(host.tree())),
        "[{_name: AHCI Controller, _items: [{device_model: Samsung SSD 860 EVO, device_serial: S3Z8NB, "
        "_name: Samsung SSD 860 EVO, bsd_name: disk1, "
            + size + "}]}]");
    EXPECT_EQ(Flat(NvmeItems(host.tree())),
        "[{_name: pci144d,a808, _items: [{device_model: Fast 1, device_revision: 3B, device_serial: N1, "
        "_name: Fast 1, "
        "bsd_name: disk4, "
            + size + "}]}]");
    EXPECT_EQ(Flat(SasItems(host.tree())),
        "[{_name: Generic Controller, _items: [{_name: sdb, bsd_name: disk2, " + size + "}]}]");
    EXPECT_EQ(Flat(ParallelScsiItems(host.tree())),
        "[{_name: Generic Controller, _items: [{_name: sdd, bsd_name: disk0, " + size + "}]}]");
}

TEST_F(HardwareProfileTest, ShowsUsbAsTheTreeThatItIs)
{
    const std::string devices = "sys/bus/usb/devices/";
    host.add(devices,
        { { "usb1/version", " 2.00\n" }, { "usb1/speed", "480\n" }, { "1-0:1.0/bInterfaceClass", "09\n" } });
    host.add(devices + "1-2/",
        { { "product", "Hub\n" }, { "idVendor", "05ac\n" }, { "idProduct", "0024\n" }, { "speed", "12\n" } });
    host.add(devices + "1-2.1/",
        { { "idVendor", "0781\n" }, { "idProduct", "5581\n" },
            { "serial",
                "\x01"
                "4C\xFF\n" },
            { "dev", "189:5\n" }, { "bcdDevice", "0100\n" }, { "speed", "480\n" } });
    host.add(devices, { { "1-20/product", "Mouse\n" }, { "1-20/bcdDevice", "1234\n" } });
    host.add("run/udev/data/", { { "c189:5", "E:ID_MODEL_FROM_DATABASE=Ultra\n" } });
    addDisk("sdb", "0000:00:14.0", "usb1/1-2/1-2.1/1-2.1:1.0/host6/target6:0:0/6:0:0:0");

    EXPECT_EQ(Flat(UsbItems(host.tree())),
        "[{_name: USB 2.00 Bus, device_speed: high_speed, _items: ["
        "{_name: Hub, vendor_id: 0x05ac, product_id: 0x0024, device_speed: full_speed, _items: ["
        "{vendor_id: 0x0781, product_id: 0x5581, serial_num: 4C\uFFFD, _name: Ultra, bcd_device: 1.00, "
        "device_speed: high_speed, Media: [{_name: sdb, bsd_name: disk0, size: 1.02 TB, size_in_bytes: "
        "1024209543168, "
        "removable_media: no, spsata_medium_type: Solid State}]}]}, "
        "{_name: Mouse, bcd_device: 12.34}]}]");
}

TEST_F(HardwareProfileTest, NamesConnectedDisplaysByWhatTheySayOfThemselves)
{
    std::string edid("\x00\xFF\xFF\xFF\xFF\xFF\xFF\x00\x10\xAC\x64\xA0\x01\x00\x00\x00\x0C\x1E", 18);
    edid.resize(54);
    edid += std::string(
        "\x02\x3A\x80\x18\x71\x38\x2D\x40\x58\x2C\x45\x00\x00\x00\x00\x00\x00\x1E", 18); // 1920 x 1080
    edid += std::string("\0\0\0\xFC\0DELL U2415\n  ", 18) + std::string("\0\0\0\xFF\0CFV9N\n      \n", 18);
    edid.resize(127);
    unsigned sum = 0;
    for (const char byte : edid)
        sum += static_cast<unsigned char>(byte);
    edid += static_cast<char>(256 - sum % 256);
    std::string damaged = edid;
    damaged[60] = 'x';
    host.add("sys/class/drm/",
        { { "card1/device", "-> " + std::string(kPci) + "0000:00:02.0" },
            { "card1-HDMI-A-1/status", "connected\n" }, { "card1-HDMI-A-1/edid", edid },
            { "card1-HDMI-A-1/enabled", "enabled\n" }, { "card1-DP-1/status", "disconnected\n" },
            { "card1-eDP-1/status", "connected\n" }, { "card1-eDP-1/edid", damaged },
            { "card1-eDP-1/modes", "2560x1600\n1920x1200\n" }, { "card10-DP-1/status", "connected\n" } });
    host.add(std::string(kPci) + "0000:00:02.0/",
        { { "vendor", "0x8086\n" }, { "device", "0x0412\n" }, { "class", "0x030000\n" } });

    EXPECT_EQ(Flat(DisplayItems(host.tree())),
        "[{_name: pci8086,0412, sppci_model: pci8086,0412, sppci_device_type: spdisplays_gpu, "
        "spdisplays_vendor-id: 0x8086, "
        "spdisplays_device-id: 0x0412, spdisplays_ndrvs: [{_name: DELL U2415, "
        "spdisplays_display-serial-number: CFV9N, "
        "_spdisplays_display-vendor-id: 10ac, _spdisplays_display-product-id: a064, "
        "_spdisplays_display-year: 2020, "
        "_spdisplays_display-week: 12, _spdisplays_pixels: 1920 x 1080, spdisplays_connection_type: "
        "HDMI-A-1, "
        "spdisplays_online: spdisplays_yes}, {_name: eDP-1, _spdisplays_pixels: 2560x1600, "
        "spdisplays_connection_type: spdisplays_internal, spdisplays_online: spdisplays_no}]}]");
}

TEST_F(HardwareProfileTest, ListsWhatIsOnTheOtherBuses)
{
    host.add(std::string(kPci),
        { { "0000:00:00.0/class", "0x060000\n" }, { "0000:00:1f.6/class", "0x020000\n" },
            { "0000:00:1f.6/vendor", "0x8086\n" }, { "0000:00:1f.6/current_link_width", "4\n" } });
    host.add("sys/bus/thunderbolt/devices/",
        { { "0-0/device_name", "Book\n" }, { "0-0/usb4_port1/link", "usb4\n" },
            { "0-301/vendor_name", "Dock Inc\n" }, { "domain0/security", "user\n" }, { "0-0.1/key", "x" },
            { "1-0/device", "0x1\n" } });
    host.add("sys/",
        { { "bus/firewire/devices/fw1/guid", "0x0011\n" }, { "bus/firewire/devices/fw1.0/version", "1" },
            { "class/fc_host/host5/port_state", "Online\n" } });

    EXPECT_EQ(Flat(PciItems(host.tree())),
        "[{_name: 0000:00:1f.6, sppci_name: 0000:00:1f.6, sppci_slot_name: 0000:00:1f.6, "
        "sppci_driver_installed: No, "
        "sppci_vendor-id: 0x8086, sppci_link-width: x4}]");
    EXPECT_EQ(Flat(ThunderboltItems(host.tree())),
        "[{_name: Book, device_name_key: Book, _items: [{_name: 0-301, vendor_name_key: Dock Inc}]}, "
        "{_name: 1-0, device_id_key: 0x1}]");
    EXPECT_EQ(Flat(FireWireItems(host.tree())), "[{_name: fw1, device_guid: 0x0011}]");
    EXPECT_EQ(Flat(FibreChannelItems(host.tree())), "[{_name: host5, spfc_link_status: Online}]");
}

TEST_F(HardwareProfileTest, TellsABatterysStateAndWear)
{
    host.add("sys/class/power_supply/BAT0/",
        { { "type", "Battery\n" }, { "status", "Charging\n" }, { "capacity", "80\n" },
            { "charge_now", "4000000\n" }, { "charge_full", "4500000\n" },
            { "charge_full_design", "5000000\n" }, { "cycle_count", "0\n" }, { "manufacturer", "SMP\n" },
            { "voltage_now", "12001000\n" } });

    EXPECT_EQ(Flat(PowerItems(host.tree())),
        "[{_name: spbattery_information, sppower_battery_model_info: {sppower_battery_manufacturer: SMP}, "
        "sppower_battery_charge_info: {sppower_battery_charge_remaining: 4000, sppower_battery_max_capacity: "
        "4500, "
        "sppower_battery_state_of_charge: 80, sppower_battery_fully_charged: FALSE, "
        "sppower_battery_is_charging: TRUE}, "
        "sppower_battery_health_info: {sppower_battery_health_maximum_capacity: 90%}, "
        "sppower_battery_installed: TRUE, "
        "sppower_current_voltage: 12001}, {_name: sppower_information, AC Power: {Current Power Source: "
        "TRUE}}]");
}

}
