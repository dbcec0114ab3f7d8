#pragma once

#include <CoreServices/CoreServices.h>
#include <cstdint>
#include <sys/types.h>

// Small files read and written whole. Paths are zero-terminated and as a Mac program writes them; null is no path. New files
// have the mode 0644 less the process's mask, where none is asked for. Writing is not atomic: what was there is removed
// first. Nothing here waits for a pipe or device.

/// @param buffer receives a new block that the caller frees with free(). @param length receives its bytes. Both are null
/// and 0 on failure, and must not be null.
/// @return noErr; fnfErr for what is not there, a folder, an empty file and one of more than 1 GiB; permErr when it may not
/// be opened; ioErr when less could be read than the file had; memFullErr; paramErr for nulls.
OSStatus CreateBufferFromContentsOfFile(const char* path, void** buffer, uint32_t* length);

/// Replaces whatever lies at the path, a folder with all it holds too. @param buffer may be null for a length of 0.
/// @return noErr; permErr when something is in the way that cannot be removed, or the file cannot be opened; ioErr when
/// not all could be written; paramErr for nulls.
OSStatus CreateFileFromContentsOfBuffer(const void* buffer, uint32_t length, const char* path);

/// @param maximumLength in bytes, 0 for all. @param keepStart which part of a longer file is meant: its first or its last
/// bytes. @return a new object that the caller releases; null for what cannot be read, as above.
CFDataRef CreateCFDataFromContentsOfFile(const char* path, uint32_t maximumLength, bool keepStart);

/// @return false, with nothing written, for data that is empty or null; else true, whatever came of writing.
bool SetContentsOfFileToCFData(const char* path, CFDataRef data);

/// Writes one file's contents, a text and another file's contents behind each other, 4096 bytes at most. The output may be
/// one of the files.
/// @param first, @param text, @param second each may be null. @param mode of a new output, less the process's mask; 0 for
/// 0644.
/// @return whether all was written. Unless all could be read and is short enough, the output is not touched.
bool MergeFiles(const char* first, const char* text, const char* second, const char* output, mode_t mode);
