#pragma once

#include "job/StartFailure.h"
#include <Host/Descriptor.h>

#include <sys/types.h>

namespace launchd {

/// A process on its way to becoming a job's program.
struct JobProcess {
    pid_t pid = 0; ///< 0 when there is none
    int error = 0; ///< errno when there is none
    /// Non-blocking. Ends without a byte as soon as the program runs, or brings one StartFailure.
    Descriptor report;
};

/// With which a process exits that did not become the job's program.
constexpr int startFailureStatus = 78;

/// Starts the job's program as the leader of a session of its own, with no descriptors but the standard three
/// (input is empty, output goes where the job says or nowhere), default signals, file mask 022 and a clean
/// environment: the user's from the user database, the few variables that lead to the user's desktop and
/// volume, and the job's own. The kernel kills it when the calling process ends, however that happens: a job
/// without its supervisor could be neither listed nor unloaded, and would run twice after the next load. For
/// programs with a single thread.
JobProcess StartJob(const Job& job);

} // namespace launchd
