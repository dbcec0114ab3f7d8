#pragma once

#include "JobProcess.h"
#include "Protocol.h"

#include <chrono>

namespace launchd {

using Clock = std::chrono::steady_clock;
using TimePoint = Clock::time_point;

/// A loaded job: its process, when that is started again, and how it is stopped.
/// Never waits. Its owner calls reap() after SIGCHLD, readReport() when reportDescriptor() is readable and
/// timeReached() at deadline().
class RunningJob {
public:
    /// @param path JobPathOf() the job's file. @param session session type that it is loaded into.
    RunningJob(Job job, std::string path, std::string session);

    const std::string& label() const { return fJob.label; }
    const std::string& path() const { return fPath; }
    JobState state() const;

    /// Starts the program. Only for a job without a process.
    void start(TimePoint now);

    /// Sends SIGTERM to the process and, once the job's ExitTimeOut has passed, SIGKILL to its process group.
    /// The job is not started again.
    void stop(TimePoint now);
    bool isStopping() const { return fStopping; }
    bool isGone() const { return fStopping && fPid == 0; }

    /// While it is not known whether the program could be executed. @return -1 when it is known.
    int reportDescriptor() const { return fReport.get(); }
    bool isStarting() const { return static_cast<bool>(fReport); }
    void readReport();
    /// @return one sentence about why the last start failed, or "".
    const std::string& startProblem() const { return fStartProblem; }

    /// Notices that the process ended. What is left of its process group is killed, so that nothing of a job
    /// outlives it.
    void reap(TimePoint now);

    /// @return when timeReached() has something to do, or TimePoint::max().
    TimePoint deadline() const { return fDeadline; }
    void timeReached(TimePoint now);

private:
    void ended(int waitStatus, TimePoint now);

    Job fJob;
    std::string fPath;
    std::string fSession;
    pid_t fPid = 0;
    Descriptor fReport;
    std::string fStartProblem;
    int fLastExitStatus = 0;
    bool fStopping = false;
    TimePoint fLastStart;
    TimePoint fDeadline = TimePoint::max(); ///< of the next start or, with a process, of SIGKILL
};

} // namespace launchd
