#include "RestartRequest.h"

#include "MacErrors.h"

#include <CoreFoundation/CoreFoundation.h>
#include <Host/AtomicFile.h>
#include <Host/Folders.h>
#include <Host/HostPath.h>

#include <array>
#include <cerrno>
#include <climits>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

struct Release {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};
using Object = std::unique_ptr<const void, Release>;

OSStatus StatusOf(int error)
{
    switch (error) {
    case 0:
        return noErr;
    case EACCES:
    case EPERM:
    case EROFS:
        return permErr;
    default:
        return ioErr;
    }
}

/// This program's path; a part of the text that is not UTF-8 makes it unreadable, and then it is "".
Object ProgramPath()
{
    std::array<char, PATH_MAX> path {};
    (void)!readlink("/proc/self/exe", path.data(), path.size() - 1);
    Object text(CFStringCreateWithCString(kCFAllocatorDefault, path.data(), kCFStringEncodingUTF8));
    return text ? std::move(text) : Object(CFRetain(CFSTR("")));
}

/// The record as XML; null when memory is short.
Object RestartRequest()
{
    const SInt32 process = getpid();
    const Object now(CFDateCreate(kCFAllocatorDefault, CFAbsoluteTimeGetCurrent()));
    const Object number(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &process));
    const Object program = ProgramPath();
    std::array keys { static_cast<const void*>(CFSTR("Requested")),
        static_cast<const void*>(CFSTR("ProcessID")), static_cast<const void*>(CFSTR("Program")) };
    std::array values { now.get(), number.get(), program.get() };
    const Object request(CFDictionaryCreate(kCFAllocatorDefault, keys.data(), values.data(), keys.size(),
        &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    return Object(CFPropertyListCreateData(
        kCFAllocatorDefault, request.get(), kCFPropertyListXMLFormat_v1_0, 0, nullptr));
}

} // namespace

OSStatus RecordRestartRequest()
{
    const std::string path = HostRestartRequestPath();
    const int error = MakeFolders(path.substr(0, path.rfind('/')), 0755, 0755);
    if (error != 0 && error != EEXIST)
        return StatusOf(error);
    const Object request = RestartRequest();
    if (!request)
        return memFullErr;
    const auto* const data = static_cast<CFDataRef>(request.get());
    return StatusOf(
        WriteFileAtomically(path, CFDataGetBytePtr(data), static_cast<size_t>(CFDataGetLength(data))));
}
