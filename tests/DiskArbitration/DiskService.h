#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <string>
#include <systemd/sd-bus.h>
#include <thread>
#include <vector>

/// In place of the host's disk service.
class DiskService {
public:
    /// Appends the answer to a question for all objects. @return as sd_bus_message_append().
    using Answer = std::function<int(sd_bus_message*)>;

    /// @param answer empty for none at all.
    DiskService(const std::string& bus, Answer answer)
        : fAnswer(std::move(answer))
    {
        EXPECT_GE(sd_bus_new(&fBus), 0);
        EXPECT_GE(sd_bus_set_address(fBus, bus.c_str()), 0);
        EXPECT_GE(sd_bus_set_bus_client(fBus, 1), 0);
        EXPECT_GE(sd_bus_start(fBus), 0);
        EXPECT_GE(sd_bus_add_filter(fBus, nullptr, OnCall, this), 0);
        EXPECT_GE(sd_bus_request_name(fBus, "org.freedesktop.UDisks2", 0), 0);
        fThread = std::thread([this] {
            while (!fEnds) {
                if (sd_bus_process(fBus, nullptr) == 0)
                    sd_bus_wait(fBus, 10000);
            }
        });
    }
    DiskService(const DiskService&) = delete;
    DiskService& operator=(const DiskService&) = delete;
    ~DiskService()
    {
        fEnds = true;
        fThread.join();
        sd_bus_flush_close_unref(fBus);
    }

    int calls() const { return fCalls; } ///< questions for all objects

    /// From now on a method is refused with that error, "" for none, or gets no answer, "-".
    void answer(const std::string& method, const std::string& error)
    {
        const std::lock_guard lock(fMutex);
        fErrors[method] = error;
    }

    /// From now on all methods take that long.
    void take(std::chrono::seconds time) { fTime = time; }

    /// Waits until this many other calls have come. @return all of them since the last time, as "sda1 Mount options=ro",
    /// in their order; "!" before one in which the user may be asked for nothing.
    std::vector<std::string> asked(size_t count)
    {
        std::unique_lock lock(fMutex);
        fNews.wait_for(lock, std::chrono::seconds(20), [&] { return fAsked.size() >= count; });
        return std::exchange(fAsked, {});
    }

private:
    static int OnCall(sd_bus_message* call, void* service, sd_bus_error*)
    {
        auto& self = *static_cast<DiskService*>(service);
        uint8_t type = 0;
        if (sd_bus_message_get_type(call, &type) < 0 || type != SD_BUS_MESSAGE_METHOD_CALL)
            return 0;
        if (sd_bus_message_is_method_call(call, nullptr, "GetManagedObjects") <= 0)
            return self.answerCall(call);
        ++self.fCalls;
        sd_bus_message* reply = nullptr;
        if (self.fAnswer && sd_bus_message_new_method_return(call, &reply) >= 0 && self.fAnswer(reply) >= 0)
            sd_bus_send(nullptr, reply, nullptr);
        sd_bus_message_unref(reply);
        return 1;
    }

    int answerCall(sd_bus_message* call)
    {
        std::this_thread::sleep_for(fTime.load());
        const std::lock_guard lock(fMutex);
        fAsked.push_back(textOf(call));
        fNews.notify_all();
        const std::string error = fErrors[sd_bus_message_get_member(call)];
        if (error.empty())
            return sd_bus_reply_method_return(call, nullptr);
        return error == "-" ? 1 : sd_bus_reply_method_errorf(call, error.c_str(), "It does not work.");
    }

    static std::string textOf(sd_bus_message* call)
    {
        const std::string path = sd_bus_message_get_path(call);
        std::string text = sd_bus_message_get_allow_interactive_authorization(call) > 0 ? "" : "!";
        text += path.substr(path.rfind('/') + 1) + ' ' + sd_bus_message_get_member(call);
        const char* value = nullptr;
        if (sd_bus_message_has_signature(call, "sa{sv}") > 0 && sd_bus_message_read(call, "s", &value) > 0)
            text.append(" ").append(value);
        EXPECT_GT(sd_bus_message_enter_container(call, 'a', "{sv}"), 0) << text;
        while (sd_bus_message_enter_container(call, 'e', "sv") > 0) {
            const char* name = nullptr;
            int flag = 0;
            sd_bus_message_read(call, "s", &name);
            if (sd_bus_message_read(call, "v", "s", &value) <= 0)
                value = sd_bus_message_read(call, "v", "b", &flag) > 0 && flag != 0 ? "true" : "?";
            text.append(" ").append(name).append("=").append(value);
            sd_bus_message_exit_container(call);
        }
        return text;
    }

    sd_bus* fBus = nullptr;
    Answer fAnswer;
    std::thread fThread;
    std::atomic<bool> fEnds = false;
    std::atomic<int> fCalls = 0;
    std::atomic<std::chrono::seconds> fTime = std::chrono::seconds(0);
    std::mutex fMutex {};
    std::condition_variable fNews {};
    std::map<std::string, std::string> fErrors {};
    std::vector<std::string> fAsked {};
};
