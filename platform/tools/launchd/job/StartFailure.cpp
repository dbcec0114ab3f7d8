#include "StartFailure.h"

#include <cstring>

namespace launchd {

std::string Describe(StartFailure::Step step, const Job& job, const std::string& reason)
{
    switch (step) {
    case StartFailure::Step::standardOutPath:
        return "StandardOutPath " + job.standardOutPath + " could not be opened: " + reason;
    case StartFailure::Step::standardErrorPath:
        return "StandardErrorPath " + job.standardErrorPath + " could not be opened: " + reason;
    case StartFailure::Step::workingDirectory:
        return "WorkingDirectory " + job.workingDirectory + " could not be entered: " + reason;
    case StartFailure::Step::program:
        break;
    }
    return "its program " + job.program + " could not be executed: " + reason;
}

std::string Describe(const StartFailure& failure, const Job& job)
{
    return Describe(failure.step, job, std::strerror(failure.error));
}

} // namespace launchd
