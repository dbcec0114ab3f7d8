#include "RightDecision.h"

#include <Host/HostPath.h>

#include <sys/stat.h>
#include <unistd.h>

bool CallerOwnsStartupVolume()
{
    struct stat volume = {};
    return geteuid() != 0 && stat(HostStartupVolume().c_str(), &volume) == 0 && volume.st_uid == geteuid();
}

OSStatus DecideRight(const std::string& right, [[maybe_unused]] bool mayInteract)
{
    if (geteuid() == 0)
        return errAuthorizationSuccess;
    if (right == kAuthorizationRightExecute && CallerOwnsStartupVolume())
        return errAuthorizationSuccess;
    return errAuthorizationDenied;
}
