#pragma once

#include "tools/driverinstall/Arguments.h"
#include "tools/driverinstall/Outcome.h"
#include <chrono>
#include <string>

/// How long a run waits for another one to end.
inline constexpr std::chrono::milliseconds longestLockWait = std::chrono::seconds(30);

/// Puts the bundle `source`/`name` into the folder of extensions, in place of what may have that name there.
/// The source is only read. A copy is made beside the destination, checked there, and swapped in; killed at
/// any moment, the run leaves the old or the new extension, whole (BundleSwap.h tells where).
/// @param extensions host path of the folder, which is made, whatever the source, where only it is missing.
/// @param source host path of the folder that the bundle lies in.
/// @return ok, or any code but usage and badName; see ExitCode for what each leaves behind.
Outcome InstallExtension(const std::string& extensions, const std::string& name, const std::string& source,
    std::chrono::milliseconds longestWait = longestLockWait);

/// Removes whatever is called `name` in the folder of extensions. Nothing there is a success.
/// @return ok, destinationRefused, notPermitted, busy or diskError.
Outcome UninstallExtension(const std::string& extensions, const std::string& name,
    std::chrono::milliseconds longestWait = longestLockWait);
