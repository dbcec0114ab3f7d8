#include "JobManagers.h"

#include <algorithm>
#include <iterator>

namespace launchd {

Answer JobManagers::load(const JobFile& file, const std::string& session)
{
    if (!fSystemd.serves())
        return loadIntoSupervisor(file, session);
    if (Answer refusal = SystemdClient::canTake(file, session); !refusal.ok())
        return refusal;
    // What the supervisor took on while there was no systemd manager moves over. It may be ending just now.
    const Answer leaving = fSupervisor.unload(file.path, file.job.label);
    return leaving.ok() || leaving.status == ExitStatus::notFound ? fSystemd.load(file, session) : leaving;
}

Answer JobManagers::loadIntoSupervisor(const JobFile& file, const std::string& session)
{
    std::vector<JobState> jobs;
    if (Answer asking = fSystemd.list(jobs); !asking.ok())
        return asking;
    const auto same = std::find_if(
        jobs.begin(), jobs.end(), [&](const JobState& job) { return job.label == file.job.label; });
    if (same != jobs.end())
        return { ExitStatus::alreadyLoaded,
            file.path + ": " + same->label + " is already loaded into " + same->manager };
    return fSupervisor.load(file, session);
}

Answer JobManagers::unload(const std::string& path, const std::string& label)
{
    Answer answer = fSystemd.unload(path, label);
    return answer.status == ExitStatus::notFound ? fSupervisor.unload(path, label) : answer;
}

Answer JobManagers::list(std::vector<JobState>& jobs)
{
    if (Answer asking = fSystemd.list(jobs); !asking.ok())
        return asking;
    std::vector<JobState> others;
    Answer answer = fSupervisor.list(others);
    std::move(others.begin(), others.end(), std::back_inserter(jobs));
    return answer;
}

} // namespace launchd
