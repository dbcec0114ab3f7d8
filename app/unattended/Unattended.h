#pragma once

#include "app/unattended/Options.h"
#include "app/unattended/Report.h"

/// Carries out the command without windows and reports on standard output; see UsageText() for what can be
/// asked. The installer's own state machine does the work; this adds a look at the disk afterwards, which
/// waits a bounded time for launchd and the privileged tool, and finishes what an interrupted run left
/// undone.
/// @return how it ended, which is the process's exit status.
Outcome RunUnattended(const Options& options);
