#include "settings/SystemVersion.h"

#include "settings/NumVersion.h"

#include <sys/sysctl.h>

uint32_t SystemVersion()
{
    char text[32] = {};
    size_t size = sizeof text - 1;
    uint32_t version = 0;
    if (sysctlbyname("kern.osproductversion", text, &size, nullptr, 0) == 0)
        ConvertStringToNumVersion(text, &version);
    return version;
}
