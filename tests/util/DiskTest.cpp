#include "tests/util/RecordedMac.h"
#include "util/CFUtilities.h"
#include "util/DiskStatistics.h"
#include "util/Disks.h"
#include "util/RegistryEntries.h"

#include <cstring>

namespace {

class DiskTest : public RecordedMac { };

constexpr const char* kWhole = R"("BSD Name" = "disk2")";
constexpr const char* kSlice = R"("BSD Name" = "disk2s1")";

TEST_F(DiskTest, AreKnownByTheirNames)
{
    record({ { "IOBlockStorageDriver", { R"("Removable" = Yes)", R"("Size" = 7)" } },
        { "IOMedia",
            { kWhole, R"("Size" = 5000000000)", R"("Preferred Block Size" = 4096)",
                R"("Content Hint" = "Apple_Boot")" } },
        { "IOMedia", { kSlice, R"("Removable" = 1)", R"("Content Hint" = "Apple_HFS")" } },
        { "IOMedia", { R"("BSD Name" = "disk2s2")" }, 3 },
        { "IOMedia",
            { R"("BSD Name" = "disk2s3")", R"("Content Hint" = "426F6F74-0000-11AA-AA11-00306543ECAC")" },
            3 } });
    EXPECT_TRUE(DiskExists("disk2") && DiskExists("disk2s1"));
    EXPECT_EQ(NumberBytesOnDisk("disk2"), 5000000000);
    EXPECT_EQ(NumberBytesOnDisk("disk2s1"), 0) << "its own size, not the whole's";
    EXPECT_EQ(SectorSizeForDisk("disk2"), 4096U);
    EXPECT_TRUE(IsDiskRemovable("disk2")) << "the drive tells";
    EXPECT_FALSE(IsDiskRemovable("disk2s1")) << "what comes first is no boolean";
    EXPECT_TRUE(IsDiskAppleBootPartition("disk2"));
    EXPECT_FALSE(IsDiskAppleBootPartition("disk2s1") || IsDiskAppleBootPartition("disk2s2"));
    EXPECT_TRUE(IsDiskAppleBootPartition("disk2s3"));
    for (const char* none : { "disk", "disk3", "", static_cast<const char*>(nullptr) }) {
        EXPECT_FALSE(DiskExists(none) || IsDiskRemovable(none) || IsDiskAppleBootPartition(none));
        EXPECT_EQ(NumberBytesOnDisk(none) + SectorSizeForDisk(none), 0);
    }
}

TEST_F(DiskTest, HaveSizesOrAllZeros)
{
    struct Answer {
        bool isPartition = true;
        char name[16] = "unchanged";
        uint64_t size = 1;
        uint32_t block = 1;
        uint32_t transfer = 1;
    };
    const auto ask = [](io_registry_entry_t media) {
        Answer answer;
        GetBSDNameAndSizes(media, &answer.isPartition, answer.name, sizeof answer.name, &answer.size,
            &answer.block, &answer.transfer);
        return std::string(answer.name) + (answer.isPartition ? " part " : " ") + std::to_string(answer.size)
            + ' ' + std::to_string(answer.block) + ' ' + std::to_string(answer.transfer);
    };
    const IORef slice
        = record({ { "IOBlockStorageDevice",
                       { R"("IOMaximumByteCountRead" = 1048576)", R"("IOMaximumByteCountWrite" = 524288)" } },
            { "IOMedia", { kSlice, R"("Size" = 8192)", R"("Preferred Block Size" = 512)" } } });
    EXPECT_EQ(ask(slice.get()), "disk2s1 part 8192 512 524288");
    EXPECT_EQ(MaxTransferSizeForObject(slice.get(), true), 1048576U);
    EXPECT_EQ(ask(record({ { "IOMedia",
                               { kWhole, R"("Size" = 1)", R"("Preferred Block Size" = 2)",
                                   R"("IOMaximumByteCountRead" = 4096)" } },
                             { "IOMedia", { kSlice } } })
                      .get()),
        "disk2s1 part 0 0 131072");
    EXPECT_EQ(ask(record({ { "IOMedia", { R"("Size" = 8192)", R"("BSD Name" = 7)" } } }).get()), " 0 0 0");
    EXPECT_EQ(ask(record({ { "IOMedia", { R"("BSD Name" = "disk0123456789ab")" } } }).get()), " 0 0 0")
        << "16 characters";
    EXPECT_EQ(ask(0), " 0 0 0");
    char cut[6] = { 'x', 'x', 'x', 'x', 'x', 'x' };
    GetBSDNameAndSizes(slice.get(), nullptr, cut, sizeof cut, nullptr, nullptr, nullptr);
    EXPECT_STREQ(cut, "disk2");
    GetBSDNameAndSizes(0, nullptr, cut, sizeof cut, nullptr, nullptr, nullptr);
    EXPECT_EQ(std::string(cut, sizeof cut), std::string(sizeof cut, '\0'));
    GetBSDNameAndSizes(slice.get(), nullptr, nullptr, 0, nullptr, nullptr, nullptr);
}

TEST_F(DiskTest, TakeTransfersInBytesOrInBlocks)
{
    const std::vector<std::string> blocks { R"("IOMaximumBlockCountRead" = 8388609)",
        R"("IOMaximumBlockCountWrite" = 8)", R"("IOMaximumByteCountRead" = "many")" };
    const IORef media = record(
        { { "IOBlockStorageDevice", blocks }, { "IOMedia", { R"("Preferred Block Size" = 512)" } } });
    EXPECT_EQ(MaxTransferSizeForObject(media.get(), true), 512U);
    EXPECT_EQ(MaxTransferSizeForObject(media.get(), false), 4096U);
    const IORef blockless = record({ { "IOBlockStorageDevice", blocks }, { "IOMedia", {} } });
    EXPECT_EQ(MaxTransferSizeForObject(blockless.get(), false), 0x20000U) << "the medium's own block size";
}

TEST_F(DiskTest, LeadToTheirAncestors)
{
    const IORef media = record({ { "IOPCIDevice", { R"("Slot" = "Upper")" } },
        { "IOBlockStorageDriver", { R"("Slot" = "Lower")" } }, { "IOMedia", { R"("Own" = Yes)" } } });
    EXPECT_TRUE(IOKitObjectIsChildOfObjectOfClass(media.get(), "IOStorage"));
    EXPECT_TRUE(IOKitObjectIsChildOfObjectOfClass(media.get(), "IOPCIDevice"));
    EXPECT_FALSE(IOKitObjectIsChildOfObjectOfClass(media.get(), "IOUSBDevice"));
    EXPECT_TRUE(IOKitObjectIsParentOfObject(0, media.get()));

    CFTypeRef value = nullptr;
    const io_registry_entry_t driver = GetParentWithProperty(media.get(), CFSTR("Slot"), &value);
    EXPECT_TRUE(IsString(value, CFSTR("Lower")));
    SafeCFRelease(value);
    SafeIOObjectRelease(driver);
    EXPECT_EQ(GetParentWithProperty(media.get(), CFSTR("Own"), nullptr), media.get())
        << "with no new reference";
    EXPECT_EQ(GetParentWithProperty(media.get(), CFSTR("None"), &value), 0U);
    EXPECT_EQ(value, nullptr);

    const auto afterLevels = [&media](uint32_t levels) {
        IORef all;
        IORegistryEntryCreateIterator(media.get(), kIOServicePlane,
            kIORegistryIterateRecursively | kIORegistryIterateParents, all.receive());
        const IORef last(IterateThroughParentLevels(all.get(), levels));
        io_name_t name {};
        return IOObjectGetClass(last.get(), name) == kIOReturnSuccess ? std::string(name) : "none";
    };
    EXPECT_EQ(afterLevels(0) + ' ' + afterLevels(2) + ' ' + afterLevels(4), "none IOPCIDevice none");
}

TEST_F(DiskTest, CountWhatTheyDo)
{
    const IORef media = record(
        { { "IOBlockStorageDriver",
              { R"text("Statistics" = {"Operations (Read)"=7,"Bytes (Write)"=9000000000,"Errors (Read)"="x"})text" } },
            { "IOMedia", { kWhole } } });
    DiskStatisticsRec record {};
    std::memset(&record, 0xff, sizeof record);
    ASSERT_TRUE(GetStatisticsForDiskWithBSD_Name("disk2", &record));
    EXPECT_EQ(record.operationsRead, 7U);
    EXPECT_EQ(record.bytesWrite, 9000000000U);
    EXPECT_EQ(record.errorsRead + record.retriesWrite + record.totalTimeRead, 0U);

    const CFRef<CFDictionaryRef> dictionary(CreateDictionaryFromDiskStatisticsRec(&record));
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 12);
    DiskStatisticsRec later {};
    ConvertDictionaryToDiskStatisticsRec(dictionary.get(), &later);
    EXPECT_EQ(std::memcmp(&later, &record, sizeof record), 0);
    later.operationsRead += 5;
    record.bytesWrite += 1;
    SubtractDiskStatistics(&later, &record);
    EXPECT_EQ(later.operationsRead, 5U);
    EXPECT_EQ(later.bytesWrite, UINT64_MAX) << "it wraps";

