// dismissing_agent COMMAND [ARGUMENT...]: becomes the command, for which somebody closes each dialog of polkit's that asks for
// a password.

#include <csignal>
#include <cstdio>
#include <map>
#include <sdbus-c++/sdbus-c++.h>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>
#include <vector>

namespace {

using Facts = std::map<std::string, sdbus::Variant>;
using Identity = sdbus::Struct<std::string, Facts>;

constexpr const char* kPath = "/agent";

/// @param ready closed when the agent of the process is registered.
[[noreturn]] void Serve(pid_t process, int ready)
{
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const auto bus = sdbus::createSystemBusConnection();
    const auto agent = sdbus::createObject(*bus, kPath);
    agent->registerMethod("BeginAuthentication")
        .onInterface("org.freedesktop.PolicyKit1.AuthenticationAgent")
        .implementedAs(
            [](const std::string&, const std::string&, const std::string&,
                const std::map<std::string, std::string>&, const std::string&, const std::vector<Identity>&) {
                throw sdbus::Error("org.freedesktop.PolicyKit1.Error.Cancelled", "dismissed");
            });
    agent->registerMethod("CancelAuthentication")
        .onInterface("org.freedesktop.PolicyKit1.AuthenticationAgent")
        .implementedAs([](const std::string&) {});
    agent->finishRegistration();

    const Identity subject { "unix-process",
        { { "pid", sdbus::Variant(static_cast<uint32_t>(process)) },
            { "start-time", sdbus::Variant(uint64_t { 0 }) } } };
    sdbus::createProxy(*bus, "org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority")
        ->callMethod("RegisterAuthenticationAgent")
        .onInterface("org.freedesktop.PolicyKit1.Authority")
        .withArguments(subject, std::string("C"), std::string(kPath));
    close(ready);
    bus->enterEventLoop();
    _exit(0);
}

}

int main(int argc, char** argv)
{
    int ready[2];
    if (argc < 2 || pipe(ready) != 0)
        return 64;
    const pid_t process = getpid();
    if (fork() == 0) {
        close(ready[0]);
        Serve(process, ready[1]);
    }
    close(ready[1]);
    char nothing = 0;
    (void)!read(ready[0], &nothing, 1);
    execvp(argv[1], argv + 1);
    std::perror(argv[1]);
    return 127;
}
