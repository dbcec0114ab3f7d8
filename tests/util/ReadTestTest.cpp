#include "util/ReadTest.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uint64_t kGigabyte = 0x40000000;

/// What a command prints, without the line's end.
std::string Output(const std::string& command)
{
    FILE* const pipe = popen(command.c_str(), "r");
    std::array<char, 256> line {};
    const bool isRead = std::fgets(line.data(), line.size(), pipe) != nullptr;
    pclose(pipe);
    const std::string text = isRead ? line.data() : "";
    return text.substr(0, text.find('\n'));
}

/// A file without contents in the place of a disk.
class ReadTest : public testing::Test {
protected:
    explicit ReadTest(uint64_t size = kGigabyte)
    {
        fclose(fopen(file.c_str(), "w"));
        EXPECT_EQ(truncate(file.c_str(), static_cast<off_t>(size)), 0);
    }
    /// @param before a command that runs the probe.
    std::string verdict(const std::string& before = "", uint64_t size = kGigabyte) const
    {
        return Output(before + " " READ_TEST_PROBE " " + file + ' ' + std::to_string(size));
    }
    /// Delays the calls that these are of those that read the file, each by more than a fast read takes.
    std::string slowing(const std::string& which) const
    {
        return "strace -o /dev/null -P " + file
            + " -e trace=lseek -e inject=lseek:delay_enter=6500:when=" + which;
    }
    /// Whether it is fast in one of several tries: the machine may have other things to do.
    bool isEverFast(const std::string& before = "") const
    {
        bool isFast = false;
        for (int i = 0; i < 20 && !isFast; ++i)
            isFast = verdict(before) == "fast";
        return isFast;
    }

    TemporaryFolder folder;
    const std::string file = folder.path() + "/disk";
};

TEST_F(ReadTest, TakesAFileInMemoryForASolidStateDrive) { EXPECT_TRUE(isEverFast()); }

TEST_F(ReadTest, LetsTheFirstReadTakeItsTimeButNoOther)
{
    if (Output("command -v strace").empty())
        GTEST_SKIP() << "needs strace";
    EXPECT_TRUE(isEverFast(slowing("1")));
    for (const char* slow : { "2", "3", "4" })
        EXPECT_EQ(verdict(slowing(slow)), "no");
}

TEST_F(ReadTest, ReadsFourBlocksFarApart)
{
    if (Output("command -v strace").empty())
        GTEST_SKIP() << "needs strace";
    const std::string calls = folder.path() + "/calls";
    verdict("strace -o " + calls + " -P " + file + " -e trace=lseek,read,openat,close");
    FILE* const text = fopen(calls.c_str(), "r");
    std::array<char, 256> line {};
    std::string sizes;
    constexpr uint64_t step = kGigabyte / 409600;
    constexpr uint64_t base = step * 40960 - 4096;
    constexpr uint64_t stride = kGigabyte - step * 40960 - step * 4096;
    uint64_t read = 0;
    bool isClosed = false;
    while (fgets(line.data(), line.size(), text) != nullptr) {
        const std::string call = line.data();
        if (call.starts_with("lseek(")) {
            const uint64_t offset = std::strtoull(call.c_str() + call.find(' '), nullptr, 10);
            const uint64_t latest = stride * read++ / 3 + base;
            bool isPlace = false; // one of 256, within a hundredth of the disk
            for (uint64_t chance = 0; chance < 256; ++chance)
                isPlace = isPlace || offset == (latest - chance * step * 4096 / 256) / 4096 * 4096;
            EXPECT_TRUE(isPlace) << offset << " for " << latest;
        }
        if (call.starts_with("read("))
            sizes += call.substr(call.find_last_of('=') + 2);
        EXPECT_TRUE(call.find("O_RDWR") == std::string::npos && call.find("O_WRONLY") == std::string::npos);
        isClosed = isClosed || call.starts_with("close(");
    }
    fclose(text);
    EXPECT_TRUE(isClosed);
    EXPECT_GE(read, 1U);
    EXPECT_EQ(sizes.substr(0, 5), "4096\n");
}

TEST_F(ReadTest, DoesNotJudgeWhatIsTooSmallOrEndsEarly)
{
    EXPECT_EQ(verdict("", kGigabyte - 1), "no");
    EXPECT_EQ(verdict("", kGigabyte * 4), "no") << "the last reads find nothing";
    EXPECT_FALSE(PerformReadTestForSSD_Media("disk77", kGigabyte));
    EXPECT_FALSE(PerformReadTestForSSD_Media(nullptr, kGigabyte));
}

}
