#include "TestHost.h"

#include "tests/support/RegistryTest.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOBSD.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/Properties.h>

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

const std::string kPci = "pci0000:00/0000:00:1f.6";
const std::string kUsb = "pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0";
const std::string kVirtual; // no device

using Files = std::initializer_list<std::pair<std::string, std::string>>;

/// Of Ethernet's type, with an address of the hardware's. @param place of its device. @param files of its own.
void AddInterface(
    TestHost& host, const std::string& name, int number, const std::string& place, Files files = {})
{
    const std::string folder = "sys/class/net/" + name + '/';
    const std::string address = "02:fc:00:00:00:0" + std::to_string(number);
    host.add(folder,
            { { "ifindex", std::to_string(number) + '\n' }, { "type", "1\n" }, { "flags", "0x1003\n" },
                { "address", address + '\n' }, { "addr_assign_type", "0\n" } })
        .add(folder, files);
    if (place.empty())
        return;
    host.add("sys/devices/" + place + '/', { { "uevent", "" } })
        .add(folder, { { "device", "-> sys/devices/" + place } });
}

/// "eth0+" for the primary one, "eth1" for others, with "*" behind those that are built in.
std::vector<std::string> Interfaces(const iokit::Registry& registry)
{
    std::vector<std::string> found;
    for (const iokit::Entry* one : EntriesOf(registry, "IOEthernetInterface")) {
        const bool isPrimary = Property(*one, "IOPrimaryInterface") == "Yes";
        const bool isBuiltIn = Property(*one, "IOBuiltin") == "Yes";
        found.push_back(one->name + (isPrimary ? "+" : "") + (isBuiltIn ? "*" : ""));
    }
    return found;
}

std::string AddressOf(TestHost& host)
{
    return Property(*EntriesOf(host.registry(), "IOEthernetController").at(0), "IOMACAddress");
}

class HostNetwork : public RegistryTest { };

TEST_F(HostNetwork, AnInterfaceIsFoundAsOnAMacAndIsNoDisk)
{
    TestHost host;
    host.sataDisk().add("sys/devices/" + kPci + '/', { { "vendor", "0x8086\n" }, { "device", "0x15bb\n" } });
    AddInterface(host, "disk0", 4, kPci); // whoever names it so
    AddInterface(host, "eth1", 5, kPci);
    use(host.registry());

    cf::Owned<CFMutableDictionaryRef> matching(IOServiceMatching("IOEthernetInterface"));
    CFDictionarySetValue(matching.get(), CFSTR(kIOPropertyMatchKey),
        iokit::Properties().flag("IOPrimaryInterface", true).take().get());
    io_iterator_t all = 0;
    ASSERT_EQ(IOServiceGetMatchingServices(kIOMasterPortDefault, matching.release(), &all), kIOReturnSuccess);
    const io_object_t interface = IOIteratorNext(all);
    EXPECT_EQ(IOIteratorNext(all), 0U);
    io_registry_entry_t controller = 0;
    ASSERT_EQ(IORegistryEntryGetParentEntry(interface, kIOServicePlane, &controller), kIOReturnSuccess);
    const cf::Owned<CFTypeRef> address(
        IORegistryEntryCreateCFProperty(controller, CFSTR("IOMACAddress"), nullptr, 0));
    const auto data = static_cast<CFDataRef>(address.get());
    ASSERT_EQ(CFDataGetLength(data), 6);
    EXPECT_EQ(CFDataGetBytePtr(data)[5], 4);
    for (const io_object_t one : { all, interface, controller })
        IOObjectRelease(one);

    const auto registry = iokit::CurrentRegistry();
    const iokit::Entry& first = *EntriesOf(*registry, "IONetworkInterface").at(0);
    EXPECT_EQ(WayTo(first), "pci8086,15bb@1F,6 > IOEthernetController > disk0");
    EXPECT_EQ(
        Property(first, "BSD Name") + Property(first, "IOInterfaceType") + Property(first, "IOInterfaceUnit"),
        R"("disk0"60)");
    EXPECT_EQ(first.bsdName() + registry->deviceFile("disk0") + registry->deviceFile("eth1"), "/dev/sda");
    const io_service_t named = IOServiceGetMatchingService(
        kIOMasterPortDefault, IOBSDNameMatching(kIOMasterPortDefault, 0, "eth1"));
    EXPECT_TRUE(IOObjectConformsTo(named, "IOEthernetInterface"));
    IOObjectRelease(named);
}

