#include "SupervisorStart.h"

#include <Host/Descriptor.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>

namespace launchd {

namespace {
constexpr int noticePlace = STDERR_FILENO + 1;
constexpr std::chrono::seconds patience { 10 };

void Give(int notice, const std::string& text)
{
    // When even this fails, the reader sees that there was no notice.
    [[maybe_unused]] const ssize_t written = write(notice, text.data(), text.size());
}

[[noreturn]] void Become(const std::string& program, int notice)
{
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    // Clear of the standard descriptors, whatever this program had.
    notice = fcntl(notice, F_DUPFD, noticePlace);
    for (const int standard : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO })
        dup2(nothing, standard);
    dup2(notice, noticePlace);
    close_range(noticePlace + 1, ~0U, 0);
    if (chdir("/") == 0)
        execl(program.c_str(), "launchd", "--notify", std::to_string(noticePlace).c_str(), nullptr);
    Give(noticePlace, program + ": " + std::strerror(errno));
    _exit(1);
}

/// Forks twice, so that the supervisor is nobody's child who would have to wait for it, and can never come by
/// a controlling terminal.
bool StartDetached(const std::string& program, int notice)
{
    const pid_t child = fork();
    if (child < 0)
        return false;
    if (child == 0) {
        setsid();
        const pid_t supervisor = fork();
        if (supervisor == 0)
            Become(program, notice);
        _exit(supervisor > 0 ? 0 : 1);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string ReadNotice(int descriptor)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    std::string notice;
    for (;;) {
        const auto left
            = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd readable { descriptor, POLLIN, 0 };
        if (left.count() <= 0 || poll(&readable, 1, static_cast<int>(left.count())) == 0)
            return "launchd took too long to start";
        char piece[512];
        const ssize_t size = read(descriptor, piece, sizeof piece);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return notice.empty() ? "launchd ended while it started" : notice;
        notice.append(piece, static_cast<size_t>(size));
    }
}
}

std::string StartSupervisor()
{
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    int ends[2];
    if (error || pipe2(ends, O_CLOEXEC) != 0)
        return std::string("launchd could not be started: ") + std::strerror(error ? error.value() : errno);
    const Descriptor reader(ends[0]);
    Descriptor writer(ends[1]);
    if (!StartDetached(self.parent_path() / "launchd", writer.get()))
        return std::string("launchd could not be started: no process could be made for it");
    writer.close(); // or the end of the notice would never come
    return ReadNotice(reader.get());
}

} // namespace launchd
