#pragma once

#include <cstdint>
#include <string>

// A marker that tells whether something has run since the temporary folder was last emptied, with one value of the
// caller's choosing, such as a version. It is "/tmp/<name>", 4 bytes, the value big-endian. Any thread.

/// @param value the marker's value, 0 without a valid one; may be null. @return whether there is no valid marker.
bool FirstLaunch(const std::string& name, uint32_t* value = nullptr);

/// Writes the marker so that everybody may write it again. Failures are not reported: the next launch then counts as the
/// first again. @param name ASCII; with any other there is no marker. A path beyond 1023 bytes is cut there.
void SetFirstLaunch(const std::string& name, uint32_t value);
