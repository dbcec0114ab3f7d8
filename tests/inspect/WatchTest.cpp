#include "tests/inspect/Inspection.h"
#include "tools/inspect/Commands.h"

#include <IOKit/CurrentRegistry.h>
#include <IOKit/Properties.h>
#include <gmock/gmock.h>

#include <csignal>
#include <iostream>
#include <regex>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A driver whose counters are asked for at each reading.
void AddDisk(iokit::Registry& registry, const std::string& name, std::function<uint64_t()> count)
{
    iokit::Entry& driver = registry.add(registry.root(), "IOBlockStorageDriver", "Driver", "", nullptr);
    driver.live
        = { "Statistics", [count = std::move(count)] {
               const uint64_t operations = count();
               iokit::Properties statistics;
               statistics.number("Operations (Read)", operations).number("Bytes (Read)", operations * 1024);
               return cf::Owned<CFTypeRef>(statistics.take().release());
           } };
    registry.add(driver, "IOMedia", "Media", "",
        iokit::Properties().text("BSD Name", name).flag("Whole", true).take());
}

/// Three disks: of the second the counter goes back once, the third comes after the second reading and goes after the
/// fourth. The sixth reading is the last.
class ChangingDisks {
public:
    ChangingDisks() { use(false); }

private:
    void use(bool withThird)
    {
        iokit::Registry registry;
        AddDisk(registry, "disk2", [this] { return ++fReading * 1000000; });
        AddDisk(registry, "disk10", [this] { return change(); });
        if (withThird)
            AddDisk(registry, "disk3", [] { return 7; });
        iokit::UseSource(std::make_unique<iokit::FixedSource>(std::move(registry)));
    }
    uint64_t change()
    {
        if (fReading == 2)
            use(true);
        if (fReading == 4)
            use(false);
        if (fReading == 6)
            raise(SIGTERM);
        return fReading == 4 ? 1 : fReading * 1000;
    }

    uint64_t fReading = 0;
};

/// What is written to the standard output meanwhile.
class Output {
public:
    Output()
        : fPrevious(std::cout.rdbuf(fText.rdbuf()))
    {
    }
    ~Output() { std::cout.rdbuf(fPrevious); }
    std::string text() const { return fText.str(); }

private:
    std::ostringstream fText {};
    std::streambuf* fPrevious;
};

std::vector<std::string> Found(const std::string& text, const char* expression)
{
    const std::regex regex(expression);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
        found.push_back((*match)[1]);
    return found;
}

/// velmora-inspect with its output in a pipe.
class Watching {
public:
    explicit Watching(const char* option)
    {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        fOutput = ends[0];
        fProcess = fork();
        if (fProcess == 0) {
            dup2(ends[1], STDOUT_FILENO);
            close(ends[0]);
            close(ends[1]);
            execl(VELMORA_INSPECT, VELMORA_INSPECT, "disks", option, "--json", nullptr);
            _exit(127);
        }
        close(ends[1]);
    }

    char firstByte() const
    {
        char byte = 0;
        return read(fOutput, &byte, 1) == 1 ? byte : '\0';
    }
    void closeOutput() { close(std::exchange(fOutput, -1)); }
    void signal(int number) const { kill(fProcess, number); }
    int status()
    {
        int status = -1;
        waitpid(fProcess, &status, 0);
        closeOutput();
        return status;
    }

private:
    int fOutput = -1;
    pid_t fProcess = -1;
};

}

TEST(WatchTest, ShowsWhatHappensOnTheDisksThatAreThereTwice)
{
    const ChangingDisks disks;
    Request request;
    request.asJSON = true;
    request.interval = Seconds(0.01);
    const Output output;
    EXPECT_EQ(WatchDisks(request), kFound);

    std::vector<std::string> readings;
    std::istringstream lines(output.text());
    for (std::string line; std::getline(lines, line);) {
        std::string names;
        for (const std::string& name : Found(line, "\"name\":\"(\\w+)\""))
            names += name + ' ';
        readings.push_back(names);
    }
    EXPECT_EQ(readings,
        (std::vector<std::string> {
            "disk2 disk10 ", "disk2 disk10 ", "disk2 disk3 ", "disk2 disk10 ", "disk2 disk10 " }));
    const double operations = std::stod(Found(output.text(), "\"readsPerSecond\":([0-9.]+)").at(0));
    const double bytes = std::stod(Found(output.text(), "\"bytesReadPerSecond\":([0-9]+)").at(0));
    EXPECT_NEAR(bytes / operations, 1024, 1);
    EXPECT_GT(operations, 1000000 / 60.0) << "a million in much less than a minute";
    EXPECT_NE(operations, 1000000) << "but not in one second";
    EXPECT_EQ(output.text().find("busyPercent"), std::string::npos) << "no times are counted";
}

TEST(WatchTest, RefusesWhatIsNoWholeDisk)
{
    const ChangingDisks disks;
    Request request;
    request.operands = { "disk2", "disk2s1" };
    request.interval = Seconds(0.01);
    EXPECT_EQ(WatchDisks(request), kNotFound);
    iokit::UseSource(std::make_unique<iokit::HostSource>());
}

TEST(WatchTest, EndsWellWhenItIsInterruptedOrNobodyReads)
{
    Watching interrupted("--watch=0.05");
    EXPECT_EQ(interrupted.firstByte(), '[');
    interrupted.signal(SIGINT);
    EXPECT_EQ(interrupted.status(), 0);
    Watching unread("--watch=86400");
    unread.closeOutput();
    EXPECT_EQ(unread.status(), 0) << "long before there is anything to write";
}
