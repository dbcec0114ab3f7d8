#include "UtilityTest.h"

#include "util/CFRef.h"
#include "util/DiagnosticsCapture.h"
#include "util/FileContents.h"
#include "util/Files.h"
#include "util/Processes.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>

namespace {

class ProcessTest : public UtilityTest { };

/// A name for processes that no other test gives at the same time.
std::string own(const std::string& name) { return "z" + std::to_string(getpid()) + name; }

/// A process that does nothing until the object goes.
class Sleeper {
public:
    explicit Sleeper(const char* name)
    {
        char own[16] = {};
        prctl(PR_GET_NAME, own);
        prctl(PR_SET_NAME, name); // a child has the name from the start
        fProcess = fork();
        if (fProcess == 0)
            prctl(PR_SET_PDEATHSIG, SIGKILL);
        while (fProcess == 0)
            pause();
        prctl(PR_SET_NAME, own);
    }
    ~Sleeper()
    {
        kill(fProcess, SIGKILL);
        waitpid(fProcess, nullptr, 0);
    }
    pid_t process() const { return fProcess; }

private:
    pid_t fProcess = 0;
};

/// Hands a text to the search in pieces, as reads from a pipe do. @return the process found, or 0.
pid_t SearchInPieces(const std::string& text, size_t split, const char* name)
{
    // Of the exact size, for the address sanitizer to see.
    std::vector<char> buffer(text.size() + 1);
    std::memcpy(buffer.data(), text.data(), split);
    buffer[split] = 0;
    size_t leftover = 77;
    if (const pid_t found = SearchBufferFor_PID(buffer.data(), &leftover, name); found != 0)
        return leftover == 0 ? found : -1;
    std::memcpy(buffer.data() + leftover, text.data() + split, text.size() - split);
    buffer[leftover + text.size() - split] = 0;
    return SearchBufferFor_PID(buffer.data(), &leftover, name);
}

std::string Line(int process, const std::string& command)
{
    return std::to_string(process) + " ?        Ss     0:00 " + command + "\n";
}

}

TEST(ProcessListTest, LinesMayBeSplitAnywhere)
{
    const std::string text
        = "  PID TTY      STAT   TIME COMMAND\n" + Line(7, "a b") + Line(8, "wanted") + Line(9, "wanted");
    for (size_t split = 0; split <= text.size(); ++split)
        EXPECT_EQ(SearchInPieces(text, split, "wanted"), 8) << split;
    EXPECT_EQ(SearchInPieces(text, 0, "a"), 7) << "the first word counts";
    for (const char* none : { "a b", "want", "", "COMMAND" })
        EXPECT_EQ(SearchInPieces(text, 0, none), 0) << none;
}

TEST(ProcessListTest, TheCallerAndLongAndUnfinishedLinesAreNeverFound)
{
    EXPECT_EQ(SearchInPieces(Line(getpid(), "wanted") + Line(0, "wanted"), 0, "wanted"), 0);
    const std::string start = Line(5, "wanted");
    const std::string longest
        = start.substr(0, start.size() - 1) + std::string(255 - start.size() + 1, ' ') + '\n';
    EXPECT_EQ(SearchInPieces(longest, 0, "wanted"), 5);
    EXPECT_EQ(SearchInPieces(' ' + longest, 0, "wanted"), 0);
    EXPECT_EQ(SearchInPieces(start.substr(0, start.size() - 1), 0, "wanted"), 0);
    EXPECT_EQ(SearchInPieces(std::string("x\0", 2) + start, 0, "wanted"), 0) << "a zero byte ends the piece";
    EXPECT_EQ(SearchBufferFor_PID(nullptr, nullptr, nullptr), 0);
}

TEST_F(ProcessTest, ProcessesAreFoundInTheListOfPs)
{
    const std::string name = own("sl");
    const Sleeper sleeper(name.c_str());
    EXPECT_EQ(Get_ProcessID(name.c_str()), sleeper.process());
    EXPECT_EQ(inChild([&] {
        close(STDOUT_FILENO); // the pipe takes its number
        return Get_ProcessID(name.c_str()) == sleeper.process() ? 1 : 0;
    }),
        1);
    EXPECT_EQ(Get_ProcessID("zek-absent"), 0);
    EXPECT_EQ(Get_ProcessID(nullptr), 0);

    // A list of several reads, the wanted line after 32767 bytes; then one that goes on for ever behind it.
    plant("/bin/ps",
        "test \"$*\" = acxww || exit; i=0; while [ $i -lt 2000 ]; do echo \"1 ? S 0:00 other$i\"; "
        "i=$((i+1)); "
        "done; echo '4711 ? S 0:00 wanted'; test -n \"$ENDLESS\" && while echo x; do :; done");
    EXPECT_EQ(Get_ProcessID("wanted"), 4711);
    EXPECT_EQ(Get_ProcessID("other1999"), 1);
    setenv("ENDLESS", "1", 1);
    EXPECT_EQ(Get_ProcessID("wanted"), 4711);
    unsetenv("ENDLESS");
    plant("/bin/ps", "head -c 100000 /dev/zero | tr '\\0' x; echo; echo '4711 ? S 0:00 wanted'");
    EXPECT_EQ(Get_ProcessID("wanted"), 0) << "a line that fills the buffer ends the search";
    plant("/bin/ps", "kill -9 $$");
    EXPECT_EQ(Get_ProcessID("wanted"), 0);
    spoil("/bin/ps");
    EXPECT_EQ(answerOfCopy([] { return Get_ProcessID("wanted"); }), 0);
}

