#include "tests/support/RegistryTest.h"

#include <CoreFoundation/CFNumber.h>
#include <IOKit/IOBSD.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/Properties.h>

#include <string>
#include <vector>

using iokit::Properties;

namespace {

std::string NameOf(io_object_t entry)
{
    io_name_t name {};
    return IORegistryEntryGetName(entry, name) == kIOReturnSuccess ? name : "";
}

/// The names of what an iterator answers, with spaces between them. It is released.
std::string Names(io_iterator_t iterator)
{
    std::string names;
    while (const io_object_t entry = IOIteratorNext(iterator)) {
        names += (names.empty() ? "" : " ") + NameOf(entry);
        IOObjectRelease(entry);
    }
    IOObjectRelease(iterator);
    return names;
}

/// What is found, by name. The references are released.
std::string Found(CFMutableDictionaryRef matching)
{
    io_iterator_t all = IO_OBJECT_NULL;
    EXPECT_EQ(IOServiceGetMatchingServices(kIOMasterPortDefault, matching, &all), kIOReturnSuccess);
    return all != IO_OBJECT_NULL ? Names(all) : "";
}

CFMutableDictionaryRef With(CFMutableDictionaryRef matching, CFStringRef key, Properties& values)
{
    CFDictionarySetValue(matching, key, values.take().get());
    return matching;
}

/// A computer with two disks, and a volume that lies on both.
class IOKitLibTest : public RegistryTest {
protected:
    IOKitLibTest()
    {
        iokit::Registry registry;
        iokit::Entry& computer = registry.add(registry.root(), "IOPlatformExpertDevice", "Desk", "", {});
        registry.add(computer, "IODTNVRAM", "options", "", Properties().text("boot-device", "a\\b").take());
        iokit::Entry& driver = registry.add(computer, "AppleACPIPlatformExpert", "Driver", "", {});
        iokit::Entry& bus
            = registry.add(driver, "IOPCIDevice", "PCI0", "0", Properties().text("Speed", "fast").take());
        std::vector<iokit::Entry*> media;
        for (const std::string number : { "0", "1" }) {
            iokit::Entry& device = registry.add(bus, "IOBlockStorageServices", "A/B", number,
                Properties().text("Serial Number", "S" + number).take());
            media.push_back(&registry.add(device, "IOMedia", "Disk " + number, "",
                Properties().text("BSD Name", "disk" + number).flag("Whole", true).take()));
        }
        iokit::Entry& volume = registry.add(
            *media[0], "CoreStorageLogical", "Volume", "", Properties().text("BSD Name", "disk2").take());
        registry.link(*media[1], volume);
        media[1]->service->registered = false;
        registry.completeDeviceTree();
        use(std::move(registry));
    }

