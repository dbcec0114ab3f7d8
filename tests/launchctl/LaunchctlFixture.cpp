#include "LaunchctlFixture.h"

#include "platform/tools/launchd/supervisor/RuntimeFolder.h"

#include <Host/ProgramStart.h>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

namespace fs = std::filesystem;

bool Eventually(const std::function<bool()>& question)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < deadline) {
        if (question())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return question();
}

bool IsAlive(pid_t process)
{
    waitpid(process, nullptr, WNOHANG);
    return kill(process, 0) == 0;
}

std::string Contents(const fs::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

void Write(const fs::path& file, const std::string& text)
{
    std::ofstream(file) << text;
    fs::permissions(file, fs::perms(0644));
}

std::string PropertyList(const std::string& keys)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + keys + "</dict></plist>";
}

Launchctl::Launchctl(const fs::path& outputFolder, const std::vector<std::string>& arguments)
{
    static int count = 0;
    fOut = outputFolder / (std::to_string(++count) + ".out");
    fError = outputFolder / (std::to_string(count) + ".error");
    std::vector<std::string> texts = arguments;
    texts.insert(texts.begin(), LAUNCHCTL);
    const std::vector<char*> pointers = PointersTo(texts);

    fProcess = fork();
    if (fProcess != 0)
        return;
    dup2(open(fOut.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDOUT_FILENO);
    dup2(open(fError.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), STDERR_FILENO);
    execv(LAUNCHCTL, pointers.data());
    _exit(127);
}

int Launchctl::status()
{
    int waitStatus = 0;
    if (fProcess <= 0)
        return fStatus;
    if (!Eventually([&] { return waitpid(fProcess, &waitStatus, WNOHANG) == fProcess; })) {
        kill(fProcess, SIGKILL);
        waitpid(fProcess, &waitStatus, 0);
    }
    fProcess = 0;
    fStatus = WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : -1;
    return fStatus;
}

void LaunchctlFixture::SetUp()
{
    // A supervisor that loses its starter comes here, where its end can be waited for.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    std::string folder = fs::temp_directory_path() / "launchctl.XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    fTemporary = folder;
    // Longer than a socket's address may be.
    fVolume = fTemporary / std::string(100, 'v');
    fs::create_directories(fVolume / "Users/somebody/Library/LaunchAgents");
    setenv("ZEK_STARTUP_VOLUME", fVolume.c_str(), 1);
    setenv("CFFIXED_USER_HOME", (fVolume / "Users/somebody").c_str(), 1);
}

void LaunchctlFixture::TearDown()
{
    if (const pid_t process = supervisor(); process != 0) {
        kill(process, SIGTERM);
        EXPECT_TRUE(Eventually([&] { return !IsAlive(process); }));
        kill(process, SIGKILL);
    }
    while (waitpid(-1, nullptr, WNOHANG) > 0) { }
    fs::remove_all(fTemporary);
}

Launchctl LaunchctlFixture::launchctl(const std::vector<std::string>& arguments) const
{
    Launchctl run(fTemporary, arguments);
    run.status();
    return run;
}

std::string LaunchctlFixture::writeJob(
    const std::string& label, const std::string& script, const std::string& keys) const
{
    std::string path = "/Users/somebody/Library/LaunchAgents/" + label + ".plist";
    Write(fVolume / path.substr(1),
        PropertyList("<key>Label</key><string>" + label + "</string><key>ProgramArguments</key><array>"
            + "<string>/bin/sh</string><string>-c</string><string><![CDATA[" + script + "]]></string></array>"
            + "<key>EnvironmentVariables</key><dict><key>NOTE</key><string>" + noteFile(label).string()
            + "</string></dict>" + keys));
    return path;
}

std::vector<std::string> LaunchctlFixture::notes(const std::string& label) const
{
    std::vector<std::string> lines;
    std::istringstream text(Contents(noteFile(label)));
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}

pid_t LaunchctlFixture::load(const std::string& path) const
{
    Launchctl run = launchctl({ "load", path });
    EXPECT_EQ(run.status(), 0) << run.error();
    return notedProcess(fs::path(path).stem(), 1);
}

pid_t LaunchctlFixture::notedProcess(const std::string& label, size_t count) const
{
    if (!Eventually([&] { return notes(label).size() >= count; }))
        return 0;
    return static_cast<pid_t>(std::strtol(notes(label)[count - 1].c_str(), nullptr, 10));
}

Descriptor LaunchctlFixture::connection()
{
    std::string problem;
    const auto folder = launchd::RuntimeFolder::open(problem);
    return folder ? folder->connect() : Descriptor();
}

pid_t LaunchctlFixture::supervisor()
{
    const Descriptor peer = connection();
    ucred credentials {};
    socklen_t size = sizeof credentials;
    return peer && getsockopt(peer.get(), SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0 ? credentials.pid
                                                                                             : 0;
}

fs::path LaunchctlFixture::runtimeFolder() const
{
    return fVolume / ("private/tmp/launchd." + std::to_string(geteuid()));
}
