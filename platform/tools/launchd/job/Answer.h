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

// The answers that every service manager gives in the same words. `path` is the one that was asked about.

/// @param holder path of the file that the label is loaded from.
Answer AlreadyLoaded(const std::string& path, const std::string& label, const std::string& holder);
/// A job whose program does not run stays loaded, so that it can be seen in the list, is tried again if it is
/// to be kept alive, and goes with unload.
/// @param problem why it does not run, as a part of a sentence.
Answer LoadedBut(const std::string& path, const std::string& label, const std::string& problem);
Answer NotFound(const std::string& path);

} // namespace launchd
