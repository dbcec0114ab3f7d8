#include "UtilityTest.h"

#include "util/CFRef.h"
#include "util/FileContents.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

class FileContentsTest : public UtilityTest { };

/// What is read, or the status in words.
std::string Contents(const std::string& path)
{
    void* buffer = &buffer;
    uint32_t length = 77;
    const OSStatus status = CreateBufferFromContentsOfFile(path.c_str(), &buffer, &length);
    if (status != noErr)
        return buffer == nullptr && length == 0 ? std::to_string(status) : "outputs not cleared";
    std::string text(static_cast<char*>(buffer), length);
    free(buffer);
    return text;
}

std::string Part(const char* path, uint32_t maximum, bool keepStart)
{
    const CFRef<CFDataRef> data(CreateCFDataFromContentsOfFile(path, maximum, keepStart));
    return data ? std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())),
               static_cast<size_t>(CFDataGetLength(data.get())))
                : "null";
}

CFRef<CFDataRef> Data(const std::string& bytes)
{
    return CFRef(CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
        static_cast<CFIndex>(bytes.size())));
}

}

TEST_F(FileContentsTest, WholeFilesOfAFittingSizeAreRead)
{
    TestVolume::write(path("file"), std::string("a\0b", 3));
    EXPECT_EQ(Contents("/private/tmp/file"), std::string("a\0b", 3));
    fs::resize_file(path("file"), 20000000);
    EXPECT_EQ(Contents("/private/tmp/file").size(), 20000000U);
    TestVolume::write(path("empty"), "");
    TestVolume::write(path("huge"), "");
    fs::resize_file(path("huge"), (uint64_t { 1 } << 30) + 1);
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    for (const char* none :
        { "/private/tmp/empty", "/private/tmp/huge", "/private/tmp/pipe", "/private/tmp", "/none", "" })
        EXPECT_EQ(Contents(none), std::to_string(fnfErr)) << none;
    EXPECT_EQ(Contents("/sys/class/net/lo/mtu"), std::to_string(ioErr)) << "it says to be longer than it is";
    if (getuid() == 0) {
        fs::permissions(path("file"), fs::perms::none);
        EXPECT_EQ(
            AsStranger([] { return Contents("/private/tmp/file") == std::to_string(permErr) ? 1 : 0; }), 1);
    }
    uint32_t length = 0;
    EXPECT_EQ(CreateBufferFromContentsOfFile("/private/tmp/file", nullptr, &length), paramErr);
}

TEST_F(FileContentsTest, WritingReplacesWhatWasThere)
{
    TestVolume::write(path("place/in/the/way"), "");
    EXPECT_EQ(CreateFileFromContentsOfBuffer("text", 4, "/private/tmp/place"), noErr);
    EXPECT_EQ(TestVolume::read(path("place")), "text");
    EXPECT_EQ(fs::status(path("place")).permissions(), fs::perms(0644));
    EXPECT_EQ(CreateFileFromContentsOfBuffer(nullptr, 0, "/private/tmp/place"), noErr);
    EXPECT_EQ(TestVolume::read(path("place")), "");
    EXPECT_EQ(CreateFileFromContentsOfBuffer("text", 4, "/private/tmp/none/file"), permErr);
    EXPECT_EQ(CreateFileFromContentsOfBuffer("text", 4, "/dev/full/x"), permErr);
    EXPECT_EQ(CreateFileFromContentsOfBuffer(nullptr, 4, "/private/tmp/place"), paramErr);

    plant("/bin/rm", "exit 0");
    EXPECT_EQ(CreateFileFromContentsOfBuffer("new", 3, "/private/tmp/place"), permErr) << "it is still there";
}

TEST_F(FileContentsTest, DataKeepsTheStartOrTheEndOfALongerFile)
{
    TestVolume::write(path("file"), "0123456789");
    const char* const file = "/private/tmp/file";
    EXPECT_EQ(Part(file, 0, false), "0123456789");
    EXPECT_EQ(Part(file, 10, false), "0123456789");
    EXPECT_EQ(Part(file, 4, true), "0123");
    EXPECT_EQ(Part(file, 4, false), "6789");
    EXPECT_EQ(Part("/private/tmp/none", 4, false), "null");

    EXPECT_TRUE(SetContentsOfFileToCFData(file, Data("new").get()));
    EXPECT_EQ(TestVolume::read(path("file")), "new");
    EXPECT_FALSE(SetContentsOfFileToCFData(file, Data("").get()) || SetContentsOfFileToCFData(file, nullptr));
    EXPECT_EQ(TestVolume::read(path("file")), "new");
    EXPECT_TRUE(SetContentsOfFileToCFData("/private/tmp/none/file", Data("new").get()))
        << "whatever came of it";
}

TEST_F(FileContentsTest, MergedFilesStandBehindEachOther)
{
    TestVolume::write(path("a"), "first ");
    TestVolume::write(path("b"), " last");
    const char* const a = "/private/tmp/a";
    const char* const b = "/private/tmp/b";
    EXPECT_TRUE(MergeFiles(a, "text", b, "/private/tmp/out", 0600));
    EXPECT_EQ(TestVolume::read(path("out")), "first text last");
    EXPECT_EQ(fs::status(path("out")).permissions(), fs::perms(0600));
    EXPECT_TRUE(MergeFiles(a, nullptr, b, a, 0));
    EXPECT_EQ(TestVolume::read(path("a")), "first  last") << "the output may be an input";
    EXPECT_TRUE(MergeFiles(nullptr, "short", nullptr, "/private/tmp/out", 0));
    EXPECT_EQ(TestVolume::read(path("out")), "short");
    EXPECT_TRUE(MergeFiles(nullptr, nullptr, nullptr, "/private/tmp/empty", 0));
    EXPECT_EQ(fs::status(path("empty")).permissions(), fs::perms(0644));

    TestVolume::write(path("long"), std::string(4090, 'x'));
    EXPECT_TRUE(MergeFiles("/private/tmp/long", "123456", nullptr, "/private/tmp/out", 0));
    EXPECT_EQ(fs::file_size(path("out")), 4096U);
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(MergeFiles("/private/tmp/long", "1234567", nullptr, "/private/tmp/other", 0));
    EXPECT_FALSE(MergeFiles("/private/tmp/none", "", b, "/private/tmp/other", 0));
    EXPECT_FALSE(MergeFiles(a, "", "/sys/class/net/lo/mtu", "/private/tmp/other", 0));
    EXPECT_FALSE(MergeFiles(a, "", "/private/tmp", "/private/tmp/other", 0));
    EXPECT_FALSE(fs::exists(path("other")));
    EXPECT_FALSE(MergeFiles(a, "text", b, "/private/tmp/pipe", 0)) << "nobody reads it";
    EXPECT_FALSE(MergeFiles(a, "text", b, "/dev/full", 0));
    EXPECT_FALSE(MergeFiles(a, "text", b, nullptr, 0));
}
