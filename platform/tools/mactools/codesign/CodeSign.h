#pragma once

#include "Tool.h"

/// codesign: looks at bundles' seals. It signs nothing.
///
/// Checked are a bundle's resources: every file and link in its contents folder against the seal in
/// _CodeSignature/CodeResources, and nested bundles against the seals of their own, always in full.
/// Not checked is what a Mac keeps in the signature of the main executable, which this host's programs do not carry:
/// the main executable itself, Info.plist, the seal, who made it, and the code hashes and requirements of nested code.
/// A damaged bundle is found out, then; one that was altered and sealed anew is not.
///
/// @return 0 when all paths are good, 1 when one is not, 2 for a wrong command line.
int CodeSign(const Arguments& arguments);
