#include "HostTool.h"

#include <Host/ProgramStart.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::array<const char*, 4> kFolders { "/usr/sbin/", "/sbin/", "/usr/bin/", "/bin/" };

std::string PathOf(const HostTool& program)
{
    for (const std::string folder : kFolders) {
        if (access((folder + program.name).c_str(), X_OK) == 0)
            return folder + program.name;
    }
    return {};
}

/// How the program starts: nobody can be asked anything, and interrupts end it whatever the caller does with them.
class Start {
public:
    explicit Start(HostOutput output)
    {
        posix_spawn_file_actions_init(&fActions);
        posix_spawnattr_init(&fAttributes);
        posix_spawn_file_actions_addopen(&fActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (output == HostOutput::Hidden)
            posix_spawn_file_actions_addopen(&fActions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        sigset_t signals;
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&fAttributes, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&fAttributes, &signals);
        posix_spawnattr_setflags(&fAttributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;
    ~Start()
    {
        posix_spawn_file_actions_destroy(&fActions);
        posix_spawnattr_destroy(&fAttributes);
    }

    const posix_spawn_file_actions_t* actions() const { return &fActions; }
    const posix_spawnattr_t* attributes() const { return &fAttributes; }

private:
    posix_spawn_file_actions_t fActions {};
    posix_spawnattr_t fAttributes {};
};

/// @return as waitpid() has it; -1 with errno.
int StatusOf(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return status;
}

}

int RunHostTool(const char* tool, const HostTool& program, const Arguments& arguments, HostOutput output)
{
    const std::string name = program.name;
    const std::string path = PathOf(program);
    if (path.empty())
        return Complain(
            tool, name + ", which does this here, is missing; install the package " + program.package);
    Arguments texts { name };
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    Arguments environment { "LC_ALL=C.UTF-8", "PATH=/usr/sbin:/usr/bin:/sbin:/bin" };
    const Start start(output);
    std::cout.flush(); // what was written before is to come before
    pid_t child = 0;
    const int error = posix_spawn(&child, path.c_str(), start.actions(), start.attributes(),
        PointersTo(texts).data(), PointersTo(environment).data());
    if (error != 0)
        return Complain(tool, path + ": " + std::strerror(error));
    const int status = StatusOf(child);
    if (status < 0)
        return Complain(tool, name + ": " + std::strerror(errno));
    return WIFEXITED(status) ? WEXITSTATUS(status) : Complain(tool, name + " was killed");
}
