#include "settings/NumVersion.h"
#include "tests/faults/Strace.h"
#include "tests/support/Installer.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>

namespace fs = std::filesystem;

namespace {

constexpr const char* kInstall = "--unattended install --accept-license --driver --wait 2";
constexpr const char* kForeignKey = "Somebody Else's";
constexpr const char* kUninstall = "--unattended uninstall --wait 2";

/// Calls that only look take their turn each when this is 1; otherwise most of them are passed over to keep a
/// run short. Those that change something always do.
size_t Step()
{
    const char* const step = std::getenv("ZEK_FAULT_STEP");
    return step != nullptr ? std::strtoul(step, nullptr, 10) : 60;
}

/// Every file below a folder by its relative name, with its content; folders have none.
std::map<std::string, std::string> Content(const fs::path& folder)
{
    std::map<std::string, std::string> content;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        content[fs::relative(entry.path(), folder)]
            = entry.is_regular_file() ? TestVolume::read(entry.path()) : "";
    return content;
}

/// One volume on which the installer runs, is disturbed, and runs again.
class Trial {
public:
    Trial()
    {
        TestVolume::write(volume.preferencesFile(),
            "<plist version=\"1.0\"><dict><key>" + std::string(kForeignKey)
                + "</key><string>kept</string></dict></plist>");
    }
    ~Trial()
    {
        if (fs::exists(volume.launchAgent()))
            Installer::launchctl("unload", volume);
        else if (Installer::agentProcess() != 0)
            installer.run(kUninstall);
    }

    /// What must hold whenever the installer has ended, however it did.
    void checkNothingIsTorn() const
    {
        EXPECT_EQ(volume.preferences()[kForeignKey], "kept") << "the preferences are torn or lost";
        if (fs::exists(volume.launchAgent())) {
            EXPECT_TRUE(TestVolume::isPropertyList(volume.launchAgent())) << "the LaunchAgent is torn";
        }
        if (fs::exists(volume.agent())) {
            EXPECT_EQ(Content(volume.agent()), Content(carriedAgent())) << "the agent is torn";
        }
    }
    bool isInstalled() const
    {
        return fs::exists(volume.agent()) && fs::exists(volume.launchAgent())
            && Installer::agentProcess() != 0
            && BundleVersion("/Library/Extensions/ZEKDockChargingSupport.kext") != 0;
    }
    bool isGone() const
    {
        return !fs::exists(volume.support()) && !fs::exists(volume.launchAgent())
            && Installer::agentProcess() == 0 && fs::is_empty(volume.extensions())
            && volume.preferences().size() == 1;
    }
    fs::path carriedAgent() const { return installer.bundle() / "Contents/Resources/ZEK Velmora.app"; }

    TestVolume volume;
    Installer installer { volume };
};

bool IsSuccess(int status) { return status == 0 || status == 3; }

/// The statuses that a run may have whose call failed; 137 is that of a killed one.
bool IsDocumentedFailure(int status) { return status == 1 || (status >= 4 && status <= 7) || status == 137; }

/// Lets the calls of one command fail one after the other, each on a volume of its own.
class FaultTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        if (!CanTrace())
            GTEST_SKIP() << "programs cannot be traced on this machine";
    }

    using Check = bool (Trial::*)() const;

    /// @param prepare the command that comes first, undisturbed; null for none.
    static void disturb(const char* prepare, const char* command, Check achieved)
    {
        const std::vector<SystemCall> calls = callsOf(prepare, command);
        ASSERT_GT(calls.size(), 100U) << "the trace does not show the installer's work";
        for (size_t i = 0; i < calls.size(); ++i) {
            if (!calls[i].changes && i % Step() != 0)
                continue;
            SCOPED_TRACE(std::string(GetParam()) + " in " + calls[i].name + " number "
                + std::to_string(calls[i].ordinal));
            disturbOnce(
                prepare, command, FaultCommand(calls[i], std::string_view(GetParam()) == "kill"), achieved);
        }
    }

private:
    static std::vector<SystemCall> callsOf(const char* prepare, const char* command)
    {
        Trial trial;
        if (prepare != nullptr) {
            EXPECT_PRED1(IsSuccess, trial.installer.run(prepare));
        }
        const fs::path trace = trial.volume.root() / "trace";
        EXPECT_PRED1(IsSuccess, trial.installer.run(command, "&1", TraceCommand(trace)))
            << trial.installer.output;
        return ReadTrace(trace, trial.volume.root().string());
    }

    static void disturbOnce(
        const char* prepare, const char* command, const std::string& fault, Check achieved)
    {
        Trial trial;
        if (prepare != nullptr) {
            ASSERT_PRED1(IsSuccess, trial.installer.run(prepare));
        }
        const int status = trial.installer.run(command, "&1", fault);
        trial.checkNothingIsTorn();
        if (IsSuccess(status)) {
            EXPECT_TRUE((trial.*achieved)()) << "success was reported too early:\n" << trial.installer.output;
        } else {
            EXPECT_PRED1(IsDocumentedFailure, status) << trial.installer.output;
        }
        const int again = trial.installer.run(command);
        EXPECT_TRUE(IsSuccess(again) || again == 6) << again << ":\n" << trial.installer.output;
        EXPECT_TRUE((trial.*achieved)()) << "another run does not repair it:\n" << trial.installer.output;
    }
};

}

TEST_P(FaultTest, AnInstallationIsWholeOrRepairedByTheNextRun)
{
    disturb(nullptr, kInstall, &Trial::isInstalled);
}

TEST_P(FaultTest, ARemovalIsCompleteOrCompletedByTheNextRun)
{
    disturb(kInstall, kUninstall, &Trial::isGone);
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultTest, ::testing::Values("kill", "error"));
