#pragma once

#include "util/CFRef.h"

/// Archives a text as the non-keyed archiver of a Mac does: a typed stream ("streamtyped", version 4) that holds one
/// NSString.
/// @return null for null.
CFRef<CFDataRef> ArchivedDataWithRootObject(CFStringRef text);

/// The text in such a stream, whichever machine of either byte order has written it.
/// @return null for null, and for anything but a whole stream that holds one string.
CFRef<CFStringRef> UnarchiveObjectWithData(CFDataRef data);
