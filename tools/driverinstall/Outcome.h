#pragma once

#include <string>

/// How a run ended, as its exit status says it. The numbers are those of <sysexits.h> where one of them fits.
///
/// | Status | Meaning                                                                             |
/// /Library/Extensions |
/// |--------|-------------------------------------------------------------------------------------|---------------------|
/// | 0      | done, or there was nothing to remove                                                | as asked
/// | | 64     | the arguments have neither of the two forms                                         |
/// unchanged           | | 65     | the driver's name is not a bare bundle name ending in ".kext" | unchanged
/// | | 66     | the source cannot be read, or holds more than folders and plain files               |
/// unchanged           | | 67     | the copy is not an extension: Info.plist or the executable it names is
/// wrong         | unchanged           | | 72     | /Library/Extensions is missing with its parent, not a
/// folder, or open to others     | unchanged           | | 74     | copying, renaming or flushing failed |
/// old or new, whole   | | 75     | another run kept the folder locked for too long | unchanged           |
/// | 77     | the effective user may not change /Library/Extensions                               | unchanged
/// |
enum class ExitCode : int {
    ok = 0,
    usage = 64,
    badName = 65,
    badSource = 66,
    checkFailed = 67,
    destinationRefused = 72,
    diskError = 74,
    busy = 75,
    notPermitted = 77,
};

/// The end of a step or of the whole run: its exit status and one line of text for people.
struct Outcome {
    ExitCode code = ExitCode::ok;
    std::string text = {};

    bool ok() const { return code == ExitCode::ok; }
};

/// @param error the errno of the system call that failed; its message is added to `text`.
Outcome Failure(ExitCode code, const std::string& text, int error);
