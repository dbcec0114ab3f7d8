#pragma once

#include <string>

namespace launchd {

/// Exit statuses of launchctl. Scripts tell the refusals apart by them, so the numbers never change.
namespace ExitStatus {
constexpr int ok = 0;
constexpr int failed = 1;
constexpr int usage = 64;
constexpr int invalidJob = 109;
constexpr int notFound = 113;
constexpr int disabled = 119;
constexpr int badPermissions = 122;
constexpr int alreadyLoaded = 133;
constexpr int otherSession = 134;
}

/// What became of one step: a status for programs and, unless that is ok, a sentence for people.
struct Answer {
    int status = ExitStatus::ok;
    std::string message;

    bool ok() const { return status == ExitStatus::ok; }
};

} // namespace launchd
