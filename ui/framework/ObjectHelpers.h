#pragma once

#include "util/CFRef.h"

/// A new mutable array with a copy of each element, in order. What the elements hold is shared.
CFRef<CFMutableArrayRef> CopyArrayAndObjects(CFArrayRef array);

/// An independent copy of a whole object graph.
/// @return null for null, and for what cannot be written to a property list.
CFRef<CFTypeRef> DeepCopyObject(CFTypeRef object);

/// Whether two objects describe themselves alike: the text 1 equals the number 1. Null equals nothing, not even null.
bool AreObjectsEqual(CFTypeRef a, CFTypeRef b);
