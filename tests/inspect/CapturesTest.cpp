#include "tests/inspect/Inspection.h"

// Recordings of real Macs, which lie beside the project where there are any. What is expected was read in them by people.

namespace {

struct Capture {
    const char* name;
    const char*
        disks; ///< name, bus, type, make, model, firmware, serial, location, partitions and TRIM of whole ones
    const char* partitions; ///< how many of each disk
    const char* computer; ///< serial number, model and primary interface's address
};

void PrintTo(const Capture& capture, std::ostream* out) { *out << capture.name; }

class CapturesTest : public InspectTest, public testing::WithParamInterface<Capture> { };

}

TEST_P(CapturesTest, HaveWhatPeopleSeeInThem)
{
    const std::string file = std::string(CAPTURES) + '/' + GetParam().name + ".ioreg.txt";
    if (!std::filesystem::exists(file))
        GTEST_SKIP() << "there is no " << file;
    const std::vector<std::string> arguments { "disks", "--json", "--registry", file };
    EXPECT_EQ(ask(arguments,
                  "'\\n'.join(' | '.join(str(d.get(k, '-')) for k in ('name', 'bus', 'mediaType', 'make', "
                  "'model', 'firmware', 'serialNumber', 'location', 'partitionType', 'isTRIMSupported')) "
                  "for d in found if 'disk' not in d)"),
        GetParam().disks);
    EXPECT_EQ(
        ask(arguments, "[sum(p.get('disk') == d['name'] for p in found) for d in found if 'disk' not in d]"),
        GetParam().partitions);
    EXPECT_EQ(
        ask({ "system", "--json", "--registry", file }, "' '.join(found[0].values())"), GetParam().computer);
    EXPECT_EQ(
        ask({ "registry", "--json", "--registry", file, "IORegistryEntry" }, "len(found) > 500"), "True\n");
}

INSTANTIATE_TEST_SUITE_P(All, CapturesTest,
    testing::Values(
        Capture { "imac-corestorage-sata-sd",
            "disk0 | PCI | SSD | Apple | SD0128F | A223821 | 969207359177 | SSD | CoreStorage | True\n"
            "disk1 | SATA | disk | Apple | ST1000DM003 | AP14 | Q0M9T19O | - | CoreStorage | False\n"
            "disk2 | PCI | SSD | Apple | SD0128F | A223821 | 969207359177 | SSD | - | True\n",
            "[3, 3, 0]\n", "B79IC3IIFU53 iMac15,1 1f:4c:c4:eb:0b:44\n" },
        Capture { "macbookair-apfs",
            "disk0 | Apple Fabric | SSD | Apple | AP0512Q | 1161.40. | --- | - | APFS | True\n"
            "disk1 | Apple Fabric | APFS | Apple | AP0512Q | 1161.40. | --- | - | - | True\n"
            "disk2 | Apple Fabric | APFS | Apple | AP0512Q | 1161.40. | --- | - | - | True\n"
            "disk3 | Apple Fabric | APFS | Apple | AP0512Q | 1161.40. | --- | - | - | True\n",
            "[3, 4, 2, 7]\n", "--- MacBookAir10,1 48:1f:fe:c7:93:21\n" },
        Capture { "macbookpro-pci-usb-image",
            "disk0 | PCI | SSD | Apple | SM0128G | BXW1SA0Q | G60BKXEK069844 | - | CoreStorage | True\n"
            "disk1 | PCI | SSD | Apple | SM0128G | BXW1SA0Q | G60BKXEK069844 | - | - | True\n"
            "disk2 | Virtual Interface | disk image | Unknown | Apple Disk Image | 10.12v444.20.3 | - | - | "
            "HFS | False\n",
            "[3, 0, 2]\n", "B01PUUSCCXY0 MacBookPro12,1 08:02:c7:7e:ad:a3\n" }));
