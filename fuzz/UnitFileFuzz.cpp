// Whatever a job is made of, its unit is refused or holds the lines that it ought to and tells again what it was made of.

#include "platform/tools/launchd/systemd/UnitFile.h"

#include <algorithm>
#include <array>
#include <cstdlib>

using namespace launchd;

namespace {

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

/// The parts between the null characters.
std::vector<std::string> Split(const std::string& bytes)
{
    std::vector<std::string> parts;
    for (size_t begin = 0; begin <= bytes.size();) {
        const size_t end = std::min(bytes.find('\0', begin), bytes.size());
        parts.push_back(bytes.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

JobFile MakeFile(std::vector<std::string> parts)
{
    parts.resize(std::max<size_t>(parts.size(), 8));
    JobFile file;
    file.path = '/' + parts[0];
    file.job.label = "a.job";
    file.job.program = '/' + parts[1];
    file.job.standardOutPath = parts[2].empty() ? "" : '/' + parts[2];
    file.job.workingDirectory = parts[3].empty() ? "" : '/' + parts[3];
    file.job.environment[parts[4] + 'A'] = parts[5];
    file.job.runAtLoad = parts.size() % 2 == 0;
    file.job.arguments.assign(parts.begin() + 7, parts.end());
    return file;
}

/// No value may end its line early and begin one of its own.
void RequireKnownLines(const std::string& text, const JobFile& file)
{
    static constexpr std::array<std::string_view, 4> other = { "# ", "[Unit]", "[Service]", "[Install]" };
    static constexpr std::array<std::string_view, 17> keys
        = { "Description", "SourcePath", "X-Launchd-Program", "X-Launchd-Session", "StartLimitIntervalSec",
              "Type", "ExecStart", "Environment", "StandardOutput", "StandardError", "WorkingDirectory",
              "UMask", "Restart", "RestartSec", "TimeoutStopSec", "KillMode", "WantedBy" };
    size_t commands = 0;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = text.find('\n', begin);
        Require(end != std::string::npos);
        const std::string_view line = std::string_view(text).substr(begin, end - begin);
        const std::string_view key = line.substr(0, line.find('='));
        const bool isOther = std::any_of(
            other.begin(), other.end(), [&](std::string_view each) { return line.starts_with(each); });
        Require(line.empty() || isOther || std::find(keys.begin(), keys.end(), key) != keys.end());
        Require(!line.ends_with('\\'));
        commands += key == "ExecStart" ? 1 : 0;
        begin = end + 1;
    }
    Require(commands == 1 && text.size() <= maxUnitBytes && !file.job.arguments.empty());
}

}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    static_cast<void>(ReadUnit(bytes));
    const std::vector<std::string> parts = Split(bytes);
    const JobFile file = MakeFile(parts);
    const std::string session = parts.size() > 6 ? parts[6] : "Aqua";
    std::string problem;
    const std::optional<std::string> text = UnitText(file, session, problem);
    Require(text.has_value() == problem.empty());
    if (!text)
        return 0;
    RequireKnownLines(*text, file);
    const std::optional<UnitNotes> notes = ReadUnit(*text);
    Require(
        notes && notes->path == file.path && notes->program == file.job.program && notes->session == session);
    return 0;
}
