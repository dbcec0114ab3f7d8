#pragma once

#include <CoreFoundation/MacTypes.h>

/// Records at HostRestartRequestPath() that this process wants a restart, making the folders above it where
/// they are missing. A request that is there already is replaced.
/// @return noErr; permErr; ioErr; memFullErr.
OSStatus RecordRestartRequest();
