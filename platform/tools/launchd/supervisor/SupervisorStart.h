#pragma once

#include <string>

namespace launchd {

/// What a starting supervisor writes to the descriptor that it is given with `--notify`, before it closes it:
/// one of these words, or a sentence about why it cannot serve.
namespace StartNotice {
constexpr const char* serving = "serving"; ///< its socket answers
constexpr const char* busy = "busy"; ///< another one holds the folder, which serves, or soon will
}

/// Starts the `launchd` that lies beside this program, detached: in a session of its own, a child of init,
/// without this program's descriptors, folder and terminal. Returns when it has given notice, at most 10
/// seconds later.
/// @return its notice, or a sentence about why there is none.
std::string StartSupervisor();

} // namespace launchd
