#pragma once

#include <CoreFoundation/CFDictionary.h>

#include <cstdint>
#include <string>
#include <vector>

#include "CoreFoundation/Runtime.h"

/// Files of more than this count as unreadable: no preferences, tables or information files come near, and a
/// program should not take all memory over a stray one.
constexpr int64_t kFileSizeLimit = int64_t { 64 } << 20;

/// @param path host path; a symbolic link is followed. @param bytes receives the whole content of a regular
/// file.
/// @return 0, or why it could not be read: an errno, EISDIR and EINVAL for what is no regular file, EFBIG.
int ReadFileBytes(const std::string& path, std::vector<uint8_t>& bytes);

/// @param dictionary receives the immutable dictionary that the property list in the file is, or null where
/// it is damaged or something else.
/// @return as above.
int ReadDictionaryFile(const std::string& path, cf::Owned<CFDictionaryRef>& dictionary);
