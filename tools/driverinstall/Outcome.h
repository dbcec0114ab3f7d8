#pragma once

#include <string>

/// How a run ended, as its exit status says it. The numbers are those of <sysexits.h> where one of them fits.
/// The extensions in /Library/Extensions are as asked at 0. At 74 the old or the new one is there, whole; on
/// a file system that cannot swap, possibly not before the next run has put it back. At all others nothing
/// has changed.
enum class ExitCode : int {
    ok = 0, ///< done, or there was nothing to remove
    usage = 64, ///< the arguments have neither of the two forms
    badName = 65, ///< the driver's name is not a bare bundle name ending in ".kext"
    badSource = 66, ///< the source cannot be read, or holds more than folders and plain files
    checkFailed = 67, ///< the copy is not an extension: Info.plist or the executable it names is wrong
    destinationRefused = 72, ///< /Library/Extensions lacks its parent, is no folder, or is open to others
    diskError = 74, ///< locking, copying, renaming or flushing failed
    busy = 75, ///< another run kept the folder locked for too long
    notPermitted = 77, ///< the effective user may not change /Library/Extensions
};

/// The end of a step or of the whole run: its exit status and one line of text for people.
struct Outcome {
    ExitCode code = ExitCode::ok;
    std::string text = {};

    bool ok() const { return code == ExitCode::ok; }
};

/// @param error the errno of the system call that failed; its message is added to `text`.
Outcome Failure(ExitCode code, const std::string& text, int error);
