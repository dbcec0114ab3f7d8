#pragma once

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <vector>

/// What a command came to.
struct CommandResult {
    int status; ///< of its exit, or 128 and the signal
    std::string output; ///< with its errors
};

/// A computer with an ordinary user, `tester`. Its services are the real ones, on buses of its own; those that a test needs
/// it starts.
class System : public testing::Test {
public:
    static const std::filesystem::path home;

protected:
    System();
    ~System() override;

    /// With the installed policies and no rules of its own.
    void startPolkit();
    /// Starts polkit, if need be, with a rule that answers this whoever may ask for an administrator's rights.
    /// @param result name of a polkit.Result.
    void letPolkitAnswer(const std::string& result);
    /// A login manager that only writes down what it is asked for.
    void startLoginManager();
    static std::string askedOfLoginManager();
    /// Logs the user in as far as systemd's manager goes.
    void startUserManager();

    static CommandResult asRoot(const std::string& command);
    /// Without a terminal. @param command for a shell.
    static CommandResult asTester(const std::string& command);
    /// In a session of the user's, on a terminal, where a secret is typed in at each question for it.
    /// @param output of the result also holds what was shown there.
    static CommandResult onTerminal(
        const std::string& command, const std::string& question, const std::string& answer);

    /// Process of the agent, from launchctl; 0 while there is none.
    static pid_t agentProcess();

    static const std::filesystem::path volume;
    static const std::filesystem::path bundle;
    static const std::filesystem::path driver; ///< where it is installed
    static const std::filesystem::path agent; ///< where it is installed

private:
    void start(const std::vector<std::string>& command, const std::string& log);

    std::vector<pid_t> fServices;
};

/// With the package installed.
class InstalledSystem : public System {
protected:
    InstalledSystem();
};

/// @return whether the condition came true within a minute.
bool Eventually(const std::function<bool()>& condition);

std::string Contents(const std::filesystem::path& file);
