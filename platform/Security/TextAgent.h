#pragma once

#include <sys/types.h>

/// While it lives, polkit can ask for a password on this process's terminal. Of use only where no desktop has an
/// agent of its own, which goes before; without a terminal nothing is started.
class TextAgent {
public:
    /// Returns when the agent is ready, or could not be started.
    /// @param wanted false to start none.
    explicit TextAgent(bool wanted);
    TextAgent(const TextAgent&) = delete;
    TextAgent& operator=(const TextAgent&) = delete;
    ~TextAgent();

private:
    pid_t fProcess = -1;
};
