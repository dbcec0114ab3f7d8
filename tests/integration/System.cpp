#include "tests/integration/System.h"

#include <Host/ProgramStart.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <pty.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

const fs::path System::home = "/home/tester";
const fs::path System::volume = "/var/lib/zek-velmora-installer/startup-volume";
const fs::path System::bundle = "/usr/lib/zek-velmora-installer/ZEK Velmora Installer.app";
const fs::path System::driver = volume / "Library/Extensions/ZEKDockChargingSupport.kext";
const fs::path System::agent = home / "Library/Application Support/ZEK Velmora/ZEK Velmora.app";

namespace {

constexpr int kPatience = 60000; // milliseconds
constexpr const char* kSessions = "/run/systemd/sessions";
constexpr const char* kLoginManagerLog = "/tmp/login-manager.log";

fs::path RuntimeFolder() { return "/run/user/" + std::to_string(getpwnam("tester")->pw_uid); }

int ExitStatus(int waitStatus)
{
    return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : 128 + WTERMSIG(waitStatus);
}

CommandResult Outcome(const std::string& command)
{
    CommandResult run { -1, {} };
    FILE* const pipe = popen(("{ " + command + "; } 2>&1").c_str(), "r");
    if (pipe == nullptr)
        return run;
    char buffer[4096];
    while (const size_t count = fread(buffer, 1, sizeof buffer, pipe))
        run.output.append(buffer, count);
    run.status = ExitStatus(pclose(pipe));
    return run;
}

/// In single quotes, for a shell.
std::string Quoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char each : text)
        quoted += each == '\'' ? std::string("'\\''") : std::string(1, each);
    return quoted + '\'';
}

/// @return a shell's command that runs this one as the user.
std::string AsTester(const std::string& command)
{
    return "cd / && exec setpriv --reuid tester --regid tester --init-groups env -i HOME="
        + System::home.string()
        + " USER=tester LOGNAME=tester PATH=/usr/bin:/bin SHELL=/bin/bash XDG_RUNTIME_DIR="
        + RuntimeFolder().string() + " sh -c " + Quoted(command);
}

/// Writes down a session of the user's as the system's login manager does. @return its cgroup.
fs::path MakeSession()
{
    const std::string user = std::to_string(getpwnam("tester")->pw_uid);
    std::ofstream(fs::path(kSessions) / "c1")
        << "UID=" << user << "\nUSER=tester\nACTIVE=1\nSTATE=active\nREMOTE=1\n"
        << "TYPE=tty\nCLASS=user\nSCOPE=session-c1.scope\n";
    fs::path group = "/sys/fs/cgroup/user.slice/user-" + user + ".slice/session-c1.scope";
    fs::create_directories(group);
    return group;
}

/// Whoever asks for a secret first asks, then turns the echo off and throws away what has been typed by then.
bool HidesInput(int terminal)
{
    termios state {};
    return tcgetattr(terminal, &state) == 0 && (state.c_lflag & ECHO) == 0;
}

bool IsOnSystemBus(const std::string& name)
{
    return Outcome("dbus-send --system --print-reply --dest=org.freedesktop.DBus / "
                   "org.freedesktop.DBus.GetNameOwner string:"
               + name)
               .status
        == 0;
}

}

System::System()
{
    // polkit watches these from its start on.
    for (const char* folder :
        { kSessions, "/run/systemd/seats", "/run/systemd/users", "/run/systemd/machines" })
        fs::create_directories(folder);
    start({ "dbus-daemon", "--system", "--nofork", "--nopidfile" }, "/tmp/system-bus.log");
    EXPECT_TRUE(Eventually([] { return IsOnSystemBus("org.freedesktop.DBus"); }));
}

System::~System()
{
    for (const pid_t service : fServices) {
        kill(service, SIGTERM);
        waitpid(service, nullptr, 0);
    }
}

