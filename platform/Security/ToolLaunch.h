#pragma once

#include <Host/Descriptor.h>
#include <Security/Authorization.h>

/// Starts a tool that may be trusted, as AuthorizationExecuteWithPrivileges() promises, with this process's
/// effective rights, and sees it executed.
/// @param tool O_PATH descriptor. @param name its argv[0]. @param arguments, @param communicationsPipe as
/// there.
OSStatus StartTool(
    const Descriptor& tool, const char* name, char* const* arguments, FILE** communicationsPipe);

/// The same as root, through pkexec, which asks polkit once more: whether this process may run the tool, and waits
/// for the user where somebody has to be asked. Its argv[0] is its path.
/// @return errAuthorizationCanceled, errAuthorizationDenied when polkit did not allow it; else as StartTool(). A
/// tool that ends at once with pkexec's own exit statuses for that, 126 and 127, counts as not allowed.
OSStatus StartToolAsRoot(const Descriptor& tool, char* const* arguments, FILE** communicationsPipe);
