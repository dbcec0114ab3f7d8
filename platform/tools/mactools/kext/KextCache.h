#pragma once

#include "Tool.h"

/// kextcache: writes down which kernel extensions a volume has, so that whoever wants to know need not read all their
/// bundles: System/Library/Caches/com.apple.kext.caches/Startup/IdentifiersAndVersions.plist on that volume, a
/// dictionary of identifier to OSBundlePath, CFBundleVersion and ModificationDate. The file is replaced as a whole.
/// Extensions that cannot be read are complained of and left out.
/// @return 0, also when there was nothing to do; 64 for a wrong command line; 1 when the volume is none, has no place for
/// extensions, or may not be written to.
int KextCache(const Arguments& arguments);
