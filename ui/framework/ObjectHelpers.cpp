#include "ui/framework/ObjectHelpers.h"

#include "ui/framework/Description.h"

namespace {

/// What an object's own copy operation gives; an object that cannot change is its own copy.
CFRef<CFTypeRef> Copy(CFTypeRef object)
{
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFStringGetTypeID())
        return CFRef<CFTypeRef>(CFStringCreateCopy(kCFAllocatorDefault, static_cast<CFStringRef>(object)));
    if (type == CFDataGetTypeID())
        return CFRef<CFTypeRef>(CFDataCreateCopy(kCFAllocatorDefault, static_cast<CFDataRef>(object)));
    if (type == CFArrayGetTypeID())
        return CFRef<CFTypeRef>(CFArrayCreateCopy(kCFAllocatorDefault, static_cast<CFArrayRef>(object)));
    if (type == CFDictionaryGetTypeID())
        return CFRef<CFTypeRef>(
            CFDictionaryCreateCopy(kCFAllocatorDefault, static_cast<CFDictionaryRef>(object)));
    return CFRef<CFTypeRef>::Retained(object);
}

}

CFRef<CFMutableArrayRef> CopyArrayAndObjects(CFArrayRef array)
{
    const CFIndex count = array != nullptr ? CFArrayGetCount(array) : 0;
    CFRef<CFMutableArrayRef> copies(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (CFIndex index = 0; index < count; ++index)
        CFArrayAppendValue(copies.get(), Copy(CFArrayGetValueAtIndex(array, index)).get());
    return copies;
}

CFRef<CFTypeRef> DeepCopyObject(CFTypeRef object)
{
    if (object == nullptr || !CFPropertyListIsValid(object, kCFPropertyListBinaryFormat_v1_0))
        return {};
    return CFRef<CFTypeRef>(
        CFPropertyListCreateDeepCopy(kCFAllocatorDefault, object, kCFPropertyListMutableContainersAndLeaves));
}

bool AreObjectsEqual(CFTypeRef a, CFTypeRef b)
{
    return a != nullptr && b != nullptr && Description(a) == Description(b);
}
