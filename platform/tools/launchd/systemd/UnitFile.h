#pragma once

#include "job/JobFile.h"

#include <optional>
#include <string>
#include <string_view>

namespace launchd {

/// The largest unit file that is read, in bytes. What UnitText() makes of the largest job can be four times
/// the job's size.
constexpr size_t maxUnitBytes = 8 * maxJobBytes;

/// What our unit files say about the job beside what systemd reads.
struct UnitNotes {
    std::string path; ///< JobPathOf() the job's file
    std::string program; ///< Mac path
    std::string session; ///< session type that the job is loaded into
};

/// The name under which systemd knows a job.
std::string UnitName(const std::string& label);

/// Writes a job as a systemd service:
/// - KeepAlive true is Restart=always. Conditions become the list of exit statuses and signals after which
///   the job comes back.
/// - ThrottleInterval is RestartSec. systemd counts it from the end of a run, so a job that has run for
///   longer than that waits once more, which launchd would not ask of it.
/// - A job that starts when it is loaded also starts with the user's session: with the graphical one if it is
///   limited to sessions of type Aqua, which it then ends with too. Others lie ready and start nothing.
/// - What leads the job to the start-up volume is fixed at the time of the call, as the paths on it are.
/// @param problem set to one sentence where systemd could not be told exactly what the job asks for.
std::optional<std::string> UnitText(const JobFile& file, const std::string& session, std::string& problem);

/// @return what UnitText() has noted, or nothing for a text that it has not made.
std::optional<UnitNotes> ReadUnit(std::string_view text);

} // namespace launchd
