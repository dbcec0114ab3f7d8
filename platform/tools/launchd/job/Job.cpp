#include "Job.h"

#include "KeyReader.h"

#include <sys/wait.h>

#include <algorithm>
#include <climits>
#include <csignal>

namespace launchd {

namespace {
constexpr size_t maxLabelLength = 255;
constexpr long long maxSeconds = 366LL * 24 * 60 * 60;

bool IsCrash(int waitStatus)
{
    static constexpr int crashSignals[] = { SIGILL, SIGTRAP, SIGABRT, SIGFPE, SIGBUS, SIGSEGV, SIGSYS };
    return WIFSIGNALED(waitStatus)
        && std::count(std::begin(crashSignals), std::end(crashSignals), WTERMSIG(waitStatus)) != 0;
}

bool IsLabel(const std::string& text)
{
    static constexpr const char* allowed
        = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
    return !text.empty() && text.size() <= maxLabelLength
        && text.find_first_not_of(allowed) == std::string::npos;
}

std::string ReadLabel(KeyReader& keys)
{
    std::string label = keys.text("Label");
    if (!keys.has("Label"))
        keys.refuse("Label is missing");
    if (!IsLabel(label))
        keys.refuse("Label is not 1 to 255 letters, digits, dots, dashes and underscores");
    return label;
}

/// Either of the two keys can stand for both.
void ReadProgram(KeyReader& keys, Job& job)
{
    job.program = keys.text("Program");
    job.arguments = keys.texts("ProgramArguments");
    if (!keys.has("Program") && !keys.has("ProgramArguments"))
        keys.refuse("Program and ProgramArguments are both missing");
    if (keys.has("Program") && job.program.empty())
        keys.refuse("Program is empty");
    if (keys.has("ProgramArguments") && (job.arguments.empty() || job.arguments.front().empty()))
        keys.refuse("ProgramArguments is empty");
    if (!keys.problem().empty())
        return;

    if (job.arguments.empty())
        job.arguments = { job.program };
    const char* source = keys.has("Program") ? "Program" : "ProgramArguments";
    if (job.program.empty())
        job.program = job.arguments.front();
    if (job.program.front() != '/')
        keys.refuse(std::string(source) + " is not an absolute path");
    if (job.program.size() >= PATH_MAX)
        keys.refuse(std::string(source) + " is too long for a path");
}

KeepAlive ReadKeepAlive(KeyReader& keys)
{
    KeepAlive keepAlive;
    const CFTypeRef value = keys.value("KeepAlive");
    if (!value || CFGetTypeID(value) != CFDictionaryGetTypeID()) {
        keepAlive.always = keys.boolean("KeepAlive", false);
        return keepAlive;
    }
    KeyReader conditions(static_cast<CFDictionaryRef>(value));
    if (conditions.has("SuccessfulExit"))
        keepAlive.successfulExit = conditions.boolean("SuccessfulExit", false);
    if (conditions.has("Crashed"))
        keepAlive.crashed = conditions.boolean("Crashed", false);
    if (!conditions.problem().empty())
        keys.refuse("KeepAlive: " + conditions.problem());
    return keepAlive;
}

std::vector<std::string> ReadSessions(KeyReader& keys)
{
    const CFTypeRef value = keys.value("LimitLoadToSessionType");
    if (value && CFGetTypeID(value) == CFStringGetTypeID())
        return { keys.text("LimitLoadToSessionType") };
    return keys.texts("LimitLoadToSessionType");
}

std::map<std::string, std::string> ReadEnvironment(KeyReader& keys)
{
    std::map<std::string, std::string> environment = keys.textMap("EnvironmentVariables");
    for (const auto& [name, value] : environment) {
        if (name.empty() || name.find('=') != std::string::npos)
            keys.refuse("EnvironmentVariables has a name that is empty or contains \"=\"");
    }
    return environment;
}

std::string ReadPath(KeyReader& keys, const char* key)
{
    std::string path = keys.text(key);
    if (keys.has(key) && (path.empty() || path.front() != '/'))
        keys.refuse(std::string(key) + " is not an absolute path");
    return path;
}

std::chrono::seconds ReadSeconds(KeyReader& keys, const char* key, std::chrono::seconds fallback)
{
    return std::chrono::seconds(keys.integer(key, fallback.count(), 0, maxSeconds));
}
}

bool KeepAlive::restartsAfter(int waitStatus) const
{
    const bool success = WIFEXITED(waitStatus) && WEXITSTATUS(waitStatus) == 0;
    return always || (successfulExit && *successfulExit == success)
        || (crashed && *crashed == IsCrash(waitStatus));
}

bool Job::isFor(const std::string& session) const
{
    return sessions.empty() || std::find(sessions.begin(), sessions.end(), session) != sessions.end();
}

std::optional<Job> ParseJob(std::string_view propertyList, std::string& problem)
{
    if (propertyList.size() > maxJobBytes) {
        problem = "larger than a property list of a job may be";
        return std::nullopt;
    }
    const CFOwned<CFMutableDictionaryRef> dictionary = ReadDictionary(propertyList, problem);
    if (!dictionary)
        return std::nullopt;

    KeyReader keys(dictionary.get());
    Job job;
    job.label = ReadLabel(keys);
    ReadProgram(keys, job);
    job.disabled = keys.boolean("Disabled", false);
    job.runAtLoad = keys.boolean("RunAtLoad", false);
    job.keepAlive = ReadKeepAlive(keys);
    job.sessions = ReadSessions(keys);
    job.environment = ReadEnvironment(keys);
    job.workingDirectory = ReadPath(keys, "WorkingDirectory");
    job.standardOutPath = ReadPath(keys, "StandardOutPath");
    job.standardErrorPath = ReadPath(keys, "StandardErrorPath");
    // No interval at all would let a job that fails at once keep the machine busy with starting it.
    job.throttleInterval
        = std::max(std::chrono::seconds(1), ReadSeconds(keys, "ThrottleInterval", job.throttleInterval));
    job.exitTimeOut = ReadSeconds(keys, "ExitTimeOut", job.exitTimeOut);
    problem = keys.problem();
    return problem.empty() ? std::optional(std::move(job)) : std::nullopt;
}

} // namespace launchd
