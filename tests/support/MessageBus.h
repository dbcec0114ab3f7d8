#pragma once

#include <array>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

/// A message bus of a test's own, at a socket. Beside that lie its configuration, "bus.conf" for a socket "bus", and the
/// folder "bus.services" of what it may start, where there is one.
class MessageBus {
public:
    explicit MessageBus(const std::string& socket)
        : fAddress("unix:path=" + socket)
    {
        const std::string configuration = socket + ".conf";
        std::ofstream(configuration) << "<busconfig><type>session</type><listen>" + fAddress
                + "</listen><servicedir>" + socket
                + ".services</servicedir><policy context='default'><allow send_destination='*' "
                  "eavesdrop='true'/>"
                  "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>";
        std::array<int, 2> ready {};
        EXPECT_EQ(pipe(ready.data()), 0);
        fDaemon = fork();
        if (fDaemon == 0) {
            prctl(PR_SET_PDEATHSIG, SIGTERM); // also when the test program is ended from outside
            const std::string config = "--config-file=" + configuration;
            const std::string print = "--print-address=" + std::to_string(ready[1]);
            execlp("dbus-daemon", "dbus-daemon", config.c_str(), print.c_str(), "--nofork", nullptr);
            _exit(127);
        }
        close(ready[1]);
        char first = 0;
        EXPECT_EQ(read(ready[0], &first, 1), 1) << "the bus did not start";
        close(ready[0]);
    }
    MessageBus(const MessageBus&) = delete;
    MessageBus& operator=(const MessageBus&) = delete;
    ~MessageBus()
    {
        if (fDaemon > 0 && kill(fDaemon, SIGTERM) == 0)
            waitpid(fDaemon, nullptr, 0);
    }

    const std::string& address() const { return fAddress; }

private:
    std::string fAddress;
    pid_t fDaemon = -1;
};