    EXPECT_FALSE(GetStatisticsForDiskWithBSD_Name("disk3", &record));
    EXPECT_EQ(record.bytesWrite, 0U);
    EXPECT_FALSE(CFRef<CFDictionaryRef>(CreateStatisticsForDisk(0)));
}

TEST_F(DiskTest, KeepCountersApart)
{
    // Each of the twelve has its own key.
    constexpr std::array keys { "Operations (Read)", "Errors (Read)", "Bytes (Read)", "Latency Time (Read)",
        "Total Time (Read)", "Retries (Read)", "Operations (Write)", "Errors (Write)", "Bytes (Write)",
        "Latency Time (Write)", "Total Time (Write)", "Retries (Write)" };
    std::string statistics;
    for (size_t i = 0; i < keys.size(); ++i)
        statistics += std::string(i > 0 ? "," : "") + '"' + keys[i] + "\"=" + std::to_string(i + 1);
    const IORef media = record({ { "IOMedia", { "\"Statistics\" = {" + statistics + '}' } } });
    DiskStatisticsRec record {};
    ASSERT_TRUE(GetStatisticsForDisk(media.get(), &record));
    uint64_t fields[12] = {};
    std::memcpy(fields, &record, sizeof fields);
    for (uint64_t i = 0; i < 12; ++i)
        EXPECT_EQ(fields[i], i + 1) << keys[i];
}

TEST(CFUtilities, CastAndParse)
{
    CFTypeRef cast = kCFBooleanTrue;
    EXPECT_TRUE(CastCFType(CFSTR("text"), CFStringGetTypeID(), &cast));
    EXPECT_TRUE(IsString(cast, CFSTR("text")));
    EXPECT_FALSE(CastCFType(kCFBooleanTrue, CFStringGetTypeID(), &cast));
    EXPECT_EQ(cast, nullptr);
    EXPECT_FALSE(CastCFType(nullptr, CFStringGetTypeID(), &cast));
    const std::string text = "<plist><array><true/></array></plist>trailing";
    const CFRef<CFTypeRef> list(
        CreatePropertyListFromBytes(text.data(), static_cast<uint32_t>(text.size() - 8)));
    ASSERT_NE(CFDynamicCast<CFArrayRef>(list.get(), CFArrayGetTypeID()), nullptr);
    EXPECT_EQ(CreatePropertyListFromBytes("<plist>", 7), nullptr);
    EXPECT_EQ(CreatePropertyListFromBytes(nullptr, 7), nullptr);
}

}
