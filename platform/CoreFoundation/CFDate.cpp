#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Runtime.h>

#include <ctime>

struct __CFDate : cf::Object {
    explicit __CFDate(CFAbsoluteTime at)
        : Object(cf::kDateType)
        , time(at)
    {
    }
    static CFTypeID typeID() { return cf::kDateType; }

    bool isEqual(const Object& other) const override
    {
        return time == static_cast<const __CFDate&>(other).time;
    }
    CFHashCode hash() const override { return std::hash<double>()(time); }
    CFStringRef copyDescription() const override
    {
        return CFStringCreateWithFormat(nullptr, nullptr, CFSTR("<CFDate %f s after 2001-01-01>"), time);
    }

    CFAbsoluteTime time;
};

const CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200;
const CFTimeInterval kCFAbsoluteTimeIntervalSince1904 = 3061152000;

CFAbsoluteTime CFAbsoluteTimeGetCurrent()
{
    timespec now {};
    clock_gettime(CLOCK_REALTIME, &now); // cannot fail for this clock
    const auto wholeSeconds = static_cast<double>(now.tv_sec) - kCFAbsoluteTimeIntervalSince1970;
    return wholeSeconds + static_cast<double>(now.tv_nsec) / 1e9;
}

CFTypeID CFDateGetTypeID() { return cf::kDateType; }

CFDateRef CFDateCreate(CFAllocatorRef, CFAbsoluteTime at) { return new __CFDate(at); }

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef theDate) { return cf::Check(theDate, __func__).time; }

CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef theDate, CFDateRef otherDate)
{
    return cf::Check(theDate, __func__).time - cf::Check(otherDate, __func__).time;
}

CFComparisonResult CFDateCompare(CFDateRef theDate, CFDateRef otherDate, void*)
{
    const CFTimeInterval later = CFDateGetTimeIntervalSinceDate(theDate, otherDate);
    if (later > 0)
        return kCFCompareGreaterThan;
    return later < 0 ? kCFCompareLessThan : kCFCompareEqualTo;
}
