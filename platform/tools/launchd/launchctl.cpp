// launchctl: loads, unloads and lists the user's launchd jobs. See usageText.

#include "JobManagers.h"
#include "job/HomeLock.h"
#include "job/JobFile.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

using namespace launchd;

namespace {

constexpr const char* usageText = R"(usage: launchctl load [-w] [-F] [-S SESSION-TYPE] PATH...
       launchctl unload [-w] PATH...
       launchctl list [LABEL]
       launchctl help

load    Loads the jobs of LaunchAgent property lists, or of all of them in a folder, and starts
        those that ask for it.
        -F  also where the property list says Disabled
        -S  into a session of this type instead of Aqua
        -w  also where it says Disabled, which is removed from the file
unload  Stops the jobs and forgets them. Returns when they have ended.
        -w  and sets Disabled in the file
list    Lists the loaded jobs: process, status of the last exit (negative: the signal), label, and
        who keeps them, systemd or launchd; or tells more about one of them.
)";

struct Options {
    bool write = false;
    bool force = false;
    std::string session = "Aqua";
    std::vector<std::string> operands;
};

struct Command {
    const char* name;
    const char* options; ///< for getopt(); the plus sign keeps operands from being passed over
    bool changesJobs;
    int (*run)(ServiceManager& manager, const Options& options);
};

int WrongUse()
{
    std::cerr << usageText;
    return ExitStatus::usage;
}

int Report(const Answer& answer)
{
    if (!answer.ok())
        std::cerr << answer.message << '\n';
    return answer.status;
}

Answer CheckWanted(const std::string& path, const Job& job, const Options& options)
{
    if (job.disabled && !options.force && !options.write)
        return { ExitStatus::disabled,
            path + ": " + job.label + " is disabled; use -F to load it all the same" };
    if (!job.isFor(options.session))
        return { ExitStatus::otherSession,
            path + ": " + job.label + " is limited to other session types than " + options.session };
    return {};
}

Answer LoadOne(ServiceManager& manager, const std::string& path, const Options& options)
{
    JobFile file;
    if (Answer refusal = ReadJobFile(path, file); !refusal.ok())
        return refusal;
    if (Answer refusal = CheckWanted(path, file.job, options); !refusal.ok())
        return refusal;
    Answer answer = manager.load(file, options.session);
    if (answer.ok() && options.write && file.job.disabled)
        return WriteDisabled(path, file, false);
    return answer;
}

Answer UnloadOne(ServiceManager& manager, const std::string& path, const Options& options)
{
    // A file that is gone or spoilt by now does not keep its job from being unloaded.
    JobFile file;
    const Answer reading = ReadJobFile(path, file);
    Answer answer = manager.unload(JobPathOf(path), file.job.label);
    if (answer.ok() && options.write && !file.job.disabled)
        return reading.ok() ? WriteDisabled(path, file, true) : reading;
    return answer;
}

/// @return the status of the first path that failed; the others are done all the same.
int ForEachFile(ServiceManager& manager, const Options& options,
    Answer (*act)(ServiceManager&, const std::string&, const Options&))
{
    if (options.operands.empty())
        return WrongUse();
    int status = ExitStatus::ok;
    const auto note = [&status](const Answer& answer) {
        const int outcome = Report(answer);
        status = status == ExitStatus::ok ? outcome : status;
    };
    for (const std::string& operand : options.operands) {
        std::vector<std::string> files;
        note(FindJobFiles(operand, files));
        for (const std::string& file : files)
            note(act(manager, file, options));
    }
    return status;
}

int Load(ServiceManager& manager, const Options& options) { return ForEachFile(manager, options, LoadOne); }
int Unload(ServiceManager& manager, const Options& options)
{
    return ForEachFile(manager, options, UnloadOne);
}

/// @return the text in quotes, with nothing in it that could end them or work on a terminal.
std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\')
            quoted += '\\';
        const bool isControl = static_cast<unsigned char>(character) < ' ' || character == '\x7F';
        quoted += isControl ? '?' : character;
    }
    return quoted + '"';
}

void PrintJob(const JobState& job)
{
    const auto line = [](const char* key, const std::string& value) {
        std::cout << "\t\"" << key << "\" = " << value << ";\n";
    };
    std::cout << "{\n";
    line("LimitLoadToSessionType", Quoted(job.session));
    line("Label", Quoted(job.label));
    line("LastExitStatus", std::to_string(job.lastExitStatus));
    line("Manager", Quoted(job.manager));
    if (job.pid != 0)
        line("PID", std::to_string(job.pid));
    line("Program", Quoted(job.program));
    std::cout << "};\n";
}

void PrintTable(const std::vector<JobState>& jobs)
{
    std::cout << "PID\tStatus\tLabel\tManager\n";
    for (const JobState& job : jobs) {
        const std::string pid = job.pid == 0 ? "-" : std::to_string(job.pid);
        std::cout << pid << '\t' << job.lastExitStatus << '\t' << job.label << '\t' << job.manager << '\n';
    }
}

int List(ServiceManager& manager, const Options& options)
{
    if (options.operands.size() > 1)
        return WrongUse();
    std::vector<JobState> jobs;
    if (const Answer failure = manager.list(jobs); !failure.ok())
        return Report(failure);
    if (options.operands.empty()) {
        PrintTable(jobs);
        return ExitStatus::ok;
    }
    const std::string& label = options.operands.front();
    const auto job
        = std::find_if(jobs.begin(), jobs.end(), [&](const JobState& each) { return each.label == label; });
    if (job == jobs.end())
        return Report({ ExitStatus::notFound, "Could not find service " + Quoted(label) });
    PrintJob(*job);
    return ExitStatus::ok;
}

int Help(ServiceManager&, const Options&)
{
    std::cout << usageText;
    return ExitStatus::ok;
}

constexpr Command commands[] = { { "load", "+wFS:", true, Load }, { "unload", "+w", true, Unload },
    { "list", "+", false, List }, { "help", "+", false, Help } };

/// @param argv the verb and what follows it. @return false for what the verb does not take.
bool ReadOptions(int argc, char** argv, const char* known, Options& options)
{
    opterr = 0;
    for (int option = getopt(argc, argv, known); option != -1; option = getopt(argc, argv, known)) {
        if (option == 'w')
            options.write = true;
        else if (option == 'F')
            options.force = true;
        else if (option == 'S')
            options.session = optarg;
        else
            return false;
    }
    options.operands.assign(argv + optind, argv + argc);
    return !options.session.empty();
}

}

int main(int argc, char** argv)
{
    const std::string name = argc > 1 ? argv[1] : "";
    for (const Command& command : commands) {
        Options options;
        if (name != command.name)
            continue;
        if (!ReadOptions(argc - 1, argv + 1, command.options, options))
            return WrongUse();
        std::string problem;
        const Descriptor lock = command.changesJobs ? LockHome(problem) : Descriptor();
        if (!problem.empty())
            return Report({ ExitStatus::failed, problem });
        JobManagers manager;
        const int status = command.run(manager, options);
        return status == ExitStatus::ok && !std::cout.flush() ? ExitStatus::failed : status;
    }
    return WrongUse();
}
