#include "tools/inspect/CaptureFolder.h"
#include "tools/inspect/Commands.h"
#include "tools/inspect/Interruption.h"
#include "util/DiagnosticsCapture.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Part {
    const char* name;
    const char* file;
    bool (*capture)(const char* path);
};

/// What takes minutes comes last.
constexpr std::array kParts {
    Part { "device registry", kRegistryFile, CaptureIORegToFile },
    Part { "kernel extensions", "kextstat.txt", CaptureKextStatToFile },
    Part { "disks", "diskutil.txt", CaptureDiskUtilToFile },
    Part { "power settings", "pmset.txt", CaptureSleepPreferencesToFile },
    Part { "system profile", kProfileFile, CaptureSystemProfilerToFile },
};

using Clock = std::chrono::steady_clock;

bool IsCapture(const char* name)
{
    const bool isNamedSo = std::any_of(
        kParts.begin(), kParts.end(), [name](const Part& part) { return std::strcmp(part.file, name) == 0; });
    struct stat facts { };
    return isNamedSo && lstat(name, &facts) == 0 && S_ISREG(facts.st_mode);
}

/// Takes an earlier capture's files out of the current folder: what is in it afterwards is of one time.
/// @return "", or why nothing was taken out.
std::string EmptyFolder()
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("."), closedir);
    if (!folder)
        return std::strerror(errno);
    while (const dirent* const item = readdir(folder.get())) {
        const std::string name = item->d_name;
        if (name != "." && name != ".." && !IsCapture(name.c_str()))
            return "it holds " + name + ", which is no capture's";
    }
    for (const Part& part : kParts) {
        if (unlink(part.file) != 0 && errno != ENOENT)
            return part.file + std::string(": ") + std::strerror(errno);
    }
    return "";
}

/// Makes the folder where it is missing, and the current one: a name in it then means this folder, whatever becomes of its
/// path. Who may read what lies in it is the owner's business, since it tells serial numbers and names.
/// @return "", or why it cannot be used.
std::string EnterFolder(const std::string& path)
{
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        return std::strerror(errno);
    return chdir(path.c_str()) == 0 ? EmptyFolder() : std::strerror(errno);
}

/// Captures, and tells people how it went as soon as it is over.
Record Capture(const Part& part, bool& isComplete)
{
    const auto start = Clock::now();
    const bool isDone = part.capture(part.file);
    const double seconds = Seconds(Clock::now() - start).count();
    struct stat facts { };
    const bool isThere = stat(part.file, &facts) == 0;
    // A tool that could not be started has said nothing.
    isComplete = isDone && isThere && facts.st_size > 0;
    const Value size = isThere ? Number(static_cast<uint64_t>(facts.st_size)) : Value();
    std::cerr << part.name << ": ";
    if (isComplete)
        std::cerr << part.file << ", " << SizeText(size) << ", " << std::fixed << std::setprecision(1)
                  << seconds << " s\n";
    else
        std::cerr << (isDone ? "empty\n" : "failed\n");
    return {
        { "part", "Part", part.name },
        { "file", "File", part.file },
        SizeField("size", "Size", size),
        { "seconds", "Seconds", seconds },
        { "isComplete", "Complete", isComplete },
    };
}

std::string Listed(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

}

Findings CaptureComputer(const Request& request)
{
    const std::string& path = request.operands.front();
    Findings findings;
    if (const std::string problem = EnterFolder(path); !problem.empty())
        return { {}, { path + ": " + problem } };
    const Interruption interruption;
    std::vector<std::string> complete;
    std::vector<std::string> missing;
    for (const Part& part : kParts) {
        bool isComplete = false;
        if (!interruption.hasCome())
            findings.records.push_back(Capture(part, isComplete));
        (isComplete ? complete : missing).emplace_back(part.name);
    }
    if (!missing.empty() && interruption.hasCome())
        findings.problems.push_back(
            "interrupted; complete: " + (complete.empty() ? "nothing" : Listed(complete)));
    else if (!missing.empty())
        findings.problems.push_back("not complete: " + Listed(missing));
    if (!request.asJSON)
        findings.records.clear(); // people were told
    return findings;
}
