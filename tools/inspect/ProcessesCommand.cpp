#include "tools/inspect/Commands.h"
#include "util/CFText.h"
#include "util/Processes.h"

#include <algorithm>
#include <pwd.h>
#include <set>

namespace {

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

Findings FindProcesses(const Request& request)
{
    const std::vector<std::string>& names = request.operands;
    Findings findings;
    findings.isTable = true;
    std::set<std::string> missing(names.begin(), names.end());
    for (const kinfo_proc& process : ProcessTable()) {
        const std::string name = process.kp_proc.p_comm;
        const bool isMeant = names.empty() || std::find(names.begin(), names.end(), name) != names.end();
        if (isMeant)
            findings.records.push_back(Describe(process));
        missing.erase(name);
    }
    for (const std::string& name : missing)
        findings.problems.push_back("no process has the name " + name);
    return findings;
}
