// Appends its arguments, one a line, and an empty line to the file "calls" in the start-up volume; argument zero before them
// where RECORD_ARGUMENT_ZERO is set. One write, so that two recorders at the same time do not mix.

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

int main(int argc, char* argv[])
{
    const char* const volume = std::getenv("ZEK_STARTUP_VOLUME");
    if (volume == nullptr)
        return 1;
    std::string lines;
    for (int i = std::getenv("RECORD_ARGUMENT_ZERO") != nullptr ? 0 : 1; i < argc; ++i)
        lines += std::string(argv[i]) + "\n";
    lines += "\n";
    const int file = open((std::string(volume) + "/calls").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    const bool written = write(file, lines.data(), lines.size()) == static_cast<ssize_t>(lines.size());
    return written ? 0 : 1;
}
