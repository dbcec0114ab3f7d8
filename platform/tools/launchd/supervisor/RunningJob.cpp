#include "RunningJob.h"

#include <sys/wait.h>
#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace launchd {

RunningJob::RunningJob(Job job, std::string path, std::string session)
    : fJob(std::move(job))
    , fPath(std::move(path))
    , fSession(std::move(session))
{
}

JobState RunningJob::state() const
{
    return { .label = fJob.label,
        .program = fJob.program,
        .session = fSession,
        .pid = fStopping ? 0 : fPid, // whoever asks waits for the next one
        .lastExitStatus = fLastExitStatus,
        .manager = {} };
}

void RunningJob::start(TimePoint now)
{
    fLastStart = now;
    fDeadline = TimePoint::max();
    fStartProblem.clear();
    JobProcess process = StartJob(fJob);
    fPid = process.pid;
    fReport = std::move(process.report);
    if (fPid != 0)
        return;
    fStartProblem = std::string("no process could be made for it: ") + std::strerror(process.error);
    ended(W_EXITCODE(startFailureStatus, 0), now);
}

void RunningJob::stop(TimePoint now)
{
    if (fStopping)
        return;
    fStopping = true;
    fDeadline = TimePoint::max();
    if (fPid == 0)
        return;
    kill(fPid, SIGTERM);
    if (fJob.exitTimeOut.count() > 0)
        fDeadline = now + fJob.exitTimeOut;
}

void RunningJob::readReport()
{
    StartFailure failure {};
    const ssize_t size = read(fReport.get(), &failure, sizeof failure);
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    fReport.close();
    if (size == static_cast<ssize_t>(sizeof failure))
        fStartProblem = Describe(failure, fJob);
}

void RunningJob::reap(TimePoint now)
{
    // Its number stays taken until it is waited for, so the group killed cannot be another's.
    siginfo_t info {};
    if (fPid == 0 || waitid(P_PID, static_cast<id_t>(fPid), &info, WEXITED | WNOHANG | WNOWAIT) != 0
        || info.si_pid == 0)
        return;
    if (isStarting())
        readReport();
    kill(-fPid, SIGKILL);
    int waitStatus = 0;
    waitpid(fPid, &waitStatus, 0);
    fPid = 0;
    fReport.close();
    ended(waitStatus, now);
}

void RunningJob::ended(int waitStatus, TimePoint now)
{
    fLastExitStatus = WIFSIGNALED(waitStatus) ? -WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
    fDeadline = TimePoint::max();
    if (!fStartProblem.empty())
        syslog(LOG_ERR, "%s: %s", fJob.label.c_str(), fStartProblem.c_str());
    else if (fLastExitStatus != 0)
        syslog(LOG_NOTICE, "%s: ended with status %d", fJob.label.c_str(), fLastExitStatus);
    if (!fStopping && fJob.keepAlive.restartsAfter(waitStatus))
        fDeadline = std::max(now, fLastStart + fJob.throttleInterval);
}

void RunningJob::timeReached(TimePoint now)
{
    if (now < fDeadline)
        return;
    fDeadline = TimePoint::max();
    if (fPid == 0) {
        start(now);
        return;
    }
    syslog(LOG_WARNING, "%s: did not end in time and is killed", fJob.label.c_str());
    // The process too: one that has not come as far as leading a group is in none of its own.
    kill(fPid, SIGKILL);
    kill(-fPid, SIGKILL);
}

} // namespace launchd
