#include "tools/inspect/Commands.h"
#include "util/CFText.h"
#include "util/Processes.h"

#include <algorithm>
#include <array>
#include <pwd.h>
#include <sys/sysctl.h>

namespace {

std::vector<kinfo_proc> ProcessTable()
{
    int name[] = { CTL_KERN, KERN_PROC, KERN_PROC_ALL };
    size_t size = 0;
    if (sysctl(name, std::size(name), nullptr, &size, nullptr, 0) != 0)
        return {};
    std::vector<kinfo_proc> table(size / sizeof(kinfo_proc));
    if (sysctl(name, std::size(name), table.data(), &size, nullptr, 0) != 0)
        return {};
    table.resize(size / sizeof(kinfo_proc));
    return table;
}

const char* StateName(char state)
{
    switch (state) {
    case SIDL:
        return "starting";
    case SRUN:
        return "running";
    case SSTOP:
        return "stopped";
    case SZOMB:
        return "ended";
    default:
        return "sleeping";
    }
}

/// The user's short name, or the number of one who is not in the user database.
std::string UserName(uid_t user)
{
    const passwd* const entry = getpwuid(user);
    return entry != nullptr ? entry->pw_name : std::to_string(user);
}

Value ApplicationName(pid_t process)
{
    const CFStringRef name = GetProcessNameForPID(process);
    return name != nullptr ? Value(StdString(name)) : Value();
}

Record Describe(const kinfo_proc& process)
{
    const auto& own = process.kp_proc;
    const auto& outer = process.kp_eproc;
    return {
        { "pid", "PID", int64_t { own.p_pid } },
        { "parent", "PARENT", int64_t { outer.e_ppid } },
        { "user", "USER", UserName(outer.e_ucred.cr_uid) },
        { "state", "STATE", StateName(own.p_stat) },
        { "name", "NAME", own.p_comm },
        { "application", "APPLICATION", ApplicationName(own.p_pid) },
    };
}

}

Findings FindProcesses(const std::vector<std::string>& names)
{
    Findings findings;
    for (const kinfo_proc& process : ProcessTable()) {
        const bool isMeant
            = names.empty() || std::find(names.begin(), names.end(), process.kp_proc.p_comm) != names.end();
        if (isMeant)
            findings.records.push_back(Describe(process));
    }
    for (const std::string& name : names) {
        if (NumberOfProcessesWithName(name.c_str()) == 0)
            findings.problems.push_back("no process has the name " + name);
    }
    return findings;
}
