#pragma once

/// The right to run a tool with an administrator's rights.
#define kAuthorizationRightExecute "system.privilege.admin"
