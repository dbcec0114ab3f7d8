#pragma once

#include "tests/support/MessageBus.h"

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>
#include <utility>

/// A session bus of its own in `folder`, named by the environment.
class SessionBus {
public:
    explicit SessionBus(const std::string& folder)
        : fBus(folder + "/bus")
    {
        setenv("DBUS_SESSION_BUS_ADDRESS", fBus.address().c_str(), 1);
    }

private:
    MessageBus fBus;
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
