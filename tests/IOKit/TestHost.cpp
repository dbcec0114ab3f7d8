#include "TestHost.h"

#include <registry/ValueText.h>

TestHost& TestHost::sataDisk()
{
    disk("pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0", "sda",
        { { "dev", "8:0" }, { "size", "976773168" }, { "ro", "0" }, { "removable", "0" },
            { "queue/rotational", "0" }, { "queue/logical_block_size", "512" },
            { "queue/physical_block_size", "4096" }, { "queue/discard_max_bytes", "2147450880" },
            { "queue/max_sectors_kb", "1280" }, { "device/vendor", "ATA     " },
            { "device/model", "Kestrel SSD 500G" }, { "device/rev", "2B6Q" },
            { "stat", "  200  10  4000  70  100  20  1600  30  0  90  100" } },
        { { "ID_MODEL_ENC", "Kestrel\\x20SSD\\x20500GB\\x20Series\\x207\\x20\\x20" },
            { "ID_SERIAL_SHORT", "K7X0042" }, { "ID_PART_TABLE_TYPE", "gpt" },
            { "ID_PART_TABLE_UUID", "6d1b2f4e-8c1d-4b53-9c76-0a1f5e2d7c33" } });
    partition(1, { { "dev", "8:1" }, { "start", "2048" }, { "size", "614400" }, { "ro", "0" } },
        { { "ID_PART_ENTRY_TYPE", "c12a7328-f81f-11d2-ba4b-00a0c93ec93b" },
            { "ID_PART_ENTRY_UUID", "0b6f1c5e-5d0c-4f29-9d1a-3c1d1a0f7a11" },
            { "ID_PART_ENTRY_NAME", "EFI\\x20System\\x20Partition" }, { "ID_FS_LABEL_ENC", "EFI" } });
    partition(2, { { "dev", "8:2" }, { "start", "616448" }, { "size", "976154624" }, { "ro", "1" } },
        { { "ID_PART_ENTRY_TYPE", "48465300-0000-11aa-aa11-00306543ecac" },
            { "ID_FS_LABEL_ENC", "M\xc3\xbcsli\\x20HD" } });
    return *this;
}

TestHost& TestHost::usbStick()
{
    disk("pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0", "sdb",
        { { "dev", "8:16" }, { "size", "31266816" }, { "ro", "0" }, { "removable", "1" },
            { "queue/rotational", "1" }, { "device/vendor", "Heron   " },
            { "device/model", "Pocket          " } },
        { { "ID_PART_TABLE_TYPE", "dos" } });
    partition(1, { { "dev", "8:17" }, { "start", "2048" }, { "size", "2048000" } },
        { { "ID_PART_ENTRY_TYPE", "0xc" }, { "ID_PART_ENTRY_UUID", "1f2e3d4c-01" } });
    partition(2, { { "dev", "8:18" }, { "start", "2050048" }, { "size", "2" } },
        { { "ID_PART_ENTRY_TYPE", "0x5" } });
    partition(10, { { "dev", "8:26" }, { "start", "2052096" }, { "size", "4096" } },
        { { "ID_PART_ENTRY_TYPE", "0xef" } });
    return *this;
}

TestHost& TestHost::nvmeDisk()
{
    disk("pci0000:00/0000:00:1d.0/0000:03:00.0/nvme/nvme0", "nvme0n1",
        { { "dev", "259:0" }, { "size", "2000409264" }, { "nsid", "1" }, { "queue/rotational", "0" },
            { "device/model", "Gannet M.2 1TB                          " },
            { "device/serial", "       G-0815-X" }, { "device/firmware_rev", "1.07" } });
    partition(1,
        { { "dev", "259:1" }, { "start", "2048" }, { "size", "4096" },
            { "uevent", "DEVTYPE=partition\nPARTNAME=Root \x1b[2J" } });
    return *this;
}

TestHost& TestHost::diskImage()
{
    disk("virtual", "loop3",
        { { "dev", "7:3" }, { "size", "20480" }, { "ro", "1" }, { "queue/rotational", "0" },
            { "loop/backing_file", "/home/ada/Tools.img" } });
    return *this;
}

std::vector<const iokit::Entry*> EntriesOf(const iokit::Registry& registry, const std::string& className)
{
    std::vector<const iokit::Entry*> found;
    for (const iokit::Entry& entry : registry.entries()) {
        if (entry.conformsTo(className))
            found.push_back(&entry);
    }
    return found;
}

std::string Property(const iokit::Entry& entry, const char* key)
{
    std::string text;
    if (const CFTypeRef value = entry.property(key))
        AppendValue(text, value, false);
    return text;
}

std::string Searched(const iokit::Entry& entry, const char* key)
{
    const iokit::Entry* one = &entry;
    while (one->property(key) == nullptr && one->parent() != nullptr)
        one = one->parent();
    return Property(*one, key);
}

const iokit::Entry& MediaNamed(const iokit::Registry& registry, const std::string& bsdName)
{
    static iokit::Registry none;
    static const iokit::Entry& nothing = none.add(none.root(), "IOService", "none", "", nullptr);
    for (const iokit::Entry* media : EntriesOf(registry, "IOMedia")) {
        if (Property(*media, "BSD Name") == '"' + bsdName + '"')
            return *media;
    }
    return nothing;
}

std::string WayTo(const iokit::Entry& entry)
{
    std::string way = entry.fullName();
    for (const iokit::Entry* one = entry.parent();
         one != nullptr && one->parent() != nullptr && one->parent()->parent() != nullptr;
         one = one->parent())
        way.insert(0, one->fullName() + " > ");
    return way;
}
