#include "tests/support/Installer.h"

#include "util/Launch.h"

#include <Host/HostPath.h>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>

namespace fs = std::filesystem;

Installer::Installer(const TestVolume& volume)
    : fBundle(volume.root().parent_path() / "ZEK Velmora Installer.app")
{
    fs::copy(INSTALLER_BUNDLE, fBundle, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    unsetenv("CFProcessPath"); // a program that runs from its bundle needs none
}

int Installer::run(const std::string& arguments, const std::string& errors, const std::string& wrapper)
{
    output.clear();
    const std::string command = wrapper + " '" + (bundle() / "Contents/MacOS/zek-velmora-installer").string()
        + "' " + arguments + " 2>" + errors;
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return -1;
    std::array<char, 4096> buffer {};
    while (const size_t count = fread(buffer.data(), 1, buffer.size(), pipe))
        output.append(buffer.data(), count);
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

fs::path Installer::bundle() const { return fBundle; }

pid_t Installer::agentProcess()
{
    constexpr std::string_view key = "\"PID\" = ";
    const auto listing = OutputOfProgram(HostPath("/bin/launchctl"), { "list", "com.zek.Velmora" });
    const size_t at = listing ? listing->find(key) : std::string::npos;
    return at == std::string::npos
        ? 0
        : static_cast<pid_t>(std::strtol(listing->c_str() + at + key.size(), nullptr, 10));
}

std::optional<std::string> Installer::launchctl(const std::string& verb, const TestVolume& volume)
{
    return OutputOfProgram(HostPath("/bin/launchctl"), { verb, volume.launchAgent().string() });
}
