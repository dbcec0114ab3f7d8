#pragma once

#include "JobFile.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace launchd {

/// A job as `list` shows it.
struct JobState {
    std::string label;
    std::string program;
    std::string session;
    pid_t pid = 0; ///< 0 while it does not run or is being ended
    /// Exit status of its last run, or the negative number of the signal that ended it. 0 before it ran, and
    /// where its manager does not remember.
    int lastExitStatus = 0;
    std::string manager; ///< name of the service manager that keeps it; not sent: each names itself
};

/// Who keeps the user's jobs, as launchctl sees it. Each call returns when its effect is there or has failed.
class ServiceManager {
public:
    virtual ~ServiceManager() = default;

    /// @param session session type that the job is loaded into.
    /// @return ExitStatus::alreadyLoaded for a job with the same label or file, which stays as it is;
    /// ExitStatus::failed also when the job was loaded but its program could not be run.
    virtual Answer load(const JobFile& file, const std::string& session) = 0;

    /// Stops and forgets the job that was loaded from the path, else the one with the label.
    /// @param path JobPathOf() the job's file, which need not exist. @param label "" when it is not known.
    virtual Answer unload(const std::string& path, const std::string& label) = 0;

    /// @param jobs gets the loaded jobs in the order of loading.
    virtual Answer list(std::vector<JobState>& jobs) = 0;
};

} // namespace launchd
