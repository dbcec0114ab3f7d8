#include "util/Buffers.h"
#include "util/DeviceNames.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

namespace {

/// What a function makes of a text in a buffer of exactly this size, for the address sanitizer to see.
template <class... Size>
std::string Changed(void (*change)(char*, Size...), const std::string& text, Size... size)
{
    std::string buffer(std::max({ text.size() + 1, size... }), 'x');
    buffer.replace(0, text.size() + 1, text.c_str(), text.size() + 1);
    change(buffer.data(), size...);
    return buffer.substr(0, buffer.find('\0'));
}

std::string Extracted(const char* path, size_t size = 16)
{
    std::string name(size + 1, 'x');
    return ExtractBSDNameFromPathname(path, name.data(), size) ? name.c_str() : "no";
}

TEST(DeviceNames, ReachToolsOnlyIfTheyArePlain)
{
    EXPECT_TRUE(IsPlainBSDName("disk2s1") && IsPlainBSDName(std::string(31, 'd').c_str()));
    EXPECT_FALSE(IsPlainBSDName(std::string(32, 'd').c_str()));
    for (const char* text :
        { "", "../x", "disk 2", "disk2\n", "-disk", "dïsk", static_cast<const char*>(nullptr) })
        EXPECT_FALSE(IsPlainBSDName(text));
}

TEST(DeviceNames, AreToldFromPathsAndFiles)
{
    for (const char* raw : { "/dev/rdisk", "/dev/rdisk2s1", "/dev/null", "/dev/nullx" })
        EXPECT_TRUE(PathnameIsRawDisk(raw)) << raw;
    for (const char* other : { "/dev/disk2", "rdisk2", "" })
        EXPECT_FALSE(PathnameIsRawDisk(other)) << other;
    for (const char* node : { "disk", "disk12", "disk2s1", "disk2s", "diskss3" })
        EXPECT_TRUE(PathnameIsBSDNode(node)) << node;
    for (const char* other : { "disk2s1s1", "disk2p1", "disk2a", "dis", "/dev/disk2", "disk2 ", "" })
        EXPECT_FALSE(PathnameIsBSDNode(other)) << other;
    EXPECT_FALSE(PathnameIsRawDisk(nullptr) || PathnameIsBSDNode(nullptr) || IsDiskAPartition(nullptr));
    for (const char* partition : { "disk2s1", "disk3s1s1", "s" })
        EXPECT_TRUE(IsDiskAPartition(partition)) << partition;
    for (const char* whole : { "disk2", "s1k", "", "7" })
        EXPECT_FALSE(IsDiskAPartition(whole)) << whole;
}

TEST(DeviceNames, GiveANodeAwayToAFileOfThatName)
{
    std::string folder = testing::TempDir() + "nodesXXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string file = folder + "/disk7";
    fclose(fopen(file.c_str(), "w"));
    const std::unique_ptr<char, decltype(&free)> before(getcwd(nullptr, 0), free);
    ASSERT_EQ(chdir(folder.c_str()), 0);
    EXPECT_FALSE(PathnameIsBSDNode("disk7"));
    EXPECT_TRUE(PathnameIsBSDNode("disk8"));
    ASSERT_EQ(chdir(before.get()), 0);
    unlink(file.c_str());
    rmdir(folder.c_str());
}

TEST(DeviceNames, AreMadeOfEachOther)
{
    const auto pathname
        = [](const char* name, size_t size) { return Changed(ConvertBSDNodeToPathname, name, size); };
    EXPECT_EQ(pathname("disk12s3", 16), "/dev/rdisk12s3");
    EXPECT_EQ(pathname("disk1234s56", 16), "/dev/rdisk1234s");
    EXPECT_EQ(pathname(std::string(40, 'd').c_str(), 64), "/dev/r" + std::string(25, 'd'));
    EXPECT_EQ(pathname("", 4), "/de");
    EXPECT_EQ(Changed(ConvertPartitionPathnameToDiskPathname, "/dev/disk2s1"), "/dev/disk2");
    EXPECT_EQ(Changed(ConvertPartitionPathnameToDiskPathname, "/dev/disk3s1s2"), "/dev/disk3");
    EXPECT_EQ(Changed(ConvertPartitionPathnameToDiskPathname, "/dev/disk2"), "/dev/disk2");
    EXPECT_EQ(Changed(ConvertPartitionPathnameToTrackPathname, "/dev/disk2s1"), "/dev/disk2");
    EXPECT_EQ(Changed(ConvertPartitionPathnameToTrackPathname, "/dev/disk2"), "/dev/di");

    EXPECT_EQ(ReturnPartitionSliceNumber("disk2"), 98U);
    EXPECT_EQ(ReturnPartitionSliceNumber("disk2s1"), (97U * 10 + 163) * 10 + 98);
    EXPECT_EQ(ReturnPartitionSliceNumber("") + ReturnPartitionSliceNumber("disk"), 0U);
}

TEST(DeviceNames, AreTakenOutOfPaths)
{
    EXPECT_EQ(Extracted("/dev/rdisk2s1"), "disk2s1");
    EXPECT_EQ(Extracted("/dev/disk2"), "disk2");
    EXPECT_EQ(Extracted("disk2"), "disk2");
    EXPECT_EQ(Extracted("disk12", 6), "disk12") << "the byte behind is the terminator's";
    EXPECT_EQ(Extracted("disk123", 6), "no");
    for (const char* other : { "/dev/disk2a", "/Volumes/disk2", "/dev/rrdisk2", "rdisk2", "/dev/r", "" })
        EXPECT_EQ(Extracted(other), "no") << other;

    const auto disk = [](const char* partition, size_t size) {
        std::string name(size, 'x');
        const bool fits = ExtractBSD_DiskNameFromBSD_PartitionName(partition, name.data(), size);
        EXPECT_EQ(name.back(), 0) << "zeroed to its end";
        return (fits ? "" : "cut ") + name.substr(0, name.find('\0'));
    };
    EXPECT_EQ(disk("disk2s1", 16), "disk2");
    EXPECT_EQ(disk("disk3s1s1", 16), "disk3");
    EXPECT_EQ(disk("disk2", 16), "disk2");
    EXPECT_EQ(disk("dis", 16), "dis");
    EXPECT_EQ(disk("disks", 16) + disk("diss1", 16), "diskdiss1");
    EXPECT_EQ(disk("disk2s1", 7), "cut disk2s");
}

TEST(Buffers, GrowWithOrWithoutTheirContents)
{
    void* buffer = nullptr;
    uint32_t size = 0;
    EXPECT_TRUE(AdjustBufferSize(&buffer, &size, 4, true));
    ASSERT_EQ(size, 4U);
    std::memcpy(buffer, "abcd", 4);
    EXPECT_TRUE(AdjustBufferSize(&buffer, &size, 8, true));
    EXPECT_EQ(std::string(static_cast<char*>(buffer), size), std::string("abcd\0\0\0\0", 8));
    EXPECT_TRUE(AdjustBufferSize(&buffer, &size, 2, true));
    EXPECT_EQ(std::string(static_cast<char*>(buffer), 4), "abcd");
    EXPECT_TRUE(AdjustBufferSize(&buffer, &size, 2, false));
    EXPECT_EQ(std::string(static_cast<char*>(buffer), size), std::string(8, '\0'));
    std::memcpy(buffer, "abcd", 4);
    EXPECT_TRUE(AdjustBufferSize(&buffer, &size, 9, false));
    EXPECT_EQ(std::string(static_cast<char*>(buffer), size), std::string(9, '\0'));
    free(buffer);

    uint64_t offset = 7;
    EXPECT_TRUE(SearchBuffer("", 0, "", 0, nullptr));
    EXPECT_TRUE(SearchBuffer("aabaab", 6, "ab", 2, &offset));
    EXPECT_EQ(offset, 1U);
    EXPECT_FALSE(SearchBuffer("aaba", 3, "ba", 2, &offset)) << "only the bytes that it has";
    EXPECT_FALSE(SearchBuffer("a", 1, "ab", 2, &offset));
    EXPECT_EQ(offset, 1U);
}

}
