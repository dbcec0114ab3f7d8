#include "tests/util/RecordedMac.h"
#include "util/DriveIdentity.h"
#include "util/DriveNames.h"
#include "util/MediaTypes.h"

#include <cstring>
#include <functional>

namespace {

/// What a function writes into a buffer of exactly this size, which it has to zero.
std::string Written(size_t size, const std::function<void(char*, size_t)>& write)
{
    std::string buffer(size, 'x');
    write(buffer.data(), size);
    EXPECT_EQ(buffer.find_first_not_of('\0', buffer.find('\0')), std::string::npos) << "zeroed to its end";
    return buffer.substr(0, buffer.find('\0'));
}

class DriveTest : public RecordedMac {
protected:
    static IORef drive(const std::string& characteristics)
    {
        return record(
            { { "IOBlockStorageDevice", { "\"Device Characteristics\" = {" + characteristics + '}' } },
                { "IOMedia", {} } });
    }

    /// "make|model" of a drive with this vendor, "" for none, and product.
    static std::string makeAndModel(const std::string& vendor, const std::string& product)
    {
        const std::string vendorPart = vendor.empty() ? "" : "\"Vendor Name\"=\"" + vendor + "\",";
        const IORef media = drive(vendorPart + "\"Product Name\"=\"" + product + '"');
        char make[32];
        char model[64];
        FillInMakeModelAndFirmwareInfo(media.get(), make, sizeof make, model, sizeof model, nullptr, 0);
        return std::string(make) + '|' + model;
    }

