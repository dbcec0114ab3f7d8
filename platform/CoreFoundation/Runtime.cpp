#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace cf {

namespace {

constexpr std::array<const char*, kFirstRegisteredType> kFixedTypeNames
    = { nullptr, "CFNull", "CFAllocator", "CFBoolean", "CFNumber", "CFString", "CFData", "CFDate", "CFUUID",
          "CFArray", "CFDictionary", "CFURL", "CFError" };

struct TypeNames {
    std::mutex mutex;
    std::vector<const char*> names { kFixedTypeNames.begin(), kFixedTypeNames.end() };
};

TypeNames& Types()
{
    // Never destroyed: objects may be described while the program's other statics go.
    static auto& types = *new TypeNames;
    return types;
}

const char* TypeName(CFTypeID type)
{
    TypeNames& types = Types();
    const std::lock_guard lock(types.mutex);
    return type < types.names.size() ? types.names[type] : nullptr;
}

const Object& Alive(CFTypeRef ref, const char* function)
{
    if (!ref)
        Fail(function, "called with null");
    return *static_cast<const Object*>(ref);
}

}

CFTypeID RegisterType(const char* name)
{
    TypeNames& types = Types();
    const std::lock_guard lock(types.mutex);
    types.names.push_back(name);
    return types.names.size() - 1;
}

void Object::release() const
{
    if (fCount.load(std::memory_order_relaxed) >= kImmortal)
        return;
    const int32_t before = fCount.fetch_sub(1, std::memory_order_acq_rel);
    if (before < 1)
        Fail("CFRelease", "released more often than retained");
    if (before == 1)
        destroy();
}

/// A container's contents go with it. Those that lie deeper than the stack may take wait until the ones around them are gone.
void Object::destroy() const
{
    constexpr int deepest = 1000;
    struct Thread {
        int depth;
        std::vector<const Object*>* waiting; ///< null without any: nothing is left to a thread's end
    };
    static thread_local Thread thread {};
    if (thread.depth == deepest) {
        if (thread.waiting == nullptr)
            thread.waiting = new std::vector<const Object*>;
        thread.waiting->push_back(this);
        return;
    }
    ++thread.depth;
    delete this;
    --thread.depth;
    if (thread.depth > 0 || thread.waiting == nullptr)
        return;
    const std::unique_ptr<std::vector<const Object*>> waiting(std::exchange(thread.waiting, nullptr));
    for (const Object* const object : *waiting)
        object->destroy();
}

CFStringRef Object::copyDescription() const
{
    std::array<char, 96> text {};
    (void)std::snprintf(text.data(), text.size(), "<%s %p>", TypeName(fType), static_cast<const void*>(this));
    return MakeString(text.data());
}

void Fail(const char* function, const char* problem)
{
    (void)std::fprintf(stderr, "%s: %s\n", function, problem);
    std::abort();
}

void CheckRange(CFRange range, CFIndex length, const char* function)
{
    if (range.location < 0 || range.length < 0 || range.location > length
        || range.length > length - range.location)
        Fail(function, "range out of bounds");
}

}

struct __CFNull : cf::Object {
    constexpr __CFNull()
        : Object(cf::kNullType, cf::Lifetime::Forever)
    {
    }
    CFStringRef copyDescription() const override { return cf::MakeString("<null>"); }
};

struct __CFAllocator : cf::Object {
    constexpr __CFAllocator()
        : Object(cf::kAllocatorType, cf::Lifetime::Forever)
    {
    }
};

namespace {

constinit cf::Constant<__CFNull> theNull;
constinit cf::Constant<__CFAllocator> theSystemAllocator;
constinit cf::Constant<__CFAllocator> theMallocAllocator;
constinit cf::Constant<__CFAllocator> theNullAllocator;

}

const CFNullRef kCFNull = &theNull.object;
const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFAllocatorRef kCFAllocatorSystemDefault = &theSystemAllocator.object;
const CFAllocatorRef kCFAllocatorMalloc = &theMallocAllocator.object;
const CFAllocatorRef kCFAllocatorNull = &theNullAllocator.object;

CFTypeID CFNullGetTypeID() { return cf::kNullType; }
CFTypeID CFAllocatorGetTypeID() { return cf::kAllocatorType; }

void* CFAllocatorAllocate(CFAllocatorRef allocator, CFIndex size, CFOptionFlags)
{
    if (size < 1 || allocator == kCFAllocatorNull)
        return nullptr;
    return std::malloc(static_cast<size_t>(size));
}

void CFAllocatorDeallocate(CFAllocatorRef allocator, void* ptr)
{
    if (allocator != kCFAllocatorNull)
        std::free(ptr);
}

CFTypeRef CFRetain(CFTypeRef cf)
{
    cf::Alive(cf, __func__).retain();
    return cf;
}

void CFRelease(CFTypeRef cf) { cf::Alive(cf, __func__).release(); }

CFIndex CFGetRetainCount(CFTypeRef cf) { return cf::Alive(cf, __func__).retainCount(); }

CFTypeID CFGetTypeID(CFTypeRef cf) { return cf::Alive(cf, __func__).type(); }

Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2)
{
    const cf::Object& first = cf::Alive(cf1, __func__);
    const cf::Object& second = cf::Alive(cf2, __func__);
    return &first == &second || (first.type() == second.type() && first.isEqual(second));
}

CFHashCode CFHash(CFTypeRef cf) { return cf::Alive(cf, __func__).hash(); }

CFStringRef CFCopyDescription(CFTypeRef cf) { return cf::Alive(cf, __func__).copyDescription(); }

CFStringRef CFCopyTypeIDDescription(CFTypeID type_id)
{
    const char* name = cf::TypeName(type_id);
    return name ? CFStringCreateWithCString(nullptr, name, kCFStringEncodingASCII) : nullptr;
}

void CFShow(CFTypeRef obj)
{
    const cf::Owned<CFStringRef> text(obj ? CFCopyDescription(obj) : cf::MakeString("(null)"));
    (void)std::fprintf(stderr, "%s\n", cf::Utf8(text.get()).c_str());
}
