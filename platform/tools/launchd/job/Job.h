#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace launchd {

/// The largest LaunchAgent property list that is read, in bytes.
constexpr size_t maxJobBytes = 1024UL * 1024;

/// When a job that ended is started again. Where several conditions are set, any one that holds is enough.
struct KeepAlive {
    bool always = false;
    std::optional<bool> successfulExit; ///< true: after exit status 0; false: after anything else
    std::optional<bool> crashed; ///< true: after a signal that means a crash; false: after anything else

    bool isConditional() const { return successfulExit || crashed; }
    /// @param waitStatus as waitpid() gives it.
    bool restartsAfter(int waitStatus) const;
};

/// What one LaunchAgent property list asks for, checked. All text is UTF-8 without null characters; paths are
/// Mac paths, "" where the key is absent.
struct Job {
    std::string label; ///< 1 to 255 of A-Z a-z 0-9 . _ -
    std::string program; ///< absolute; the file that is executed
    std::vector<std::string> arguments; ///< argv; never empty, and neither is the first
    bool disabled = false;
    bool runAtLoad = false;
    KeepAlive keepAlive;
    std::vector<std::string> sessions; ///< session types the job is limited to; empty means every one
    std::map<std::string, std::string> environment;
    std::string workingDirectory;
    std::string standardOutPath;
    std::string standardErrorPath;
    std::chrono::seconds throttleInterval { 10 }; ///< least time between two starts, at least 1 s
    std::chrono::seconds exitTimeOut { 20 }; ///< from SIGTERM to SIGKILL; 0 means to wait for ever

    /// Conditions on how the job ended mean nothing before it ran once, so they start it too.
    bool startsAtLoad() const { return runAtLoad || keepAlive.always || keepAlive.isConditional(); }
    bool isFor(const std::string& session) const;
};

/// Reads and checks a LaunchAgent property list, XML or binary. Keys that are not known are ignored.
/// @param problem set to one sentence, naming the key where one is at fault, when nothing is returned.
std::optional<Job> ParseJob(std::string_view propertyList, std::string& problem);

} // namespace launchd