void System::start(const std::vector<std::string>& command, const std::string& log)
{
    std::vector<std::string> arguments = command;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(
        &actions, STDOUT_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t service = 0;
    EXPECT_EQ(posix_spawnp(&service, arguments.front().c_str(), &actions, nullptr,
                  PointersTo(arguments).data(), environ),
        0)
        << command.front();
    posix_spawn_file_actions_destroy(&actions);
    fServices.push_back(service);
}

void System::startPolkit()
{
    start({ "/usr/lib/polkit-1/polkitd", "--no-debug" }, "/tmp/polkit.log");
    EXPECT_TRUE(Eventually([] { return IsOnSystemBus("org.freedesktop.PolicyKit1"); }));
}

void System::letPolkitAnswer(const std::string& result)
{
    std::ofstream("/tmp/answer") << result;
    const fs::path rules = "/etc/polkit-1/rules.d/10-test.rules";
    if (fs::exists(rules))
        return;
    std::ofstream(rules) << "polkit.addRule(function(action, subject) {"
                            " if (action.id == 'com.zek.Velmora.system.privilege.admin'"
                            " || action.id == 'org.freedesktop.policykit.exec')"
                            " return polkit.Result[polkit.spawn(['/bin/cat', '/tmp/answer'])]; });";
    startPolkit();
}

void System::startLoginManager()
{
    start({ "/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind", "--logfile",
              kLoginManagerLog },
        "/dev/null");
    EXPECT_TRUE(Eventually([] { return IsOnSystemBus("org.freedesktop.login1"); }));
}

std::string System::askedOfLoginManager() { return Contents(kLoginManagerLog); }

void System::startUserManager()
{
    start({ AS_USER, "sleep", "infinity" }, "/tmp/user-session.log");
    EXPECT_TRUE(
        Eventually([] { return asTester("systemctl --user is-system-running --quiet").status == 0; }));
}

CommandResult System::asRoot(const std::string& command) { return Outcome(command); }

CommandResult System::asTester(const std::string& command)
{
    return Outcome("setsid --wait sh -c " + Quoted(AsTester(command)));
}

CommandResult System::onTerminal(
    const std::string& command, const std::string& question, const std::string& answer)
{
    const fs::path session = MakeSession();
    const std::string inSession
        = "echo $$ >" + (session / "cgroup.procs").string() + " && " + AsTester(command);
    CommandResult result { -1, {} };
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", inSession.c_str(), nullptr);
        _exit(127);
    }
    pollfd readable { terminal, POLLIN, 0 };
    char buffer[4096];
    ssize_t count = 0;
    for (size_t answered = 0;
         poll(&readable, 1, kPatience) > 0 && (count = read(terminal, buffer, sizeof buffer)) > 0;) {
        result.output.append(buffer, static_cast<size_t>(count));
        if (result.output.find(question, answered) == std::string::npos)
            continue;
        answered = result.output.size();
        EXPECT_TRUE(Eventually([terminal] { return HidesInput(terminal); }));
        EXPECT_GT(write(terminal, (answer + '\n').data(), answer.size() + 1), 0);
    }
    close(terminal); // which hangs up, should it still run
    int status = 0;
    waitpid(child, &status, 0);
    result.status = ExitStatus(status);
    return result;
}

pid_t System::agentProcess()
{
    constexpr std::string_view key = "\"PID\" = ";
    const std::string listing
        = asTester("/usr/lib/zek-velmora-installer/mac-tools/launchctl list com.zek.Velmora").output;
    const size_t at = listing.find(key);
    return at == std::string::npos
        ? 0
        : static_cast<pid_t>(std::strtol(listing.c_str() + at + key.size(), nullptr, 10));
}

InstalledSystem::InstalledSystem()
{
    const CommandResult installation = asRoot("dpkg -i " PACKAGES_FOLDER "/zek-velmora-installer_*.deb");
    EXPECT_EQ(installation.status, 0) << installation.output;
}

bool Eventually(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatience);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

std::string Contents(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}