    static io_service_t disk(const char* name)
    {
        return IOServiceGetMatchingService(
            kIOMasterPortDefault, IOBSDNameMatching(kIOMasterPortDefault, 0, name));
    }
};

TEST_F(IOKitLibTest, CountsReferencesAndRefusesWhatWasReleased)
{
    const io_service_t volume = disk("disk2");
    ASSERT_NE(volume, IO_OBJECT_NULL);
    EXPECT_EQ(disk("disk2"), volume) << "the same entry has the same number";
    EXPECT_EQ(IOObjectRetain(volume), KERN_SUCCESS);
    EXPECT_EQ(IOObjectGetUserRetainCount(volume), 3U);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(IOObjectRelease(volume), KERN_SUCCESS);

    io_name_t name {};
    io_iterator_t iterator = IO_OBJECT_NULL;
    for (const io_object_t gone : { volume, IO_OBJECT_NULL }) {
        EXPECT_EQ(IOObjectRelease(gone), KERN_INVALID_NAME);
        EXPECT_EQ(IOObjectRetain(gone), KERN_INVALID_NAME);
        EXPECT_EQ(IORegistryEntryGetName(gone, name), kIOReturnBadArgument);
        EXPECT_EQ(IOObjectGetClass(gone, name), kIOReturnBadArgument);
        EXPECT_EQ(IORegistryEntryGetChildIterator(gone, kIOServicePlane, &iterator), kIOReturnBadArgument);
        EXPECT_EQ(IORegistryEntryCreateCFProperty(gone, CFSTR(kIOBSDNameKey), nullptr, 0), nullptr);
        EXPECT_EQ(IOIteratorNext(gone), IO_OBJECT_NULL);
        EXPECT_FALSE(IOObjectConformsTo(gone, "IOService"));
    }
    const io_service_t other = disk("disk0");
    EXPECT_NE(other, volume) << "the number is not used again at once";
    IOObjectRelease(other);
}

TEST_F(IOKitLibTest, KeepsWhatIsHeldAlthoughTheRegistryIsAnotherByThen)
{
    const io_service_t volume = disk("disk2");
    use(iokit::Registry());
    EXPECT_EQ(disk("disk2"), IO_OBJECT_NULL);
    EXPECT_EQ(NameOf(volume), "Volume");
    EXPECT_TRUE(IOObjectConformsTo(volume, "IOMedia"));
    EXPECT_FALSE(IOObjectConformsTo(volume, "IOBlockStorageDevice"));
    IOObjectRelease(volume);
}

TEST_F(IOKitLibTest, MatchesRegisteredServicesByAllThatIsAskedFor)
{
    EXPECT_EQ(Found(IOServiceMatching("IOMedia")), "Disk 0 Volume") << "the other is not registered";
    EXPECT_EQ(Found(IOServiceMatching("IOStorage")), "Disk 0 Volume");
    EXPECT_EQ(Found(IOServiceMatching("IOPartitionScheme")), "");
    EXPECT_EQ(Found(IOServiceNameMatching("Volume")), "Volume");
    EXPECT_EQ(Found(IOServiceNameMatching("A/B@1")), "A/B");
    EXPECT_EQ(Found(IORegistryEntryIDMatching(0x100000103)), "Driver");
    EXPECT_EQ(Found(With(IOServiceMatching("IOService"), CFSTR(kIOPropertyMatchKey),
                  Properties().text("Serial Number", "S1"))),
        "A/B");
    const CFMutableDictionaryRef wholes = IOServiceMatching("IOMedia");
    CFDictionarySetValue(wholes, CFSTR("Whole"), kCFBooleanTrue);
    EXPECT_EQ(Found(wholes), "Disk 0");
    EXPECT_EQ(disk("disk1"), IO_OBJECT_NULL);
    const cf::Owned<CFMutableDictionaryRef> several(CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    const void* names[] = { CFSTR("Nothing"), CFSTR("Volume") };
    CFDictionarySetValue(several.get(), CFSTR(kIONameMatchKey),
        cf::Owned<CFArrayRef>(CFArrayCreate(nullptr, names, 2, &kCFTypeArrayCallBacks)).get());
    CFRetain(several.get());
    CFRetain(several.get());
    EXPECT_EQ(Found(several.get()), "Volume");
    IOObjectRelease(IOServiceGetMatchingService(kIOMasterPortDefault, several.get()));
    EXPECT_EQ(CFGetRetainCount(several.get()), 1) << "each search takes one";
    EXPECT_EQ(disk("disk"), IO_OBJECT_NULL);
    EXPECT_EQ(IOServiceGetMatchingService(kIOMasterPortDefault, nullptr), IO_OBJECT_NULL);
    EXPECT_EQ(IOServiceMatching(nullptr), nullptr);
}

TEST_F(IOKitLibTest, FindsNoServiceThatIsEnding)
{
    iokit::Registry registry;
    registry.add(registry.root(), "IOMedia", "Ending", "", {}).service->active = false;
    use(std::move(registry));
    EXPECT_EQ(Found(IOServiceMatching("IOMedia")), "");
}

TEST_F(IOKitLibTest, GoesUpThroughAllParentsAndDownToEachEntryOnce)
{
    const io_service_t volume = disk("disk2");
    io_iterator_t iterator = IO_OBJECT_NULL;
    IORegistryEntryCreateIterator(
        volume, kIOServicePlane, kIORegistryIterateRecursively | kIORegistryIterateParents, &iterator);
    EXPECT_EQ(Names(iterator), "Disk 0 A/B PCI0 Driver Desk Root Disk 1 A/B");
    IORegistryEntryGetParentIterator(volume, kIOServicePlane, &iterator);
    EXPECT_EQ(Names(iterator), "Disk 0 Disk 1");
    const io_registry_entry_t bus = IORegistryEntryFromPath(kIOMasterPortDefault, "IOService:/Driver/PCI0");
    IORegistryEntryCreateIterator(bus, kIOServicePlane, kIORegistryIterateRecursively, &iterator);
    EXPECT_EQ(IOIteratorIsValid(iterator), 1U);
    io_name_t kind {};
    EXPECT_EQ(IOObjectGetClass(iterator, kind), kIOReturnSuccess);
    EXPECT_STREQ(kind, "IOUserIterator");
    IOObjectRelease(IOIteratorNext(iterator));
    IOIteratorReset(iterator);
    EXPECT_EQ(Names(iterator), "A/B Disk 0 Volume A/B Disk 1");
    io_registry_entry_t child = IO_OBJECT_NULL;
    EXPECT_EQ(IORegistryEntryGetChildEntry(volume, kIOServicePlane, &child), kIOReturnNoDevice);
    EXPECT_EQ(IORegistryEntryGetChildEntry(bus, "IOPower", &child), kIOReturnBadArgument);
    IOObjectRelease(bus);
    IOObjectRelease(volume);
}

TEST_F(IOKitLibTest, SearchesAPropertyAtTheEntryThenUpOrDown)
{
    const io_service_t volume = disk("disk2");
    const auto search = [](io_registry_entry_t entry, CFStringRef key, IOOptionBits options) {
        const cf::Owned<CFTypeRef> value(
            IORegistryEntrySearchCFProperty(entry, kIOServicePlane, key, nullptr, options));
        return cf::TextOf(value.get());
    };
    constexpr IOOptionBits up = kIORegistryIterateRecursively | kIORegistryIterateParents;
    EXPECT_EQ(search(volume, CFSTR("BSD Name"), up), "disk2");
    EXPECT_EQ(search(volume, CFSTR("Serial Number"), up), "S0");
    EXPECT_EQ(search(volume, CFSTR("Speed"), up), "fast");
    EXPECT_EQ(search(volume, CFSTR("Serial Number"), kIORegistryIterateParents), "");
    const io_registry_entry_t bus0 = IORegistryEntryFromPath(kIOMasterPortDefault, "IOService:/Driver/PCI0");
    EXPECT_EQ(search(bus0, CFSTR("Serial Number"), 0), "");
    IOObjectRelease(bus0);
    EXPECT_EQ(search(volume, CFSTR("Nothing"), up), "");
    const io_registry_entry_t root = IORegistryGetRootEntry(kIOMasterPortDefault);
    EXPECT_EQ(search(root, CFSTR("BSD Name"), kIORegistryIterateRecursively), "disk0");
    IOObjectRelease(root);
    IOObjectRelease(volume);
}

TEST_F(IOKitLibTest, FindsEntriesByTheirPathsInBothPlanes)
{
    const io_service_t volume = disk("disk2");
    io_string_t path {};
    ASSERT_EQ(IORegistryEntryGetPath(volume, kIOServicePlane, path), kIOReturnSuccess);
    EXPECT_STREQ(path, "IOService:/Driver/PCI0@0/A/B@0/Disk 0/Volume");
    EXPECT_EQ(IORegistryEntryGetPath(volume, kIODeviceTreePlane, path), kIOReturnNotFound);
    EXPECT_TRUE(IORegistryEntryInPlane(volume, kIOServicePlane));
    EXPECT_FALSE(IORegistryEntryInPlane(volume, kIODeviceTreePlane));
    const io_registry_entry_t root = IORegistryGetRootEntry(kIOMasterPortDefault);
    EXPECT_TRUE(IORegistryEntryInPlane(root, kIODeviceTreePlane));
    EXPECT_FALSE(IOObjectIsEqualTo(root, volume));
    EXPECT_TRUE(IOObjectIsEqualTo(root, root));
    IOObjectRelease(root);
    io_name_t location {};
    EXPECT_EQ(IORegistryEntryGetLocationInPlane(volume, kIOServicePlane, location), kIOReturnNotFound);
    const auto nameAt = [](const char* text) {
        const io_registry_entry_t entry = IORegistryEntryFromPath(kIOMasterPortDefault, text);
        std::string name = NameOf(entry);
        IOObjectRelease(entry);
        return name;
    };
    EXPECT_EQ(nameAt("IOService:/Driver/PCI0@0/A/B@0/Disk 0/Volume"), "Volume");
    EXPECT_EQ(nameAt("IOService:/Driver/PCI0/A/B@1/Disk 1"), "Disk 1");
    EXPECT_EQ(nameAt("IOService:/"), "Desk");
    EXPECT_EQ(nameAt("IOService:/Desk/Driver"), "Driver");
    EXPECT_EQ(nameAt("IOService:/Driver/PCI0/A/B/Disk 0"), "Disk 0");
    EXPECT_EQ(nameAt("IODeviceTree:/options"), "options");
    EXPECT_EQ(nameAt("IODeviceTree:/PCI0@0"), "PCI0") << "the driver between is of the other plane";
    for (const char* wrong : { "", "IOService", "IOService:", "IOPower:/Driver", "IOService:/Driver/PCI",
             "IOService:/Driver/PCI0@1", "IOService:/Driver//PCI0" })
        EXPECT_EQ(nameAt(wrong), "") << wrong;
    IOObjectRelease(volume);
}

TEST_F(IOKitLibTest, CutsNamesAndRefusesPathsThatAreTooLong)
{
    iokit::Registry registry;
    iokit::Entry& computer = registry.add(registry.root(), "IOPlatformExpertDevice", "Desk", "", {});
    registry.add(computer, "IOMedia", std::string(600, 'n'), "", {});
    use(std::move(registry));
    const io_service_t media
        = IOServiceGetMatchingService(kIOMasterPortDefault, IOServiceMatching("IOMedia"));
    EXPECT_EQ(NameOf(media), std::string(127, 'n'));
    io_string_t path {};
    EXPECT_EQ(IORegistryEntryGetPath(media, kIOServicePlane, path), kIOReturnNoSpace);
    IOObjectRelease(media);
}

struct News : iokit::Source {
    std::string version() override { return now; }
    std::shared_ptr<const iokit::Registry> read() override
    {
        ++reads;
        return std::make_shared<iokit::Registry>();
    }
    std::string now = "1";
    int reads = 0;
};

TEST_F(IOKitLibTest, ReadsTheRegistryAnewOnlyWhenThereIsNews)
{
    auto owned = std::make_unique<News>();
    News& news = *owned;
    iokit::UseSource(std::move(owned));
    const auto first = iokit::CurrentRegistry();
    EXPECT_EQ(iokit::CurrentRegistry(), first);
    news.now = "2";
    EXPECT_NE(iokit::CurrentRegistry(), first);
    (void)iokit::CurrentRegistry();
    EXPECT_EQ(news.reads, 2);
}

TEST_F(IOKitLibTest, ReadsCountersAsTheyAreWhenAsked)
{
    iokit::Registry registry;
    iokit::Entry& driver = registry.add(registry.root(), "IOBlockStorageDriver", "Driver", "", {});
    driver.properties = Properties().number("Statistics", 77).text("Other", "text").take();
    driver.live = { "Statistics", [count = int64_t { 0 }]() mutable {
                       return cf::Owned<CFTypeRef>(
                           ++count < 4 ? CFNumberCreate(nullptr, kCFNumberSInt64Type, &count) : nullptr);
                   } };
    use(std::move(registry));
    const io_service_t held
        = IOServiceGetMatchingService(kIOMasterPortDefault, IOServiceMatching("IOBlockStorageDriver"));
    for (const uint64_t expected : { 1U, 2U }) {
        const cf::Owned<CFTypeRef> value(
            IORegistryEntryCreateCFProperty(held, CFSTR("Statistics"), nullptr, 0));
        EXPECT_EQ(iokit::NumberOf(value.get()), expected);
    }
    CFMutableDictionaryRef all = nullptr;
    ASSERT_EQ(IORegistryEntryCreateCFProperties(held, &all, nullptr, 0), kIOReturnSuccess);
    EXPECT_EQ(iokit::NumberOf(CFDictionaryGetValue(all, CFSTR("Statistics"))), 3U);
    EXPECT_EQ(CFDictionaryGetCount(all), 2);
    CFRelease(all);
    const cf::Owned<CFTypeRef> first(IORegistryEntryCreateCFProperty(held, CFSTR("Statistics"), nullptr, 0));
    EXPECT_EQ(iokit::NumberOf(first.get()), 77U) << "what it was when it cannot be asked any more";
    IOObjectRelease(held);
}

}
