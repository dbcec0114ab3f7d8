#pragma once

#include <Host/Descriptor.h>
#include <Security/Authorization.h>

/// Starts a tool that may be trusted, as AuthorizationExecuteWithPrivileges() promises, and sees it executed.
/// @param tool O_PATH descriptor. @param name its argv[0]. @param arguments, @param communicationsPipe as
/// there.
OSStatus StartTool(
    const Descriptor& tool, const char* name, char* const* arguments, FILE** communicationsPipe);
