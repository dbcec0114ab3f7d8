#include "RunLoopParts.h"

using cf::Check;
using cf::RunLoopLock;

namespace {

CFRunLoopSourceContext Retained(CFRunLoopSourceContext context)
{
    if (context.retain != nullptr)
        context.info = const_cast<void*>(context.retain(context.info));
    return context;
}

}

CFTypeID __CFRunLoopSource::typeID()
{
    static const CFTypeID id = cf::RegisterType("CFRunLoopSource");
    return id;
}

__CFRunLoopSource::__CFRunLoopSource(
    CFIndex itsOrder, const CFRunLoopSourceContext& itsContext, cf::Watch* itsWatch)
    : Object(typeID())
    , order(itsOrder)
    , context(Retained(itsContext))
    , watch(itsWatch)
{
}

__CFRunLoopSource::~__CFRunLoopSource()
{
    if (context.release != nullptr)
        context.release(context.info);
}

void __CFRunLoopSource::wakeLoops() const
{
    for (const cf::Place& place : places)
        place.loop->wake();
}

CFTypeID CFRunLoopSourceGetTypeID() { return __CFRunLoopSource::typeID(); }

CFRunLoopSourceRef CFRunLoopSourceCreate(
    CFAllocatorRef /*allocator*/, CFIndex order, CFRunLoopSourceContext* context)
{
    if (context == nullptr || context->version != 0 || context->perform == nullptr)
        cf::Fail("CFRunLoopSourceCreate", "needs a context of version 0");
    return new __CFRunLoopSource(order, *context, nullptr);
}

void CFRunLoopSourceSignal(CFRunLoopSourceRef source)
{
    __CFRunLoopSource& own = Check(source, "CFRunLoopSourceSignal");
    const std::lock_guard lock(RunLoopLock());
    own.isSignalled = true;
}

void CFRunLoopSourceInvalidate(CFRunLoopSourceRef source)
{
    __CFRunLoopSource& own = Check(source, "CFRunLoopSourceInvalidate");
    const cf::Owned<CFRunLoopSourceRef> kept(cf::Retained(source)); // its loops may hold it alone
    for (;;) {
        cf::Owned<CFRunLoopRef> loop;
        std::string mode;
        {
            const std::lock_guard lock(RunLoopLock());
            own.isValid = false;
            if (own.places.empty())
                return;
            loop.reset(cf::Retained(own.places.back().loop));
            mode = own.places.back().mode;
        }
        loop->remove(own, mode);
    }
}

Boolean CFRunLoopSourceIsValid(CFRunLoopSourceRef source)
{
    const __CFRunLoopSource& own = Check(source, "CFRunLoopSourceIsValid");
    const std::lock_guard lock(RunLoopLock());
    return own.isValid;
}