TEST_F(HostNetwork, ThePrimaryInterfaceStaysWithTheComputer)
{
    const std::string outside = "pci0000:00/0000:00:1c.4/0000:04:00.0";
    const Files wireless { { "phy80211/index", "0\n" }, { "uevent", "DEVTYPE=wlan\nINTERFACE=wlan0\n" } };
    TestHost host;
    AddInterface(host, "enx020000000001", 2, kUsb);
    EXPECT_THAT(Interfaces(host.registry()), ElementsAre("enx020000000001+"));
    EXPECT_EQ(Property(*EntriesOf(host.registry(), "IOEthernetInterface").at(0), "IOInterfaceUnit"), "");

    AddInterface(host, "dock0", 3, outside);
    host.add("sys/devices/" + outside + '/',
        { { "vendor", "0x8086\n" }, { "device", "0x15d3\n" }, { "removable", "removable\n" } });
    AddInterface(host, "wlan0", 7, kPci, wireless);
    EXPECT_THAT(Interfaces(host.registry()), ElementsAre("enx020000000001", "dock0", "wlan0+*"));
    EXPECT_EQ(EntriesOf(host.registry(), "IO80211Controller").size(), 1U);

    AddInterface(host, "lan1", 8, "platform/switch", { { "uevent", "DEVTYPE=dsa\n" } });
    AddInterface(host, "eth10", 10, "platform/soc/fe300000.ethernet");
    AddInterface(host, "eth9", 9, "pci0000:00/0000:00:03.0/virtio2");
    EXPECT_THAT(Interfaces(host.registry()),
        ElementsAre("enx020000000001", "dock0", "wlan0*", "lan1*", "eth9+*", "eth10*"));

    host.add(
        "sys/devices/pci0000:00/0000:00:14.0/usb1/1-3/", { { "devnum", "2" }, { "removable", "fixed" } });
    AddInterface(host, "eth1", 1, "pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0");
    EXPECT_EQ(Interfaces(host.registry()).front(), "eth1+*") << "soldered on";
}

TEST_F(HostNetwork, WhatTheKernelMakesUpCountsOnlyInAContainer)
{
    TestHost host;
    host.add("sys/class/net/", { { "bonding_masters", "" } });
    AddInterface(host, "lo", 1, kVirtual, { { "type", "772\n" } });
    AddInterface(host, "dummy0", 2, kVirtual, { { "flags", "0x82\n" } });
    AddInterface(host, "br0", 3, kVirtual, { { "bridge/bridge_id", "x" } });
    EXPECT_THAT(Interfaces(host.registry()), ElementsAre());
    AddInterface(host, "host0", 5, kVirtual);
    AddInterface(host, "eth0", 4, kVirtual);
    EXPECT_THAT(Interfaces(host.registry()), ElementsAre("eth0+*"));
    EXPECT_EQ(WayTo(*EntriesOf(host.registry(), "IOEthernetInterface").at(0)), "IOEthernetController > eth0");
    AddInterface(host, "hwsim0", 6, "virtual/mac80211_hwsim/hwsim0");
    AddInterface(host, "ib0", 7, kPci, { { "type", "32\n" } });
    EXPECT_THAT(Interfaces(host.registry()), ElementsAre("eth0+*"));
    AddInterface(host, "ens3", 8, kPci);
    EXPECT_THAT(Interfaces(host.registry()), ElementsAre("ens3+*"));
}

TEST_F(HostNetwork, TheAddressIsTheHardwaresAsFarAsAnybodyKnows)
{
    TestHost host;
    AddInterface(host, "eth0", 4, kPci, { { "addr_assign_type", "3\n" } });
    EXPECT_EQ(AddressOf(host), "<02fc00000004>") << "nobody knows another";
    host.add("run/udev/data/", { { "n4", "E:ID_NET_NAME_MAC=enx001122aabbcc\n" } });
    EXPECT_EQ(AddressOf(host), "<001122aabbcc>");
    const std::string folder = "sys/class/net/eth0/";
    host.add(folder, { { "bonding_slave/perm_hwaddr", "00:11:22:00:00:01\n" } });
    EXPECT_EQ(AddressOf(host), "<001122000001>");
    host.add(folder, { { "phy80211/macaddress", "00:11:22:00:00:02\n" } });
    EXPECT_EQ(AddressOf(host), "<001122000002>");
    host.add(folder, { { "addr_assign_type", "0\n" } });
    EXPECT_EQ(AddressOf(host), "<02fc00000004>");

    TestHost other;
    AddInterface(other, "eth0", 4, kPci);
    for (const char* const odd : { "00:00:00:00:00:00", "02:fc:00", "zz:fc:00:00:00:01", "" }) {
        other.add("sys/class/net/eth0/", { { "address", odd } });
        EXPECT_EQ(AddressOf(other), "") << odd;
    }
}

}
