// The login agent: a background program that launchd starts at login and keeps alive. It has no windows and
// does nothing between signals. SIGHUP makes it read its settings again; SIGTERM and SIGINT end it.

#include "util/Bundle.h"
#include "util/CFText.h"
#include <CoreFoundation/CoreFoundation.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <syslog.h>

namespace {

/// A setting that is on until the user has switched it off.
bool IsOn(CFStringRef key)
{
    Boolean isBoolean = false;
    const Boolean value = CFPreferencesGetAppBooleanValue(key, kCFPreferencesCurrentApplication, &isBoolean);
    return !isBoolean || value;
}

/// The agent's version as the installer noted it, or "none".
std::string RecordedVersion()
{
    const CFRef<CFPropertyListRef> value(
        CFPreferencesCopyAppValue(CFSTR("Agent Version"), kCFPreferencesCurrentApplication));
    const std::string version = StdString(CFDynamicCast<CFStringRef>(value.get(), CFStringGetTypeID()));
    return version.empty() ? "none" : version;
}

std::string OwnVersion()
{
    const std::string version = StdString(MainBundleText(CFSTR("CFBundleShortVersionString")));
    return version.empty() ? "unknown" : version;
}

void Log(int priority, const std::string& line)
{
    syslog(priority, "%s", line.c_str());
    (void)std::fprintf(stderr, "ZEK Velmora: %s\n", line.c_str());
}

/// Reads the settings from the disk and says what they are.
void ReadSettings()
{
    CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication);
    const auto part
        = [](const char* name, bool on) { return std::string(", ") + name + (on ? " on" : " off"); };
    Log(LOG_NOTICE,
        "version " + OwnVersion() + ", installed version " + RecordedVersion()
            + part("launch at login", IsOn(CFSTR("Launch At Login")))
            + part("usage info", IsOn(CFSTR("Collect Usage Info")))
            + part("check for updates", IsOn(CFSTR("Check For Updates"))));
}

}

int main()
{
    // Blocked, they wait for sigwait and interrupt nothing.
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : { SIGHUP, SIGINT, SIGTERM })
        sigaddset(&signals, number);
    if (sigprocmask(SIG_BLOCK, &signals, nullptr) != 0)
        return EXIT_FAILURE;
    openlog("ZEK Velmora", LOG_PID, LOG_USER);

    ReadSettings();
    for (;;) {
        int number = 0;
        const int error = sigwait(&signals, &number);
        if (error == EINTR)
            continue;
        if (error != 0) {
            Log(LOG_ERR, "cannot wait for signals");
            return EXIT_FAILURE;
        }
        if (number != SIGHUP)
            return EXIT_SUCCESS;
        ReadSettings();
    }
}
