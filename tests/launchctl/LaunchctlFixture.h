#pragma once

#include <Host/Descriptor.h>

#include <gtest/gtest.h>

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// Asks until the answer is yes. @return false when it was not within 20 seconds.
bool Eventually(const std::function<bool()>& question);

/// Also collects the process's end where it became this process's child.
bool IsAlive(pid_t process);

std::string Contents(const std::filesystem::path& file);
void Write(const std::filesystem::path& file, const std::string& text);
/// @return a whole property list in XML with this inside of its dictionary.
std::string PropertyList(const std::string& keys);

/// A launchctl that was started.
class Launchctl {
public:
    Launchctl(const std::filesystem::path& outputFolder, const std::vector<std::string>& arguments);
    /// Waits for its end, 20 seconds at most, and then kills it. @return its exit status, or -1.
    int status();
    std::string out() const { return Contents(fOut); }
    std::string error() const { return Contents(fError); }

private:
    std::filesystem::path fOut;
    std::filesystem::path fError;
    pid_t fProcess = 0;
    int fStatus = -1;
};

/// A start-up volume with no supervisor yet. Ends the one that the test leaves.
class LaunchctlFixture : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Runs launchctl to its end.
    Launchctl launchctl(const std::vector<std::string>& arguments) const;
    Launchctl start(const std::vector<std::string>& arguments) const { return { fTemporary, arguments }; }
    std::string list() const { return launchctl({ "list" }).out(); }

    /// Writes a job that runs a shell script, which finds the file given by noteFile() in $NOTE.
    /// @param keys further keys, in XML. @return the property list's path.
    std::string writeJob(const std::string& label, const std::string& script,
        const std::string& keys = "<key>RunAtLoad</key><true/>") const;
    std::filesystem::path noteFile(const std::string& label) const { return fTemporary / (label + ".note"); }
    /// What the scripts of the label wrote, line by line.
    std::vector<std::string> notes(const std::string& label) const;
    /// Loads a job that notes its process, which must succeed. @return the process, 0 when it is not noted.
    pid_t load(const std::string& path) const;
    /// Waits for that many lines. @return the last as a number, 0 when it does not come.
    pid_t notedProcess(const std::string& label, size_t count) const;

    /// @return a socket connected to the supervisor, or none.
    static Descriptor connection();
    /// @return the process that serves, or 0.
    static pid_t supervisor();
    std::filesystem::path runtimeFolder() const;

    std::filesystem::path fTemporary;
    std::filesystem::path fVolume;
};

/// Notes its process and goes on for longer than any test.
constexpr const char* runForLong = "echo $$ >> $NOTE; exec sleep 600";
