#pragma once

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>
#include <utility>

/// A session bus of its own in `folder`, named by the environment. It starts no services.
class SessionBus {
public:
    explicit SessionBus(const std::string& folder)
    {
        const std::string address = "unix:path=" + folder + "/bus";
        const std::string configuration = folder + "/bus.conf";
        std::ofstream(configuration) << "<busconfig><type>session</type><listen>" + address
                + "</listen><policy context='default'><allow send_destination='*' eavesdrop='true'/>"
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
        setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;
    ~SessionBus()
    {
        if (fDaemon > 0 && kill(fDaemon, SIGTERM) == 0)
            waitpid(fDaemon, nullptr, 0);
    }

private:
    pid_t fDaemon = -1;
};

/// Appends what stands where a setting's value belongs. @return as sd_bus_message_append().
using Value = std::function<int(sd_bus_message*)>;

/// A choice as the signal has it.
inline Value Number(uint32_t value)
{
    return [value](sd_bus_message* message) { return sd_bus_message_append(message, "v", "u", value); };
}

/// A choice as the portal answers: in another variant.
inline Value Answer(uint32_t value)
{
    return [value](sd_bus_message* message) { return sd_bus_message_append(message, "v", "v", "u", value); };
}

/// The settings portal of a desktop, on the bus that the environment names.
class Portal {
public:
    /// @param answer to Read; empty to leave the question open until answer() is called.
    explicit Portal(Value answer)
        : fAnswer(std::move(answer))
    {
        EXPECT_GE(sd_bus_open_user(&fBus), 0);
        EXPECT_GE(sd_bus_add_object(fBus, nullptr, kPath, OnCall, this), 0);
        EXPECT_GE(sd_bus_request_name(fBus, "org.freedesktop.portal.Desktop", 0), 0);
    }
    Portal(const Portal&) = delete;
    Portal& operator=(const Portal&) = delete;
    ~Portal()
    {
        sd_bus_message_unref(fQuestion);
        sd_bus_flush_close_unref(fBus);
    }

    bool asked() const { return fQuestion != nullptr; }
    void process()
    {
        while (sd_bus_process(fBus, nullptr) > 0) { }
    }
    /// Answers the last question.
    void answer(const Value& value)
    {
        sd_bus_message* reply = nullptr;
        ASSERT_GE(sd_bus_message_new_method_return(fQuestion, &reply), 0);
        Send(reply, value);
    }
    void announce(const Value& value, const char* group = "org.freedesktop.appearance",
        const char* key = "color-scheme")
    {
        sd_bus_message* signal = nullptr;
        ASSERT_GE(sd_bus_message_new_signal(fBus, &signal, kPath, kSettings, "SettingChanged"), 0);
        EXPECT_GE(sd_bus_message_append(signal, "ss", group, key), 0);
        Send(signal, value);
    }

private:
    static constexpr const char* kPath = "/org/freedesktop/portal/desktop";
    static constexpr const char* kSettings = "org.freedesktop.portal.Settings";

    static void Send(sd_bus_message* message, const Value& value)
    {
        EXPECT_GE(value(message), 0);
        EXPECT_GE(sd_bus_send(nullptr, message, nullptr), 0);
        sd_bus_message_unref(message);
    }
    static int OnCall(sd_bus_message* call, void* portal, sd_bus_error*)
    {
        const char* group = nullptr;
        const char* key = nullptr;
        if (sd_bus_message_is_method_call(call, kSettings, "Read") <= 0
            || sd_bus_message_read(call, "ss", &group, &key) <= 0
            || std::string_view(group) != "org.freedesktop.appearance"
            || std::string_view(key) != "color-scheme")
            return 0; // which answers that there is no such method
        auto& self = *static_cast<Portal*>(portal);
        sd_bus_message_unref(std::exchange(self.fQuestion, sd_bus_message_ref(call)));
        if (self.fAnswer)
            self.answer(self.fAnswer);
        return 1;
    }

    sd_bus* fBus = nullptr;
    sd_bus_message* fQuestion = nullptr;
    Value fAnswer;
};
