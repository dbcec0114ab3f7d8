#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <Host/Descriptor.h>

#include "CoreFoundation/Runtime.h"

#include <string>
#include <vector>

namespace codesign {

// What lies below an open folder, reached without following a link anywhere on the way.

/// @param relative names with slashes between them; "" for the folder itself. @param flags as of open().
/// @return none on failure, with errno: ELOOP or ENOTDIR for a link.
Descriptor OpenBeneath(int folder, const std::string& relative, int flags);

/// @param dictionary receives the property list in the file, or null where that is damaged or no dictionary.
/// @return 0, or why the file could not be read: an errno, EISDIR and EINVAL for what is no regular file, EFBIG.
int ReadDictionaryBeneath(int folder, const std::string& relative, cf::Owned<CFDictionaryRef>& dictionary);

/// @param names receives what the folder holds, sorted. @return 0 or an errno.
int ListFolder(int folder, std::vector<std::string>& names);

/// @return what a link says; "" where there is no link of that name.
std::string LinkTarget(int folder, const std::string& name);

}
