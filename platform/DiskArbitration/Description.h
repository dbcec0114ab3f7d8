#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <DiskArbitration/Disk.h>

namespace da {

/// What DADiskCopyDescription answers; to be released by the caller.
CFDictionaryRef CreateDescription(const __DADisk& disk) CF_RETURNS_RETAINED;

}
