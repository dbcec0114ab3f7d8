// rights_probe: asks for an administrator's rights and prints the answer's number.

#include <Security/Authorization.h>
#include <cstdio>

int main()
{
    AuthorizationRef authorization = nullptr;
    AuthorizationItem item { kAuthorizationRightExecute, 0, nullptr, 0 };
    const AuthorizationRights rights { 1, &item };
    if (AuthorizationCreate(
            nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &authorization)
        != 0)
        return 1;
    const OSStatus status = AuthorizationCopyRights(authorization, &rights, kAuthorizationEmptyEnvironment,
        kAuthorizationFlagInteractionAllowed | kAuthorizationFlagExtendRights, nullptr);
    AuthorizationFree(authorization, kAuthorizationFlagDestroyRights);
    return std::printf("%d\n", status) < 0;
}
