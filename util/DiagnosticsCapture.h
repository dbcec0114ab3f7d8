#pragma once

// What the system's diagnostic tools say, saved in files. Each function replaces whatever lies at the path, sends one tool's
// standard output there, and waits for the tool, which can take minutes for the system profile; standard error stays the
// caller's.
//
// @param path of the file, as a Mac program writes it; its mode is 0644 less the process's mask. Null is refused.
// @return whether the tool ended by itself with status 0. Then the file holds what it said; after a failure there may be a
// part of it. A tool that cannot be started leaves an empty file and counts as having succeeded.

/// The device registry, with all properties, numbers in hexadecimal, in lines of 256 characters.
bool CaptureIORegToFile(const char* path);
/// The loaded kernel extensions.
bool CaptureKextStatToFile(const char* path);
/// The disks and their partitions.
bool CaptureDiskUtilToFile(const char* path);
/// The power settings.
bool CaptureSleepPreferencesToFile(const char* path);
/// Hardware and software in nineteen parts, as an XML property list.
bool CaptureSystemProfilerToFile(const char* path);
