#pragma once

/// Asks the system process to restart the computer. The answer says only whether the request was handed over;
/// the restart, and a user who stops it, come later.
/// @return the Apple Event Manager's status of the first step that failed; 0 when the request was sent.
int RestartMac();
