#include "Agent.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int kPatience = 10000; // milliseconds

}

Agent::Agent(const char* variable, const std::string& value)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* const name :
        { "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "SECURITY_AGENT_ANSWER" })
        environment.remove(name);
    environment.insert("LC_ALL", "en_US.UTF-8");
    environment.insert("CFFIXED_USER_HOME", "/nonexistent");
    environment.insert("ZEK_STARTUP_VOLUME", "/volume");
    // Sanitizers take offence at the X libraries, whose texts end with their buffers.
    environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") + ":strict_string_checks=0");
    environment.insert(variable, QString::fromStdString(value));
    setProcessEnvironment(environment);
    setChildProcessModifier([] { setsid(); });
}

Agent::~Agent()
{
    kill();
    waitForFinished();
}

void Agent::startFor(const char* name) { start(SECURITY_AGENT, { QString::fromUtf8(name) }); }

int Agent::exitStatus()
{
    const bool hasEnded = state() == NotRunning || waitForFinished(kPatience);
    return hasEnded && QProcess::exitStatus() == NormalExit ? exitCode() : -1;
}

Terminal::Terminal(const char* variable, const std::string& value)
    : agent(variable, value)
{
    EXPECT_EQ(openpty(&fUser, &fProgram, nullptr, nullptr, nullptr), 0);
    fcntl(fUser, F_SETFD, FD_CLOEXEC);
    agent.setChildProcessModifier([this] {
        setsid();
        ioctl(fProgram, TIOCSCTTY, 0);
    });
}

Terminal::~Terminal()
{
    close(fUser);
    close(fProgram);
}

void Terminal::type(const std::string& keys, size_t questions)
{
    while (this->questions() < questions && read())
        continue;
    EXPECT_GE(this->questions(), questions) << fSeen;
    EXPECT_EQ(write(fUser, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

const std::string& Terminal::seen()
{
    agent.exitStatus();
    close(fProgram); // now the last one, which ends what is to be read
    fProgram = -1;
    while (read())
        continue;
    return fSeen;
}

size_t Terminal::questions() const
{
    size_t count = 0;
    for (size_t at = fSeen.find("/N] "); at != std::string::npos; at = fSeen.find("/N] ", at + 1))
        ++count;
    return count;
}

bool Terminal::read()
{
    pollfd output { fUser, POLLIN, 0 };
    char buffer[1024];
    if (poll(&output, 1, kPatience) != 1)
        return false;
    const ssize_t count = ::read(fUser, buffer, sizeof(buffer));
    if (count <= 0)
        return false;
    fSeen.append(buffer, static_cast<size_t>(count));
    return true;
}

Screen::Screen()
{
    fServer.start(
        "Xvfb", { "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset" });
    EXPECT_TRUE(fServer.waitForReadyRead(kPatience));
    fDisplay = ':' + fServer.readLine().trimmed().toStdString();
}

Screen::~Screen()
{
    fServer.terminate();
    fServer.waitForFinished();
}

bool Screen::xdotool(const QString& what) const
{
    const QString command = "DISPLAY=%1 timeout 20 xdotool %2";
    return QProcess::execute("/bin/sh", { "-c", command.arg(QString::fromStdString(fDisplay), what) }) == 0;
}
