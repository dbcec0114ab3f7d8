#pragma once

#include <IOKit/Registry.h>

namespace iokit {

/// Whether an entry is a service that others may match, and all is true of it that a matching dictionary asks for (see
/// IOKitLib.h).
bool Matches(const Entry& entry, CFDictionaryRef matching);

}
