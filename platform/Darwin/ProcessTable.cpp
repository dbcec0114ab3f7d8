#include "ProcessTable.h"

#include <Host/HostText.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <string>
#include <unistd.h>

static_assert(sizeof(kinfo_proc) == 648);
static_assert(offsetof(kinfo_proc, kp_proc.p_stat) == 36 && offsetof(kinfo_proc, kp_proc.p_pid) == 40);
static_assert(offsetof(kinfo_proc, kp_proc.p_nice) == 242 && offsetof(kinfo_proc, kp_proc.p_comm) == 243);
static_assert(offsetof(kinfo_proc, kp_eproc.e_pcred) == 392 && offsetof(kinfo_proc, kp_eproc.e_ucred) == 420);
static_assert(offsetof(kinfo_proc, kp_eproc.e_ppid) == 560 && offsetof(kinfo_proc, kp_eproc.e_pgid) == 564);

namespace {

/// Calls `each` with the processes that the host lists.
template <class Each> void ForEachProcess(const Each& each)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc"), closedir);
    if (!folder)
        return;
    while (const dirent* const entry = readdir(folder.get())) {
        char* end = nullptr;
        const long number = std::strtol(entry->d_name, &end, 10);
        if (number > 0 && *end == 0)
            each(static_cast<pid_t>(number));
    }
}

char StateOnMac(char host)
{
    switch (host) {
    case 'R':
        return SRUN;
    case 'T':
    case 't':
        return SSTOP;
    case 'Z':
    case 'X':
        return SZOMB;
    default:
        return SSLEEP;
    }
}

/// When the host was started, in seconds since 1970.
time_t StartOfHost()
{
    timespec now {};
    timespec running {};
    clock_gettime(CLOCK_REALTIME, &now);
    clock_gettime(CLOCK_BOOTTIME, &running);
    return now.tv_sec - running.tv_sec;
}

/// Reads /proc/…/stat, in which the name stands in parentheses and may hold any of them. @return whether it is whole.
bool ReadStat(const std::string& text, kinfo_proc& record)
{
    const size_t nameStart = text.find('(') + 1;
    const size_t nameEnd = text.rfind(')');
    if (nameStart == 0 || nameEnd == std::string::npos || nameEnd < nameStart)
        return false;
    const size_t length = std::min<size_t>(nameEnd - nameStart, MAXCOMLEN);
    std::memcpy(record.kp_proc.p_comm, text.data() + nameStart, length);

    char state = 0;
    int nice = 0;
    unsigned long long start = 0;
    // NOLINTNEXTLINE(cert-err34-c): the kernel writes no number that does not fit
    const int fields = std::sscanf(text.c_str() + nameEnd + 1,
        " %c %d %d %*d %*d %*d %*u %*u %*u %*u %*u %*u %*u %*d %*d %*d %d %*d %*d %llu", &state,
        &record.kp_eproc.e_ppid, &record.kp_eproc.e_pgid, &nice, &start);
    record.kp_proc.p_stat = StateOnMac(state);
    record.kp_proc.p_nice = static_cast<signed char>(nice);
    static const time_t hostStart = StartOfHost();
    record.kp_proc.p_starttime.tv_sec
        = hostStart + static_cast<time_t>(start / static_cast<unsigned long long>(sysconf(_SC_CLK_TCK)));
    return fields == 5;
}

/// Completes a name that the host has cut after 15 bytes, where it is the one of the program's file.
void CompleteName(const std::string& folder, kinfo_proc& record)
{
    constexpr size_t hostsLongest = 15;
    const std::string name = record.kp_proc.p_comm;
    if (name.size() != hostsLongest)
        return;
    std::array<char, PATH_MAX> program {};
    const ssize_t size = readlink((folder + "/exe").c_str(), program.data(), program.size());
    const std::string path(program.data(), static_cast<size_t>(std::max<ssize_t>(size, 0)));
    const std::string file = path.substr(path.rfind('/') + 1);
    if (file.rfind(name, 0) == 0)
        std::memcpy(record.kp_proc.p_comm, file.data(), std::min<size_t>(file.size(), MAXCOMLEN));
}

/// Reads the users and groups of /proc/…/status.
void ReadOwners(const std::string& text, kinfo_proc& record)
{
    auto& real = record.kp_eproc.e_pcred;
    const size_t users = text.find("\nUid:");
    const size_t groups = text.find("\nGid:");
    // NOLINTBEGIN(cert-err34-c): as above
    if (users != std::string::npos)
        std::sscanf(text.c_str() + users, "\nUid: %u %u %u", &real.p_ruid, &record.kp_eproc.e_ucred.cr_uid,
            &real.p_svuid);
    if (groups != std::string::npos)
        std::sscanf(text.c_str() + groups, "\nGid: %u %*u %u", &real.p_rgid, &real.p_svgid);
    // NOLINTEND(cert-err34-c)
}

}

std::vector<kinfo_proc> ReadProcess(pid_t process)
{
    const std::string folder = "/proc/" + std::to_string(process);
    const std::optional<std::string> stat = HostText(folder + "/stat");
    kinfo_proc record {};
    record.kp_proc.p_pid = process;
    if (!stat || !ReadStat(*stat, record))
        return {};
    CompleteName(folder, record);
    ReadOwners(HostText(folder + "/status").value_or(""), record);
    return { record };
}

std::vector<kinfo_proc> ReadProcessTable()
{
    std::vector<kinfo_proc> table;
    ForEachProcess([&table](pid_t process) {
        const std::vector<kinfo_proc> found = ReadProcess(process);
        table.insert(table.end(), found.begin(), found.end());
    });
    return table;
}

size_t EstimateProcessCount()
{
    size_t count = 0;
    ForEachProcess([&count](pid_t) { ++count; });
    return count + count / 8 + 16;
}
