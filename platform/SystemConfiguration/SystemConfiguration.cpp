#include "SystemConfiguration.h"

#include "ComputerNames.h"

#include <CoreFoundation/Runtime.h>

#include <mutex>
#include <utility>

namespace {

struct TheHost {
    std::mutex mutex {};
    HostTree tree;
} theHost;

HostTree Host()
{
    const std::lock_guard lock(theHost.mutex);
    return theHost.tree;
}

thread_local int lastStatus = kSCStatusOK;

CFStringRef CF_RETURNS_RETAINED Answer(const std::string& name)
{
    lastStatus = name.empty() ? kSCStatusNoKey : kSCStatusOK;
    return name.empty() ? nullptr : cf::MakeString(name);
}

}

void sc::UseHost(HostTree host)
{
    const std::lock_guard lock(theHost.mutex);
    theHost.tree = std::move(host);
}

int SCError() { return lastStatus; }

CFStringRef SCDynamicStoreCopyComputerName(SCDynamicStoreRef /*store*/, CFStringEncoding* nameEncoding)
{
    if (nameEncoding != nullptr)
        *nameEncoding = kCFStringEncodingUTF8;
    return Answer(sc::ComputerName(Host()));
}

CFStringRef SCDynamicStoreCopyLocalHostName(SCDynamicStoreRef /*store*/)
{
    return Answer(sc::LocalHostName(Host()));
}
