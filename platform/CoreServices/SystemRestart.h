#pragma once

#include <CoreFoundation/MacTypes.h>

/// Asks the system's login manager to restart the computer, which may ask the user for a password first; returns when
/// that is decided. Whoever asks must still be there for it, or it is refused.
/// @return noErr when the restart has begun; permErr when it was refused; procNotFound when there is no login manager;
/// ioErr when it fails otherwise or does not decide within two minutes.
OSStatus RestartSystem();