    static std::string serial(uint32_t bus, const std::vector<Level>& levels, size_t size = 64)
    {
        const IORef media = record(levels);
        return Written(
            size, [&](char* buffer, size_t room) { FillInSerialNumber(media.get(), bus, buffer, room); });
    }
};

TEST_F(DriveTest, HasAMakeByHowItsNameStarts)
{
    const char* rows[][3] = {
        { "APPLE", "SSD SM0512G", "Apple|SM0512G" },
        { "", "APPLE HDD ST1000DM003      ", "Apple|ST1000DM003" },
        { "APPLE", "HDDX", "Apple|HDDX" },
        { "Seagate", "Backup+", "Seagate|Backup+" },
        { "", "ST2000DM001", "Seagate|ST2000DM001" },
        { "ATA", "ST2000DM001", "ATA ST|ST2000DM001" },
        { "ATA", "WDC WD10", "Unknown|ATA WDC WD10" },
        { "TOSHIBA", "MK3261", "Toshiba|MK3261" },
        { "HGST", "HTS721010A9E630", "Unknown|HGST HTS721010A9E630" },
        { "", "HGST", "HGST|" },
        { "Hitachi", "HDS72", "Hitachi|HDS72" },
        { "WDC", "WD10EZEX", "WD|WD10EZEX" },
        { "", "WD My Book", "WD|My Book" },
        { "Promise", "Pegasus", "Promise|Pegasus" },
        { "", "G-DRIVE mobile", "G-Technology|G-DRIVE mobile" },
        { "LaCie", "Rugged", "LaCie|Rugged" },
        { "Drobo", "5D", "Drobo|5D" },
        { "", "Pellurio M.2", "ZEK|Pellurio M.2" },
        { "", "Brisola 4", "ZEK|Brisola 4" },
        { "", "Dunmere", "ZEK|Dunmere" },
        { "ZEK", "Pellurio", "ZEK|Pellurio" },
        { "Intel", "SSDSC2", "Intel|SSDSC2" },
        { "Samsung", "SSD 850 EVO", "Samsung|850 EVO" },
        { "Samsung", "T5", "Samsung|T5" },
        { "SAMSUNG", "SSD 830", "Samsung|SSD 830" },
        { "SanDisk", "Ultra", "SanDisk|Ultra" },
        { "", "Crucial_CT256", "Crucial|CT256" },
        { "Crucial", "CT256", "Crucial|CT256" },
        { "", "CT500MX", "Crucial|CT500MX" },
        { "", "OCZ-VERTEX4", "OCZ|VERTEX4" },
        { "OCZ", "VERTEX4", "OCZ|VERTEX4" },
        { "PNY", "CS900", "PNY|CS900" },
        { "ADATA", "SU800", "ADATA|SU800" },
        { "", "TS256GSSD", "Transcend|256GSSD" },
        { "KINGSTON", "SV300", "Kingston|SV300" },
        { "Kingston", "DataTraveler", "Kingston|DataTraveler" },
        { "Generic", "Flash", "Unknown|Generic Flash" },
    };
    for (const auto& [vendor, product, expected] : rows)
        EXPECT_EQ(makeAndModel(vendor, product), expected);
    const std::string longest(255, 'a');
    EXPECT_EQ(makeAndModel("", longest).size(), 8 + 63U) << "cut to its buffer";
    EXPECT_EQ(makeAndModel("", longest + 'a'), "Unknown|") << "not read";
}

TEST_F(DriveTest, HasAModelAndFirmwareWithoutTheBlanksAround)
{
    const auto model = [](const IORef& media, size_t size) {
        return Written(size, [&](char* buffer, size_t room) {
            FillInModelAndFirmwareInfo(media.get(), buffer, room, nullptr, 0);
        });
    };
    const auto firmware = [](const IORef& media) {
        return Written(16, [&](char* buffer, size_t room) {
            FillInModelAndFirmwareInfo(media.get(), nullptr, 0, buffer, room);
        });
    };
    const IORef full = drive(
        R"("Vendor Name"=" Heron  ","Product Name"="  Pocket 2 ","Product Revision Level"="  1.07 ")");
    EXPECT_EQ(model(full, 64), "Heron Pocket 2");
    EXPECT_EQ(model(full, 9), "Heron Po");
    EXPECT_EQ(firmware(full), "1.07");
    const IORef partial = drive(R"("Vendor Name"="","Product Name"="Pocket","Product Revision Level"="   ")");
    EXPECT_EQ(model(partial, 64) + '|' + firmware(partial), "Pocket|");
    const IORef vendorOnly = drive(R"("Vendor Name"="Heron","Product Name"=7)");
    EXPECT_EQ(model(vendorOnly, 64), "Heron");
    EXPECT_EQ(model(record({ { "IOMedia", {} } }), 64), "");
}

TEST_F(DriveTest, HasTheSerialNumberOfItsBus)
{
    const std::vector<Level> ata { { "IOAHCIDevice", { R"("device serial" = "  D 1 ")" } },
        { "IOMedia", { R"("Serial Number" = "S2")" } } };
    for (const uint32_t bus : { kBusPCI, kBusSATA, kBusATA, kBusSAS })
        EXPECT_EQ(serial(bus, ata), "D 1");
    EXPECT_EQ(serial(kBusSATA, { { "IOMedia", { R"("Serial Number" = "  S2  ")" } } }), "S2");
    EXPECT_EQ(
        serial(kBusSATA, { { "IOMedia", { R"("device serial" = 5)", R"("Serial Number" = "S2")" } } }), "")
        << "what is there but of another type counts";
    EXPECT_EQ(serial(kBusSATA, ata, 3), "D ") << "cut";
    EXPECT_EQ(serial(kBusSATA, { { "IOMedia", { "\"Serial Number\" = \"S\xc3\xa9\"" } } }), "");
    EXPECT_EQ(
        serial(kBusSATA, { { "IOMedia", { "\"Serial Number\" = \"" + std::string(255, 'a') + '"' } } }, 300),
        "");
    EXPECT_EQ(serial(kBusUnknown, ata) + serial(10, ata) + serial(kBusUSB, ata), "");
    EXPECT_EQ(
        serial(kBusFastUSB, { { "IOUSBDevice", { R"("USB Serial Number" = " U3 ")" } }, { "IOMedia", {} } }),
        "U3");
    EXPECT_EQ(serial(kBusFireWire, { { "IOMedia", { R"("GUID" = 0x00a04035deadbeef)" } } }),
        "00 A0 40 35 DE AD BE EF");
    EXPECT_EQ(serial(kBusFireWire, { { "IOMedia", { R"("GUID" = "00a0")" } } }), "");
}

TEST_F(DriveTest, HasAWorldWideNameOnSCSIAndFibreChannel)
{
    constexpr const char* eight
        = R"("Protocol Characteristics" = {"Node World Wide Name"=<50060b00c2628ab0>})";
    constexpr const char* sixteen
        = R"("Protocol Characteristics" = {"Node World Wide Name"=<50060b00c2628ab050060b00c2628ab0>})";
    constexpr const char* inquiry
        = R"("INQUIRY Device Identification" = ({"Identifier"=<5000c5001f3a2b11>},{"Identifier"=<00>}))";
    EXPECT_EQ(serial(kBusFibreChannel, { { "IOMedia", { eight, inquiry } } }), "50 06 0B 00 C2 62 8A B0");
    EXPECT_EQ(serial(kBusSCSI, { { "IOMedia", { sixteen, inquiry } } }), "50 00 C5 00 1F 3A 2B 11");
    EXPECT_EQ(serial(kBusSCSI, { { "IOMedia", { sixteen } } }), "");
    EXPECT_EQ(serial(kBusSCSI, { { "IOMedia", { R"("INQUIRY Device Identification" = ())" } } }), "");
    EXPECT_EQ(serial(kBusSCSI,
                  { { "IOMedia", { R"("INQUIRY Device Identification" = ({"Identifier"=<5000>}))" } } }),
        "");
}

TEST_F(DriveTest, HasATargetAndAUnitWhereItsBusHasThem)
{
    const auto numbers = [](uint32_t bus, const std::vector<std::string>& properties) {
        const IORef media = record({ { "IOUSBDevice", properties }, { "IOMedia", {} } });
        int32_t target = 77;
        int32_t unit = 77;
        GetTargetID_And_LUN(media.get(), bus, &target, &unit);
        return std::to_string(target) + ' ' + std::to_string(unit);
    };
    const std::vector<std::string> all { R"("SCSI Target" = 3)", R"("SCSI Lun" = 4)", R"("USB Address" = 5)",
        R"("unit number" = 6)", R"("SCSI Logical Unit Number" = 7)",
        R"("Protocol Characteristics" = {"SCSI Target Identifier"=8})" };
    EXPECT_EQ(numbers(kBusSCSI, all), "3 4");
    EXPECT_EQ(numbers(kBusSCSI, { all.begin() + 2, all.end() }), "8 7");
    EXPECT_EQ(numbers(kBusUSB, all) + ", " + numbers(kBusFastUSB, all), "5 0, 5 0");
    EXPECT_EQ(numbers(kBusATA, all), "6 0");
    EXPECT_EQ(numbers(kBusSATA, all) + ", " + numbers(kBusSCSI, {}), "0 0, 0 0");
}

TEST_F(DriveTest, HasAPlaceInTheComputer)
{
    const auto location = [](const std::vector<std::string>& properties, size_t size = 32) {
        const IORef media
            = record({ { "IOPCIDevice", properties }, { "IOMedia", { R"("BSD Name" = "disk0")" } } });
        const std::string byName = Written(
            size, [](char* buffer, size_t room) { FillInDeviceLocationWithBSDName("disk0", buffer, room); });
        std::string byObject = Written(size, [&media](char* buffer, size_t room) {
            FillInDeviceLocationWithIOServiceObject(media.get(), buffer, room);
        });
        EXPECT_EQ(byName, byObject);
        return byObject;
    };
    constexpr const char* bay = R"("io-device-location" = <"Lower Bay">)";
    constexpr const char* thunderbolt = R"("Thunderbolt Path" = 1)";
    EXPECT_EQ(location({ bay, thunderbolt }), "Lower Bay");
    EXPECT_EQ(location({ bay }, 6), "Lower");
    EXPECT_EQ(location({ thunderbolt }), "Thunderbolt");
    EXPECT_EQ(location({ R"("io-device-location" = "text")", thunderbolt }), "Thunderbolt");
    EXPECT_EQ(location({}) + location({ R"("io-device-location" = <>)" }), "");
    EXPECT_EQ(
        Written(8, [](char* buffer, size_t room) { FillInDeviceLocationWithBSDName("disk9", buffer, room); }),
        "");
}

TEST_F(DriveTest, HasTheUUIDOfItsGUIDTable)
{
    const auto uuid = [](const char* content, size_t size = 64) {
        (void)record({ { "IOMedia", { R"("BSD Name" = "disk0")", content } }, { "IOGUIDPartitionScheme", {} },
            { "IOMedia", { R"("UUID" = "42F97C95-C7B0-09D9-5510-A41F577DEEB1")" } } });
        const IORef disk(IOServiceGetMatchingService(
            kIOMasterPortDefault, IOBSDNameMatching(kIOMasterPortDefault, 0, "disk0")));
        return Written(
            size, [&disk](char* buffer, size_t room) { GPT_UUID_ForDisk(disk.get(), buffer, room); });
    };
    EXPECT_EQ(uuid(R"("Content" = "GUID_partition_scheme")"), "42F97C95-C7B0-09D9-5510-A41F577DEEB1");
    EXPECT_EQ(uuid(R"("Content" = "GUID_partition_scheme")", 16), "42F97C95-C7B0-0");
    EXPECT_EQ(uuid(R"("Content" = "FDisk_partition_scheme")"), "");
    const IORef below = record({ { "IOMedia", { R"("Content" = "GUID_partition_scheme")" } },
        { "IOMedia", { R"("UUID" = "42F97C95")" } } });
    EXPECT_EQ(
        Written(64, [&below](char* buffer, size_t room) { GPT_UUID_ForDisk(below.get(), buffer, room); }),
        "");
}

}
