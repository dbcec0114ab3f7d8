#pragma once

#include <Security/Authorization.h>

#include <string>

/// Whose rights it takes to change the start-up volume.
enum class Authority {
    caller, ///< the caller is root
    owner, ///< the volume's folder is the caller's own: nothing happens there that the caller could not do
    system, ///< the volume is the system's
    nobody ///< a folder of somebody else
};
Authority AuthorityOverVolume();

/// Whether this process may have a right that it does not hold yet: the one place where that is decided.
/// @param mayInteract the user may be asked, and is waited for.
/// @return errAuthorizationSuccess; errAuthorizationCanceled when the user declined;
/// errAuthorizationInteractionNotAllowed when the user would have to be asked, and may not be or cannot be; else
/// errAuthorizationDenied.
OSStatus DecideRight(const std::string& right, bool mayInteract);
