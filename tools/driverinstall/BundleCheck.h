#pragma once

#include "tools/driverinstall/Outcome.h"
#include <string>

/// Whether a bundle that nobody else can change is a kernel extension: Contents/Info.plist, or Info.plist
/// where there is no folder Contents, is a property list of at most 1 MiB with texts for CFBundleIdentifier
/// and CFBundleVersion; its CFBundlePackageType, if any, is KEXT; and the executable that CFBundleExecutable
/// names, if any, is there.
/// @param bundle its top folder, already accepted by CheckTree().
/// @param version set to CFBundleVersion where the outcome is ok.
/// @return ok, checkFailed, or diskError.
Outcome CheckBundle(int bundle, std::string& version);
