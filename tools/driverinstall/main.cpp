// The privileged half of the driver's installation: started as root by the installer, it puts a kernel
// extension into /Library/Extensions or takes it away. The destination is fixed here; callers choose only a
// bare name and what is copied.

#include "tools/driverinstall/DriverInstall.h"
#include "tools/driverinstall/Report.h"
#include "util/Launch.h"

#include <Host/HostPath.h>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

extern char** environ; // NOLINT(readability-redundant-declaration): a Mac's headers do not declare it

namespace {

Outcome Run(const std::vector<std::string>& arguments)
{
    Request request;
    Outcome outcome = ParseArguments(arguments, request);
    const std::string extensions = HostPath("/Library/Extensions");
    const std::string source = HostPath(request.source);
    // Nothing from here on, not even the system log, may depend on what the caller put into the environment.
    static char* noEnvironment[] = { nullptr };
    environ = noEnvironment;
    if (!outcome.ok())
        return outcome;
    return request.verb == Request::Verb::install ? InstallExtension(extensions, request.name, source)
                                                  : UninstallExtension(extensions, request.name);
}

}

int main(int argc, char** argv)
{
    PutProcessInOrder();
    umask(S_IWGRP | S_IWOTH);
    // A caller that no longer reads the messages does not end the run.
    (void)signal(SIGPIPE, SIG_IGN);
    openlog("driverinstall", LOG_PID, LOG_AUTH);

    const Outcome outcome = Run({ argv + (argc > 0 ? 1 : 0), argv + argc });
    Report(outcome.ok() ? LOG_NOTICE : LOG_ERR, outcome.text);
    return static_cast<int>(outcome.code);
}
