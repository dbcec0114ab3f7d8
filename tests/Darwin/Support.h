#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

constexpr uid_t kStranger = 65534;

/// A folder of its own, removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = "/tmp/darwin-test-XXXXXX";
        fPath = mkdtemp(name.data());
        std::filesystem::permissions(fPath, std::filesystem::perms(0755));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(fPath, ignored);
    }

    std::string operator/(const std::string& name) const { return fPath + '/' + name; }
    const std::string& path() const { return fPath; }

private:
    std::string fPath;
};

inline void WriteText(const std::string& file, const std::string& text)
{
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline std::string ReadText(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}

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
