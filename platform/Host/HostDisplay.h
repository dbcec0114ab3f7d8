#pragma once

/// Whether there is a display to show windows on; on a Mac there always is.
bool HostHasDisplay();

/// Sees to it that the toolkit starts in time. It waits for the session bus, part of it without end, so a bus that does not
/// let this program in within two seconds is taken out of the environment: windows then come without what needs one. Call
/// it before the toolkit is started, without other threads. On a Mac it does nothing.
void HostPrepareForWindows();
