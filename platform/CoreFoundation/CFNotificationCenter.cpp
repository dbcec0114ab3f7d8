#include <CoreFoundation/CFNotificationCenter.h>

#include <CoreFoundation/CFString.h>

#include "CoreFoundation/Runtime.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

struct Registration {
    const void* observer;
    CFNotificationCallback callBack;
    cf::Owned<CFStringRef> name; ///< null for all
    const void* object; ///< null for all
    cf::Owned<CFStringRef> objectText; ///< keeps the object of a distributed registration
    std::atomic<bool> removed = false;
};

} // namespace

struct __CFNotificationCenter : cf::Object {
    explicit __CFNotificationCenter(bool comparesText)
        : Object(typeID(), cf::Lifetime::Forever)
        , fComparesText(comparesText)
    {
    }
    static CFTypeID typeID()
    {
        static const CFTypeID id = cf::RegisterType("CFNotificationCenter");
        return id;
    }

    void add(const void* observer, CFNotificationCallback callBack, CFStringRef name, const void* object)
    {
        auto registration = std::make_shared<Registration>();
        registration->observer = observer;
        registration->callBack = callBack;
        registration->name.reset(name ? CFStringCreateCopy(kCFAllocatorDefault, name) : nullptr);
        if (object && fComparesText)
            registration->objectText.reset(
                CFStringCreateCopy(kCFAllocatorDefault, static_cast<CFStringRef>(object)));
        registration->object = registration->objectText ? registration->objectText.get() : object;
        const std::lock_guard lock(fMutex);
        fRegistrations.push_back(std::move(registration));
    }

    /// @param name, object null for any.
    void remove(const void* observer, CFStringRef name, const void* object)
    {
        const std::lock_guard lock(fMutex);
        std::erase_if(fRegistrations, [&](const std::shared_ptr<Registration>& registration) {
            const bool matches = registration->observer == observer
                && (!name || (registration->name && CFEqual(registration->name.get(), name)))
                && (!object || isSameObject(registration->object, object));
            registration->removed = registration->removed || matches;
            return matches;
        });
    }

    void post(CFStringRef name, const void* object, CFDictionaryRef userInfo)
    {
        // Callbacks run without the lock, on a list of their own: they may add, remove and post.
        for (const std::shared_ptr<Registration>& registration : interestedIn(name, object)) {
            if (!registration->removed)
                registration->callBack(
                    this, const_cast<void*>(registration->observer), name, object, userInfo);
        }
    }

private:
    bool isSameObject(const void* registered, const void* posted) const
    {
        return registered == posted || (fComparesText && registered && posted && CFEqual(registered, posted));
    }

    std::vector<std::shared_ptr<Registration>> interestedIn(CFStringRef name, const void* object)
    {
        std::vector<std::shared_ptr<Registration>> result;
        const std::lock_guard lock(fMutex);
        std::copy_if(fRegistrations.begin(), fRegistrations.end(), std::back_inserter(result),
            [&](const std::shared_ptr<Registration>& registration) {
                return (!registration->name || CFEqual(registration->name.get(), name))
                    && (!registration->object || isSameObject(registration->object, object));
            });
        return result;
    }

    const bool fComparesText;
    std::mutex fMutex;
    std::vector<std::shared_ptr<Registration>> fRegistrations;
};

CFTypeID CFNotificationCenterGetTypeID() { return __CFNotificationCenter::typeID(); }

// Neither is ever destroyed: observers may be removed by destructors that run after main.

CFNotificationCenterRef CFNotificationCenterGetLocalCenter()
{
    static auto* const center = new __CFNotificationCenter(false);
    return center;
}

CFNotificationCenterRef CFNotificationCenterGetDistributedCenter()
{
    static auto* const center = new __CFNotificationCenter(true);
    return center;
}

void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
    CFNotificationCallback callBack, CFStringRef name, const void* object, CFNotificationSuspensionBehavior)
{
    if (!callBack)
        cf::Fail(__func__, "needs a callback");
    cf::Check(center, __func__).add(observer, callBack, name, object);
}

void CFNotificationCenterRemoveObserver(
    CFNotificationCenterRef center, const void* observer, CFNotificationName name, const void* object)
{
    cf::Check(center, __func__).remove(observer, name, object);
}

void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer)
{
    cf::Check(center, __func__).remove(observer, nullptr, nullptr);
}

void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFNotificationName name,
    const void* object, CFDictionaryRef userInfo, Boolean)
{
    if (!name)
        cf::Fail(__func__, "needs a name");
    cf::Check(center, __func__).post(name, object, userInfo);
}

void CFNotificationCenterPostNotificationWithOptions(CFNotificationCenterRef center, CFNotificationName name,
    const void* object, CFDictionaryRef userInfo, CFOptionFlags options)
{
    CFNotificationCenterPostNotification(
        center, name, object, userInfo, (options & kCFNotificationDeliverImmediately) != 0);
}
