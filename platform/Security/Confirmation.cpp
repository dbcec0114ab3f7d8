#include "Confirmation.h"

#include <Host/HostPath.h>
#include <Host/ProgramStart.h>

#include <array>
#include <cerrno>
#include <climits>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

/// How the agent ends.
constexpr int kAllowed = 0;
constexpr int kRefused = 1;

/// What the user knows this program by: its bundle's name where it runs from one, else its own.
std::string ProgramName()
{
    constexpr std::string_view bundleEnding = ".app/Contents/MacOS";
    std::array<char, PATH_MAX> link {};
    (void)!readlink("/proc/self/exe", link.data(), link.size() - 1);
    const std::string path = link.data();
    const size_t slash = path.rfind('/');
    const std::string folder = path.substr(0, slash);
    if (slash == std::string::npos || !folder.ends_with(bundleEnding))
        return path.substr(slash + 1);
    const std::string bundle = folder.substr(0, folder.size() - bundleEnding.size());
    return bundle.substr(bundle.rfind('/') + 1);
}

/// @return the exit status, or -1 when it did not come to one.
int Run(const std::string& program, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), program);
    pid_t child = 0;
    int status = 0;
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, PointersTo(arguments).data(), environ) != 0)
        return -1;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}

Confirmation AskForConfirmation()
{
    switch (Run(HostToolsFolder() + "/SecurityAgent", { ProgramName() })) {
    case kAllowed:
        return Confirmation::given;
    case kRefused:
        return Confirmation::refused;
    default:
        return Confirmation::impossible;
    }
}
