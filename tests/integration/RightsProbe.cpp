// rights_probe                       asks for an administrator's rights.
// rights_probe TOOL [ARGUMENT...]    starts the tool with them, and waits until this process has no child.
// Both print the number of the answer.

#include <Security/Authorization.h>
#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

namespace {

OSStatus Ask(AuthorizationRef authorization)
{
    AuthorizationItem item { kAuthorizationRightExecute, 0, nullptr, 0 };
    const AuthorizationRights rights { 1, &item };
    return AuthorizationCopyRights(authorization, &rights, kAuthorizationEmptyEnvironment,
        kAuthorizationFlagInteractionAllowed | kAuthorizationFlagExtendRights, nullptr);
}

OSStatus Start(AuthorizationRef authorization, const char* tool, char** arguments)
{
    const OSStatus status = AuthorizationExecuteWithPrivileges(
        authorization, tool, kAuthorizationFlagDefaults, arguments, nullptr);
    // With a child left, even one that has ended, this lasts until the test loses its patience.
    siginfo_t child {};
    while (waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == 0)
        usleep(1000);
    return status;
}

}

int main(int argc, char** argv)
{
    AuthorizationRef authorization = nullptr;
    if (AuthorizationCreate(
            nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &authorization)
        != errAuthorizationSuccess)
        return 1;
    const OSStatus status = argc < 2 ? Ask(authorization) : Start(authorization, argv[1], argv + 2);
    AuthorizationFree(authorization, kAuthorizationFlagDestroyRights);
    return std::printf("%d\n", status) < 0;
}
