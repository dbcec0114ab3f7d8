#pragma once

#include <string>

/// Copies a file or a whole folder, links as links, with modes, times and extended attributes. The copy grows
/// under a hidden name beside its destination and gets its own name when it is complete, so a copy that was
/// killed never looks like an item; what it left is removed first. Nothing is flushed to the disk, as in any
/// copying.
/// @param from, to host paths; the folder of `to` must exist, and nothing may be at `to`, not even a dangling
/// link.
/// @return 0, or the errno of the step that failed; then nothing is at `to` that was not there before.
int CopyItem(const std::string& from, const std::string& to);