TEST_F(ProcessTest, ProcessesAreCountedByTheirShortName)
{
    const Sleeper one(own("n").c_str());
    const Sleeper two(own("n").c_str());
    const Sleeper odd(own(") b (").c_str());
    EXPECT_EQ(NumberOfProcessesWithName(own("n").c_str()), 2);
    EXPECT_EQ(NumberOfProcessesWithName(own(") b (").c_str()), 1);
    EXPECT_EQ(NumberOfProcessesWithName(own("").c_str()), 0);
    EXPECT_EQ(NumberOfProcessesWithName("a name longer than sixteen bytes"), 0);
    EXPECT_EQ(NumberOfProcessesWithName(nullptr), 0);
    EXPECT_FALSE(PreviewProcessRunning());
    const Sleeper preview("Preview");
    const Sleeper cache("kextcache");
    EXPECT_TRUE(PreviewProcessRunning() && KextCacheProcessRunning());
}

TEST_F(ProcessTest, StandardStreamsLeadToNobodyAndErrorsAreClosed)
{
    const int status = inChild([] {
        const int lowest = open("/", O_RDONLY);
        close(lowest);
        const auto leadsToNull = [](int descriptor) {
            char link[32] = {};
            const std::string entry = "/proc/self/fd/" + std::to_string(descriptor);
            return readlink(entry.c_str(), link, sizeof link - 1) > 0 && std::strcmp(link, "/dev/null") == 0;
        };
        const bool done = DisableStdIO() == 0;
        return done && leadsToNull(0) && leadsToNull(1) && fcntl(2, F_GETFD) == -1 && leadsToNull(lowest) ? 1
                                                                                                          : 0;
    });
    EXPECT_EQ(status, 1);
}

TEST_F(ProcessTest, SignaturesAreJudgedByTheExitStatusAlone)
{
    fVolume.recordTool("/usr/bin/codesign");
    const std::string longest(1023, 'x');
    EXPECT_TRUE(CodeSignatureValid(longest.c_str()));
    EXPECT_EQ(fVolume.calls(), "codesign\n--verify\n" + longest + "\n\n");
    EXPECT_FALSE(CodeSignatureValid((longest + "x").c_str()) || CodeSignatureValid(nullptr));
    EXPECT_EQ(fVolume.calls(), "codesign\n--verify\n" + longest + "\n\n")
        << "run for a path that is too long";

    plant("/usr/bin/codesign", "echo heard; exit 3");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(CodeSignatureValid("x"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    plant("/usr/bin/codesign", "kill -9 $$");
    EXPECT_TRUE(CodeSignatureValid("x"));
    spoil("/usr/bin/codesign");
    EXPECT_EQ(answerOfCopy([] { return CodeSignatureValid("x") ? 1 : 0; }), 0);
}

TEST_F(ProcessTest, NoCallLeavesADescriptorOrAChild)
{
    const auto descriptors
        = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const auto before = descriptors();
    plant("/usr/bin/codesign", "exit 0");
    plant("/usr/bin/pmset", "echo settings");
    Get_ProcessID("zek-absent");
    CodeSignatureValid("x");
    CaptureSleepPreferencesToFile("/private/tmp/out");
    MergeFiles("/private/tmp/out", "", nullptr, "/private/tmp/merged", 0);
    CFRelease(CreateCFDataFromContentsOfFile("/private/tmp/merged", 0, true));
    CreateFileFromContentsOfBuffer("x", 1, "/private/tmp/merged");
    CreateSymbolicLink("merged", "/private/tmp/link");
    EXPECT_EQ(descriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "there is a child";
}

TEST_F(ProcessTest, SerialNumbersOfNoProcessAreAllZero)
{
    ProcessSerialNumber one { 1, 0 };
    const ProcessSerialNumber other { 0, 1 };
    EXPECT_TRUE(IsPSN_Valid(&one) && IsPSN_Valid(&other) && PSNsEqual(&one, &one));
    EXPECT_FALSE(PSNsEqual(&one, &other) || PSNsEqual(nullptr, nullptr) || IsPSN_Valid(nullptr));
    InitializePSN_ToInvalid(&one);
    EXPECT_FALSE(IsPSN_Valid(&one));
    InitializePSN_ToInvalid(nullptr);
}
