#pragma once

#include "tests/support/RegistryTest.h"
#include "tests/support/TestVolume.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

/// A throw-away Mac whose tools a test can replace. The test's own files lie in `folder()`.
class UtilityTest : public RegistryTest {
protected:
    UtilityTest() { setenv("RECORD_ARGUMENT_ZERO", "1", 1); }

    std::filesystem::path folder() const { return fVolume.root() / "private/tmp"; }
    std::string path(const std::string& name) const { return folder() / name; }

    /// Puts a shell script into the place of a Mac's tool.
    void plant(const std::string& tool, const std::string& script)
    {
        const std::filesystem::path file = fVolume.root() / tool.substr(1);
        TestVolume::write(file, "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(file, std::filesystem::perms(0755));
    }
    /// Puts something into its place that cannot be executed.
    void spoil(const std::string& tool) { TestVolume::write(fVolume.root() / tool.substr(1), ""); }

    /// What `call` answers in the copy of this process that comes back from it, where a tool could not be executed.
    static int answerOfCopy(const std::function<int()>& call)
    {
        int ends[2] = {};
        EXPECT_EQ(pipe(ends), 0);
        const pid_t self = getpid();
        const int answer = call();
        if (getpid() != self) {
            (void)!write(ends[1], &answer, sizeof answer);
            _exit(0);
        }
        int copys = -1;
        close(ends[1]);
        EXPECT_EQ(read(ends[0], &copys, sizeof copys), ssize_t { sizeof copys }) << "no copy came back";
        close(ends[0]);
        return copys;
    }

    /// What `body` answers in a child of its own.
    static int inChild(const std::function<int()>& body)
    {
        const pid_t child = fork();
        if (child == 0)
            _exit(body());
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    TestVolume fVolume {};
};
