#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDate.h>

// Every thread has a run loop. While it runs, it waits, without taking any of the processor's time, until one of its sources
// has something to do, calls that source back on the loop's thread, and waits again.
//
// Sources may be added, removed, signalled and invalidated, and loops stopped and woken up, from any thread and from
// callbacks. Callbacks may run the loop again. Handing null where there may be none is a fault of the program.

CF_EXTERN_C_BEGIN

using CFRunLoopRef = struct __CFRunLoop*;
using CFRunLoopSourceRef = struct __CFRunLoopSource*;
using CFRunLoopMode = CFStringRef;

enum CFRunLoopRunResult : SInt32 {
    kCFRunLoopRunFinished = 1, ///< the mode had no source
    kCFRunLoopRunStopped = 2,
    kCFRunLoopRunTimedOut = 3,
    kCFRunLoopRunHandledSource = 4
};

CF_EXPORT const CFRunLoopMode kCFRunLoopDefaultMode;

/// What a source is and does; a version-0 context, the only kind here. All functions but `perform` may be null.
struct CFRunLoopSourceContext {
    CFIndex version; ///< 0
    void* info;
    const void* (*retain)(const void* info);
    void (*release)(const void* info);
    CFStringRef (*copyDescription)(const void* info); ///< is not asked
    Boolean (*equal)(
        const void* info1, const void* info2); ///< is not asked: sources are compared by identity
    CFHashCode (*hash)(const void* info); ///< is not asked
    void (*schedule)(void* info, CFRunLoopRef rl, CFRunLoopMode mode); ///< after it was added to a mode
    void (*cancel)(void* info, CFRunLoopRef rl, CFRunLoopMode mode); ///< after it was taken from a mode
    void (*perform)(void* info); ///< once after each signal, or after several at once
};

CF_EXPORT CFTypeID CFRunLoopGetTypeID();
/// @return the calling thread's, which lives as long as the thread, or as somebody holds it.
CF_EXPORT CFRunLoopRef CFRunLoopGetCurrent();

/// Runs the calling thread's loop in the default mode until it is stopped or has no source left.
CF_EXPORT void CFRunLoopRun();
/// @param seconds at most; 0 or less for what is ready now, without waiting.
/// @param returnAfterSourceHandled whether to end after the first callback.
CF_EXPORT CFRunLoopRunResult CFRunLoopRunInMode(
    CFRunLoopMode mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled);
/// Ends the innermost of the runs that the loop is in; nothing where it does not run.
CF_EXPORT void CFRunLoopStop(CFRunLoopRef rl);
/// Lets a waiting loop look at its sources, which one has to do after signalling one.
CF_EXPORT void CFRunLoopWakeUp(CFRunLoopRef rl);
/// Whether the loop waits for something to do at this moment.
CF_EXPORT Boolean CFRunLoopIsWaiting(CFRunLoopRef rl);

/// Each source counts once in a mode; an invalid one is not added.
CF_EXPORT void CFRunLoopAddSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode);
CF_EXPORT void CFRunLoopRemoveSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode);
CF_EXPORT Boolean CFRunLoopContainsSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode);

CF_EXPORT CFTypeID CFRunLoopSourceGetTypeID();
/// @param order of callbacks when several sources are ready: lower numbers first.
/// @param context copied. @return to be released by the caller.
CF_EXPORT CFRunLoopSourceRef CFRunLoopSourceCreate(
    CFAllocatorRef allocator, CFIndex order, CFRunLoopSourceContext* context) CF_RETURNS_RETAINED;
/// Marks it as having something to do. It does it when its loop looks next.
CF_EXPORT void CFRunLoopSourceSignal(CFRunLoopSourceRef source);
/// Takes it from all modes of all loops, for good.
CF_EXPORT void CFRunLoopSourceInvalidate(CFRunLoopSourceRef source);
CF_EXPORT Boolean CFRunLoopSourceIsValid(CFRunLoopSourceRef source);

CF_EXTERN_C_END
