#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstddef>
#include <cstdint>

// A version is a NumVersionVariant: four bytes, compared as one unsigned 32-bit whole. From the most
// significant byte: the major revision as two binary-coded decimal digits; minor and bug-fix revision, a
// nibble each; the stage; the non-release revision, 0 to 255. Stage codes rise from development to final, so
// a larger whole is a later version. The whole 0 means that there is no version.

/// Reads a version text: major.minor[.bugfix][space][d|a|b number]. A major revision has one or two digits,
/// minor and bug-fix go from 0 to 15, the number is below 256 and required after a stage letter. What follows
/// that number is ignored, and so is what begins with a digit after the revisions; anything else is refused.
/// @param text zero-terminated; null is refused. @param version written only on success.
/// @return whether the text is a version.
bool ConvertStringToNumVersion(const char* text, uint32_t* version);

/// Writes a version as text: "2.1.3", "1.2b3", or "1.2 b3" with `spaceBeforeStage`. A bug-fix revision of 0
/// is left out, and so is the non-release revision of a final version. Of a non-release revision of 100 and
/// more a tens digit of 0 is left out: 105 is written 15. Installed software prints versions so, and the
/// texts have to agree.
/// @param buffer filled with zeros over its full size first, then holds the text, cut to fit and always
/// terminated; "" for a version that has no text (a major byte that is not two decimal digits, or an unknown
/// stage).
/// @param size of the buffer in bytes; 14 hold every version.
void ConvertNumVersionToString(uint32_t version, char* buffer, size_t size, bool spaceBeforeStage);

/// The "CFBundleVersion" of the bundle at a path.
/// @param path as a Mac program writes it; found through HostPath. Null is no bundle.
/// @return the whole; 0 when there is no bundle, or its version is not a text of at most 15 ASCII characters
/// that ConvertStringToNumVersion reads.
uint32_t BundleVersion(const char* path);
