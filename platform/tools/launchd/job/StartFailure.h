#pragma once

#include "Job.h"

#include <string>

namespace launchd {

/// Why a process did not become the job's program.
struct StartFailure {
    enum class Step : int { standardOutPath, standardErrorPath, workingDirectory, program };
    Step step;
    int error; ///< errno
};

/// @return one sentence about the failure, naming the key and path at fault.
std::string Describe(StartFailure::Step step, const Job& job, const std::string& reason);
std::string Describe(const StartFailure& failure, const Job& job);

} // namespace launchd
