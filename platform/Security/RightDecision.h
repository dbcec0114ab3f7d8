#pragma once

#include <Security/Authorization.h>

#include <string>

/// Whether this process may have a right that it does not hold yet: the one place where that is decided.
/// @param mayInteract the user may be asked.
/// @return errAuthorizationSuccess or the reason for the refusal.
OSStatus DecideRight(const std::string& right, bool mayInteract);

/// The effective user is not root and owns the start-up volume's folder.
bool CallerOwnsStartupVolume();
