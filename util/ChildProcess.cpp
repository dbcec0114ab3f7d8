#include "util/ChildProcess.h"

#include "util/Pipe.h"

#include <Host/HostPath.h>
#include <Host/ProgramStart.h>
#include <cerrno>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

ChildEnd WaitFor(pid_t child)
{
    ChildEnd end { .wasForked = true };
    do
        end.process = waitpid(child, &end.status, 0);
    while (end.process < 0 && errno == EINTR);
    return end;
}

}

bool ChildEnd::failedByItself() const { return isKnown() && WIFEXITED(status) && WEXITSTATUS(status) != 0; }

ChildEnd RunTool(const ToolCall& call)
{
    // All that the child needs, made before there is one.
    const std::string path = HostPath(call.tool);
    std::vector<std::string> texts = call.arguments;
    const std::vector<char*> arguments = PointersTo(texts);

    const pid_t child = fork();
    if (child < 0)
        return {};
    if (child == 0) {
        if (call.prepare)
            call.prepare();
        execv(path.c_str(), arguments.data());
        if (call.endsWithoutTool)
            _exit(0);
        return { .isChild = true };
    }
    if (call.attend)
        call.attend();
    return WaitFor(child);
}

ChildEnd RunToolReading(const ToolCall& call, const std::function<void(int output)>& read)
{
    Pipe output;
    if (!output.open())
        return {};
    ToolCall whole = call;
    whole.prepare = [&] {
        output.closeReadEnd(); // first: it may have standard output's number
        MakeStandardOutput(output.writeEnd());
        if (call.prepare)
            call.prepare();
    };
    whole.attend = [&] {
        output.closeWriteEnd();
        read(output.readEnd());
        output.closeReadEnd();
    };
    return RunTool(whole);
}

void MakeStandardOutput(int descriptor)
{
    if (descriptor == STDOUT_FILENO)
        fcntl(descriptor, F_SETFD, 0); // it is to stay open in the tool
    else
        dup2(descriptor, STDOUT_FILENO);
}

ChildEnd RunInChild(const std::function<void()>& work)
{
    const pid_t child = fork();
    if (child < 0)
        return {};
    if (child == 0) {
        work();
        _exit(0);
    }
    return WaitFor(child);
}
