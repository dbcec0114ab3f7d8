#pragma once

#include "tests/support/TestVolume.h"

#include <optional>
#include <sys/types.h>

/// The installer that was built, with its real agent, driver and privileged tool, and the real launchctl, run
/// as a user runs it on a test volume.
class Installer {
public:
    /// Gives the volume a copy of the installer of its own.
    explicit Installer(const TestVolume& volume);

    /// @param arguments for a shell. @param errors where its standard error goes: a file, or "&1" for the
    /// output.
    /// @param wrapper a command that runs the installer, such as a tracer; for a shell too.
    /// @return the exit status; 128 and the signal's number when it was killed. What it printed is in
    /// `output`.
    int run(const std::string& arguments, const std::string& errors = "&1", const std::string& wrapper = "");
    std::string output;

    std::filesystem::path bundle() const;

    /// The process of the loaded agent; 0 when there is none.
    static pid_t agentProcess();
    /// Calls launchctl with a verb for the volume's LaunchAgent. @return its output; nothing when it failed.
    static std::optional<std::string> launchctl(const std::string& verb, const TestVolume& volume);

private:
    std::filesystem::path fBundle;
};
