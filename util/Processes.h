#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>
#include <sys/sysctl.h>
#include <sys/types.h>
#include <vector>

// Running processes, code signatures, standard streams, process serial numbers. A failure is answered like the absence of
// what was asked for.

/// Leads standard input and output to nobody and closes standard error; the descriptor of nobody stays open. For children
/// about to execute a tool that shall not be heard.
/// @return -1 on failure, else 0.
int DisableStdIO();

/// The first other process of a name, from the output of "ps acxww". Only the first word of a command is compared, with
/// lines of fewer than 256 characters. Waits for ps; a signal that interrupts reading ends the search. Should
/// ps be missing, the child that was to become it comes back as a copy of the caller with the answer 0.
/// @param name null and "" are no names. @return the process, or 0.
pid_t Get_ProcessID(const char* name);

/// Looks for a process in a piece of the output of "ps acxww".
/// @param buffer zero-terminated; lines are cut apart in it, and a line without its end is moved to its beginning.
/// @param leftover receives the length of that line; 0 when the process was found.
/// @return the process, never the caller itself, or 0.
pid_t SearchBufferFor_PID(char* buffer, size_t* leftover, const char* name);

/// The kernel's record of every process that may be seen; empty when it cannot be had.
std::vector<kinfo_proc> ProcessTable();

/// How many processes have this short command name. It has 16 bytes at most; a longer one is nobody's.
int NumberOfProcessesWithName(const char* name);

/// Whether "codesign --verify" accepts what lies at the path. A tool that was killed counts as having accepted it. Should
/// it be missing, the child that was to become it comes back as a copy of the caller with the answer false.
/// @param path of at most 1023 bytes; null and longer ones are not valid.
bool CodeSignatureValid(const char* path);

bool KextCacheProcessRunning();
bool PreviewProcessRunning();

// A ProcessSerialNumber of two zeros is no process.

void InitializePSN_ToInvalid(ProcessSerialNumber* number);
bool IsPSN_Valid(const ProcessSerialNumber* number);
bool PSNsEqual(const ProcessSerialNumber* one, const ProcessSerialNumber* other);

/// The localized name of a running application.
/// @return borrowed until this thread asks again; null when there is no such application. Programs without a user interface
/// are none.
CFStringRef GetProcessNameForPID(pid_t process);
