#pragma once

#include <CoreFoundation/MacTypes.h>

// Answers of the system's functions. 0 is noErr.

enum {
    nsvErr = -35, ///< no such volume
    ioErr = -36,
    fnfErr = -43, ///< file not found
    dupFNErr = -48, ///< the file exists
    paramErr = -50,
    permErr = -54, ///< not permitted
    memFullErr = -108,
    procNotFound = -600 ///< no such process
};

enum { errAENotAppleEvent = -1707, errAEEventNotHandled = -1708 };
