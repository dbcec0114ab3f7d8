#include "RightDecision.h"

#include "Confirmation.h"
#include "Polkit.h"
#include "TextAgent.h"

#include <Host/HostPath.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

OSStatus AskOwner()
{
    switch (AskForConfirmation()) {
    case Confirmation::given:
        return errAuthorizationSuccess;
    case Confirmation::refused:
        return errAuthorizationCanceled;
    case Confirmation::impossible:
        return errAuthorizationInteractionNotAllowed;
    }
    return errAuthorizationDenied;
}

OSStatus AskSystem(const std::string& right, bool mayInteract)
{
    const TextAgent agent(mayInteract);
    switch (AskPolkit(PolkitAction(right), mayInteract)) {
    case PolkitAnswer::granted:
        return errAuthorizationSuccess;
    case PolkitAnswer::dismissed:
        return errAuthorizationCanceled;
    case PolkitAnswer::noAgent:
        return errAuthorizationInteractionNotAllowed;
    case PolkitAnswer::denied:
    case PolkitAnswer::unavailable:
        return errAuthorizationDenied;
    }
    return errAuthorizationDenied;
}

}

Authority AuthorityOverVolume()
{
    if (geteuid() == 0)
        return Authority::caller;
    if (HostStartupVolumeIsSystems())
        return Authority::system;
    struct stat volume = {};
    const bool isOwn = stat(HostStartupVolume().c_str(), &volume) == 0 && volume.st_uid == geteuid();
    return isOwn ? Authority::owner : Authority::nobody;
}

OSStatus DecideRight(const std::string& right, bool mayInteract)
{
    const Authority authority = AuthorityOverVolume();
    if (authority == Authority::caller)
        return errAuthorizationSuccess;
    if (right != kAuthorizationRightExecute)
        return errAuthorizationDenied;
    switch (authority) {
    case Authority::owner:
        return mayInteract ? AskOwner() : errAuthorizationInteractionNotAllowed;
    case Authority::system:
        return AskSystem(right, mayInteract);
    default:
        return errAuthorizationDenied;
    }
}
