#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreFoundation/Runtime.h>
#include <DiskArbitration/DiskArbitration.h>

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// What a caller was told.
struct Told {
    std::string disk;
    std::optional<DAReturn> refusal; ///< none when it was done
    std::string sentence;
    int32_t process; ///< 0 for none
    std::thread::id thread;
};

/// What a disk's description has for a key, as text: numbers and booleans by their description, URLs as their path. "" for
/// no such disk or value.
inline std::string DescribedAs(DADiskRef disk, CFStringRef key)
{
    const cf::Owned<CFDictionaryRef> all(DADiskCopyDescription(disk));
    CFTypeRef const value = all ? CFDictionaryGetValue(all.get(), key) : nullptr;
    if (value == nullptr || CFGetTypeID(value) == CFStringGetTypeID())
        return cf::TextOf(value);
    if (CFGetTypeID(value) == CFURLGetTypeID())
        return cf::TextOf(cf::Owned<CFStringRef>(
            CFURLCopyFileSystemPath(static_cast<CFURLRef>(value), kCFURLPOSIXPathStyle))
                              .get());
    return cf::TextOf(cf::Owned<CFStringRef>(CFCopyDescription(value)).get());
}

/// Makes requests and waits for what is told. A session is there once it was started.
class Telling {
protected:
    void startSession()
    {
        session.reset(DASessionCreate(nullptr));
        DASessionScheduleWithRunLoop(session.get(), CFRunLoopGetCurrent(), kCFRunLoopDefaultMode);
    }

    cf::Owned<DADiskRef> disk(const char* name) const
    {
        return cf::Owned<DADiskRef>(DADiskCreateFromBSDName(nullptr, session.get(), name));
    }
    std::string described(const char* name, CFStringRef key) const
    {
        return DescribedAs(disk(name).get(), key);
    }

    /// The callback of all requests, with self() as its context. Stops the loop.
    static void OnAnswer(DADiskRef disk, DADissenterRef dissenter, void* context)
    {
        Told answer { DADiskGetBSDName(disk), {}, "", 0, std::this_thread::get_id() };
        if (dissenter != nullptr) {
            answer.refusal = DADissenterGetStatus(dissenter);
            answer.sentence = cf::TextOf(DADissenterGetStatusString(dissenter));
            if (CFTypeRef const number
                = CFDictionaryGetValue(reinterpret_cast<CFDictionaryRef>(dissenter), CFSTR("DAProcessID")))
                CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberSInt32Type, &answer.process);
        }
        static_cast<Telling*>(context)->answers.push_back(std::move(answer));
        CFRunLoopStop(CFRunLoopGetCurrent());
    }

    void* self() { return this; }

    /// Runs the loop until somebody is told something. @return that; nothing when nobody is for many seconds.
    Told next()
    {
        const size_t before = answers.size();
        EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 30, false), kCFRunLoopRunStopped);
        EXPECT_EQ(answers.size(), before + 1);
        return answers.size() > before ? answers.back() : Told {};
    }
    /// Whether nobody is told anything for a while.
    bool isSilent()
    {
        const size_t before = answers.size();
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.2, false);
        return answers.size() == before;
    }

    Told mountDisk(const char* name, UInt32 options = 0, std::vector<CFStringRef> arguments = {})
    {
        arguments.push_back(nullptr);
        DADiskMountWithArguments(disk(name).get(), nullptr, options, OnAnswer, this, arguments.data());
        return next();
    }
    Told unmountDisk(const char* name, UInt32 options = 0)
    {
        DADiskUnmount(disk(name).get(), options, OnAnswer, this);
        return next();
    }
    Told ejectDisk(const char* name)
    {
        DADiskEject(disk(name).get(), kDADiskEjectOptionDefault, OnAnswer, this);
        return next();
    }
    Told renameDisk(const char* name, CFStringRef to)
    {
        DADiskRename(disk(name).get(), to, kDADiskRenameOptionDefault, OnAnswer, this);
        return next();
    }

    cf::Owned<DASessionRef> session {};
    std::vector<Told> answers {};
};
