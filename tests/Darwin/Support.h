#pragma once

#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

constexpr uid_t kStranger = 65534;

inline size_t EntryCount(const std::string& folder)
{
    return static_cast<size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

/// Runs the body, with its expectations, in a process of its own, which may then limit or give up what it
/// has.
inline void InChild(const std::function<void()>& body)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        body();
        (void)std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "see what the child process printed";
}

/// The same as an ordinary user. Needs root.
inline void AsStranger(const std::function<void()>& body)
{
    InChild([&body] {
        ASSERT_TRUE(setgid(kStranger) == 0 && setuid(kStranger) == 0);
        body();
    });
}

/// @return whether the condition came true within ten seconds.
inline bool Eventually(const std::function<bool()>& condition)
{
    for (int i = 0; i < 1000 && !condition(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return condition();
}
