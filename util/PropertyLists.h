#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

// Dictionaries and arrays as property lists in files and buffers. Read in any format, mutable throughout; written as XML.
// Files are read and written as in FileContents.h, with its limits.

/// @return a new object that the caller releases; null when the file cannot be read, is empty, damaged or holds an object
/// of another type.
CFMutableDictionaryRef CreateCFDictionaryWithContentsOfFile(const char* path);
CFMutableArrayRef CreateCFArrayWithContentsOfFile(const char* path);

/// @param length of the buffer in bytes. @return as above.
CFMutableDictionaryRef CreateCFDictionaryWithContentsOfBuffer(const void* buffer, uint32_t length);
CFMutableArrayRef CreateCFArrayWithContentsOfBuffer(const void* buffer, uint32_t length);

/// @param buffer receives a new block that the caller frees with free(); @param length its bytes. Null and 0 on failure.
/// @return false for null, and for an object that has no form as a property list.
bool CreateBufferFromCFDictionary(void** buffer, uint32_t* length, CFDictionaryRef dictionary);
bool CreateBufferFromCFArray(void** buffer, uint32_t* length, CFArrayRef array);

/// @return whether the file holds the object now. An object without a form leaves it alone; after another failure it may
/// be gone or cut.
bool SetContentsOfFileToCFDictionary(const char* path, CFDictionaryRef dictionary);
bool SetContentsOfFileToCFArray(const char* path, CFArrayRef array);
