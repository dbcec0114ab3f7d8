#include "util/ChildProcess.h"

#include "util/Pipe.h"

#include <Host/HostPath.h>
#include <Host/ProgramStart.h>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr size_t kPieceSize = 256;

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
    if (child < 0 && call.endsWithoutChild)
        exit(EXIT_FAILURE);
    if (child < 0)
        return {};
    if (child == 0) {
        if (call.prepare)
            call.prepare();
        execv(path.c_str(), arguments.data());
        if (call.statusWithoutTool)
            _exit(*call.statusWithoutTool);
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

std::string ReadPiece(int output, size_t limit)
{
    std::string piece(limit, 0);
    ssize_t count = 0;
    do
        count = read(output, piece.data(), piece.size());
    while (count < 0 && errno == EINTR);
    piece.resize(count > 0 ? static_cast<size_t>(count) : 0);
    return piece;
}

void ReadAndDiscard(int output)
{
    while (!ReadPiece(output, kPieceSize).empty()) { }
}

std::string ReadPieceAndDiscardRest(int output, size_t limit)
{
    std::string piece = ReadPiece(output, limit);
    ReadAndDiscard(output);
    return piece;
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
