#include "MacTool.h"

#include <Host/HostPath.h>
#include <Host/ProgramStart.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A file without a name that takes what a program writes.
class Output {
public:
    Output()
        : fFile(open("/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600))
    {
    }
    ~Output() { close(fFile); }
    int descriptor() const { return fFile; }
    std::string text() const
    {
        std::string all(static_cast<size_t>(lseek(fFile, 0, SEEK_END)), '\0');
        return pread(fFile, all.data(), all.size(), 0) >= 0 ? all : "";
    }

private:
    int fFile;
};

}

ToolRun RunMacTool(const std::string& macPath, const std::vector<std::string>& arguments)
{
    const std::string program = HostPath(macPath);
    std::vector<std::string> texts { macPath.substr(macPath.rfind('/') + 1) };
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    const std::vector<char*> pointers = PointersTo(texts);
    const Output out;
    const Output error;
    const pid_t child = fork();
    if (child == 0) {
        dup2(out.descriptor(), STDOUT_FILENO);
        dup2(error.descriptor(), STDERR_FILENO);
        execv(program.c_str(), pointers.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return { WIFEXITED(status) ? WEXITSTATUS(status) : -1, out.text(), error.text() };
}
