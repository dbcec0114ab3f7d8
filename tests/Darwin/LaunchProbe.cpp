// launch_probe volume                 prints the start-up volume's folder.
// launch_probe echo                   answers one line from its input with the same line.
// launch_probe report FILE ARG...     writes to FILE how it was started.

#include <Host/HostPath.h>

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int Echo()
{
    std::array<char, 100> line {};
    if (std::fgets(line.data(), line.size(), stdin) == nullptr)
        return 1;
    return std::fputs(line.data(), stdout) < 0 ? 1 : 0;
}

std::string OpenDescriptors()
{
    std::string open;
    for (int i = 0; i < 256; ++i) {
        if (fcntl(i, F_GETFD) >= 0)
            open += ' ' + std::to_string(i);
    }
    return open;
}

bool IsInputEmpty()
{
    char byte = 0;
    return read(STDIN_FILENO, &byte, 1) == 0;
}

/// Under another name first, so that a reader never sees half of it.
int Report(int argc, char** argv)
{
    const std::string file = argv[2];
    const std::string descriptors = OpenDescriptors(); // before the report is one of them
    std::ofstream report(file + ".part");
    report << "descriptors:" << descriptors << "\n";
    report << "empty input: " << IsInputEmpty() << "\n";
    report << "session: " << getsid(0) << "\n";
    report << "user: " << getuid() << ' ' << geteuid() << "\n";
    report << "name: " << argv[0] << "\n";
    for (int i = 3; i < argc; ++i)
        report << "argument: <" << argv[i] << ">\n";
    for (char** variable = environ; *variable != nullptr; ++variable)
        report << "variable: " << *variable << "\n";
    report.close();
    std::filesystem::rename(file + ".part", file);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "volume")
        return std::puts(HostStartupVolume().c_str()) < 0;
    if (mode == "echo")
        return Echo();
    return mode == "report" && argc > 2 ? Report(argc, argv) : 64;
}
