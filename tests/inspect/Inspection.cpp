#include "tests/inspect/Inspection.h"

#include "util/Launch.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// In the child: runs the program with its output in two files.
[[noreturn]] void Become(std::vector<std::string> arguments, const std::string& out, const std::string& error)
{
    arguments.insert(arguments.begin(), VELMORA_INSPECT);
    std::vector<char*> values(arguments.size() + 1);
    std::transform(arguments.begin(), arguments.end(), values.begin(),
        [](std::string& argument) { return argument.data(); });
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
    dup2(open(out.c_str(), flags, 0600), STDOUT_FILENO);
    dup2(open(error.c_str(), flags, 0600), STDERR_FILENO);
    execv(values[0], values.data());
    _exit(127);
}

}

InspectTest::Run InspectTest::run(const std::vector<std::string>& arguments) const
{
    const std::string out = fVolume.root() / "output";
    const std::string error = fVolume.root() / "error";
    const pid_t child = fork();
    if (child == 0)
        Become(arguments, out, error);
    int status = 0;
    waitpid(child, &status, 0);
    return { WIFEXITED(status) ? WEXITSTATUS(status) : -1, TestVolume::read(out), TestVolume::read(error) };
}

std::string InspectTest::inspect(const std::vector<std::string>& arguments) const
{
    const Run done = run(arguments);
    return done.status == 0 ? done.out : "failed";
}

std::string InspectTest::ask(const std::vector<std::string>& arguments, const std::string& question) const
{
    const std::filesystem::path file = fVolume.root() / "output.json";
    TestVolume::write(file, run(arguments).out);
    return OutputOfProgram("/usr/bin/python3",
        { "-c", "import json, sys\nfound = json.load(open(sys.argv[1]))\nprint(" + question + ")", file })
        .value_or("no JSON");
}
