#include "JobManagers.h"

#include <algorithm>
#include <iterator>

namespace launchd {

Answer JobManagers::load(const JobFile& file, const std::string& session)
{
    ServiceManager& serving = fSystemd.serves() ? static_cast<ServiceManager&>(fSystemd) : fSupervisor;
    ServiceManager& other = fSystemd.serves() ? static_cast<ServiceManager&>(fSupervisor) : fSystemd;
    std::vector<JobState> jobs;
    if (Answer asking = other.list(jobs); !asking.ok())
        return asking;
    const auto same = std::find_if(
        jobs.begin(), jobs.end(), [&](const JobState& job) { return job.label == file.job.label; });
    if (same != jobs.end())
        return { ExitStatus::alreadyLoaded,
            file.path + ": " + same->label + " is already loaded into " + same->manager };
    return serving.load(file, session);
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
