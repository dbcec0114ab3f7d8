#include "CFFileDescriptor.h"

#include "RunLoopParts.h"

#include <memory>
#include <poll.h>
#include <unistd.h>
#include <utility>

using cf::Check;
using cf::RunLoopLock;

namespace {

/// Keeps the info from the creation of an object until that is invalid and the last callback has returned.
struct HeldContext {
    explicit HeldContext(const CFFileDescriptorContext& itsContext)
        : context(itsContext)
        , info(context.retain != nullptr ? context.retain(context.info) : context.info)
    {
    }
    HeldContext(const HeldContext&) = delete;
    HeldContext& operator=(const HeldContext&) = delete;
    ~HeldContext()
    {
        if (context.release != nullptr)
            context.release(info);
    }

    const CFFileDescriptorContext context;
    void* const info; ///< as it was retained
};

}

struct __CFFileDescriptor : cf::Object {
    /// @param itsContext null for none.
    __CFFileDescriptor(int file, bool closesIt, CFFileDescriptorCallBack itsCallBack,
        const CFFileDescriptorContext* itsContext)
        : Object(typeID())
        , callBack(itsCallBack)
        , watch { file }
        , held(
              std::make_shared<HeldContext>(itsContext != nullptr ? *itsContext : CFFileDescriptorContext {}))
        , closes(closesIt)
    {
    }
    ~__CFFileDescriptor() override { invalidate(); }
    static CFTypeID typeID();

    void enable(CFOptionFlags types, bool areEnabled);
    void invalidate();
    bool isValid() const;
    void perform();

    const CFFileDescriptorCallBack callBack;

    // Guarded by the lock of the run loops.
    cf::Watch watch; ///< the descriptor is negative when this is not valid any more
    std::shared_ptr<const HeldContext> held; ///< null when this is not valid any more
    std::vector<__CFRunLoopSource*> sources {}; ///< those there are; each takes itself out

private:
    CFOptionFlags takeReady(); ///< with the lock held

    const bool closes;
};

namespace {

struct Kind {
    CFOptionFlags callBack;
    short event;
    short ready; ///< what is news to whoever waits for it: failures and the end as well
};

constexpr Kind kKinds[] = {
    { kCFFileDescriptorReadCallBack, POLLIN, POLLIN | POLLHUP | POLLERR | POLLNVAL },
    { kCFFileDescriptorWriteCallBack, POLLOUT, POLLOUT | POLLHUP | POLLERR | POLLNVAL },
};

/// The source that waits for a file. It holds the object that the file belongs to.
struct FileSource : __CFRunLoopSource {
    FileSource(CFIndex itsOrder, __CFFileDescriptor& itsFile)
        : __CFRunLoopSource(itsOrder,
            { 0, &itsFile, CFRetain, CFRelease, nullptr, nullptr, nullptr, nullptr, nullptr,
                [](void* info) { static_cast<__CFFileDescriptor*>(info)->perform(); } },
            &itsFile.watch)
        , fFile(itsFile)
    {
        const std::lock_guard lock(RunLoopLock());
        isValid = fFile.watch.descriptor >= 0;
        fFile.sources.push_back(this);
    }
    ~FileSource() override
    {
        const std::lock_guard lock(RunLoopLock());
        std::erase(fFile.sources, this);
    }

private:
    __CFFileDescriptor& fFile;
};

}

CFTypeID __CFFileDescriptor::typeID()
{
    static const CFTypeID id = cf::RegisterType("CFFileDescriptor");
    return id;
}

void __CFFileDescriptor::enable(CFOptionFlags types, bool areEnabled)
{
    const std::lock_guard lock(RunLoopLock());
    for (const Kind& kind : kKinds) {
        if ((types & kind.callBack) != 0)
            watch.events
                = static_cast<short>(areEnabled ? watch.events | kind.event : watch.events & ~kind.event);
    }
    for (const __CFRunLoopSource* const source : sources)
        source->wakeLoops();
}

void __CFFileDescriptor::invalidate()
{
    int file = -1;
    std::shared_ptr<const HeldContext> last; // goes without the lock
    {
        const std::lock_guard lock(RunLoopLock());
        last = std::exchange(held, nullptr);
        file = std::exchange(watch.descriptor, -1);
    }
    if (file < 0)
        return;
    for (;;) {
        cf::Owned<CFRunLoopSourceRef> used; // in a loop, which holds it
        {
            const std::lock_guard lock(RunLoopLock());
            for (__CFRunLoopSource* const source : sources) {
                source->isValid = false;
                if (!source->places.empty())
                    used.reset(cf::Retained(source));
            }
        }
        if (!used)
            break;
        CFRunLoopSourceInvalidate(used.get());
    }
    if (closes)
        close(file);
}

bool __CFFileDescriptor::isValid() const
{
    const std::lock_guard lock(RunLoopLock());
    return watch.descriptor >= 0;
}

/// @return what is enabled and the file is ready for. It is disabled from then on.
CFOptionFlags __CFFileDescriptor::takeReady()
{
    pollfd file { watch.descriptor, watch.events, 0 };
    CFOptionFlags types = 0;
    if (poll(&file, 1, 0) <= 0)
        return 0;
    for (const Kind& kind : kKinds) {
        if ((watch.events & kind.event) == 0 || (file.revents & kind.ready) == 0)
            continue;
        types |= kind.callBack;
        watch.events = static_cast<short>(watch.events & ~kind.event);
    }
    return types;
}

void __CFFileDescriptor::perform()
{
    const cf::Owned<CFFileDescriptorRef> kept(cf::Retained(this));
    std::shared_ptr<const HeldContext> current;
    CFOptionFlags types = 0;
    {
        const std::lock_guard lock(RunLoopLock());
        current = held;
        types = takeReady();
    }
    if (current && types != 0)
        callBack(this, types, current->info);
}

CFTypeID CFFileDescriptorGetTypeID() { return __CFFileDescriptor::typeID(); }

CFFileDescriptorRef CFFileDescriptorCreate(CFAllocatorRef /*allocator*/, CFFileDescriptorNativeDescriptor fd,
    Boolean closeOnInvalidate, CFFileDescriptorCallBack callout, const CFFileDescriptorContext* context)
{
    if (callout == nullptr)
        cf::Fail("CFFileDescriptorCreate", "needs somebody to call");
    return fd >= 0 ? new __CFFileDescriptor(fd, closeOnInvalidate != 0, callout, context) : nullptr;
}

void CFFileDescriptorEnableCallBacks(CFFileDescriptorRef f, CFOptionFlags callBackTypes)
{
    Check(f, "CFFileDescriptorEnableCallBacks").enable(callBackTypes, true);
}

void CFFileDescriptorDisableCallBacks(CFFileDescriptorRef f, CFOptionFlags callBackTypes)
{
    Check(f, "CFFileDescriptorDisableCallBacks").enable(callBackTypes, false);
}

void CFFileDescriptorInvalidate(CFFileDescriptorRef f)
{
    const cf::Owned<CFFileDescriptorRef> kept(cf::Retained(&Check(f, "CFFileDescriptorInvalidate")));
    f->invalidate();
}

Boolean CFFileDescriptorIsValid(CFFileDescriptorRef f)
{
    return Check(f, "CFFileDescriptorIsValid").isValid();
}

CFRunLoopSourceRef CFFileDescriptorCreateRunLoopSource(
    CFAllocatorRef /*allocator*/, CFFileDescriptorRef f, CFIndex order)
{
    __CFFileDescriptor& file = Check(f, "CFFileDescriptorCreateRunLoopSource");
    return file.isValid() ? new FileSource(order, file) : nullptr;
}
