#pragma once

#include "tools/inspect/Interruption.h"
#include <chrono>

/// The beat of a program that goes on until it is interrupted. From the first one on SIGPIPE does not end the program.
class Pace {
public:
    explicit Pace(std::chrono::duration<double> interval);

    /// Waits for the next beat. Beats lie at multiples of the interval from the start, so that the time between does not add
    /// up; those that are over already are left out.
    /// @return false when it is time to end: a signal came, or nobody reads the standard output any more.
    bool wait();

private:
    using Clock = std::chrono::steady_clock;

    const Interruption fInterruption {};
    const Clock::duration fInterval;
    Clock::time_point fNext;
};
