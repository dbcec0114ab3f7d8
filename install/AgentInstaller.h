#pragma once

#include "util/CFRef.h"
#include <CoreServices/CoreServices.h>
#include <cstdint>

/// Puts the login agent into the user's Library folder, registers it with launchd, and takes it away again.
/// Main thread only. The three answers describe the disk when the object was made; nothing refreshes them.
/// Needs the shared application controller, which knows this installer's version and where the agent belongs.
class AgentInstaller {
public:
    /// The last installer made, or null before the first.
    static AgentInstaller* agentInstallerPtr();

    /// Looks at the installed agent and becomes the shared installer, which replaces the one before it.
    static AgentInstaller* init();

    bool canInstall() const; ///< no agent is installed, or none whose version can be read
    bool canUpdate() const; ///< the installed agent is older than this installer
    bool installedVersionNewer() const; ///< the installed agent is newer than this installer

    /// Copies the agent, writes its LaunchAgent and asks launchd to load it; does not wait for launchd. Never
    /// replaces an agent that is there. Steps that succeeded before a failure stay in place.
    /// @return noErr; memFullErr, launchctl could not be started; fnfErr, nothing on disk changed; permErr, a
    /// folder, the copy or the property list failed.
    OSStatus install();

    /// Takes the installed agent away, keeping the settings, and installs this one.
    /// @return the first failure of uninstallAndIsUpdating() and install().
    OSStatus update();

    /// Asks launchd to unload the agent, without waiting for it, and moves the agent, its support folder and
    /// its LaunchAgent to the user's Trash. Unless `updating`, the settings are removed as well when all of
    /// that succeeded. What is not there needs no removing.
    /// @return noErr; memFullErr, launchctl could not be started, nothing was removed; permErr, the Trash
    /// refused.
    OSStatus uninstallAndIsUpdating(bool updating);

    /// The "CFBundleShortVersionString" of the installed agent; 0 when there is none or it cannot be read.
    uint32_t agentVersion() const;

    /// The LaunchAgent that keeps the agent at `agentURL` running in the user's graphical session.
    /// @return null when the URL names no file.
    CFRef<CFDictionaryRef> createPListForLaunchAgentWithURL(CFURLRef agentURL) const;

    // Locations, made anew on every call; null when the folder they are in cannot be determined.
    CFRef<CFURLRef> launchAgentDirectoryURL() const; ///< ~/Library/LaunchAgents/
    CFRef<CFURLRef> launchAgentPListURL() const; ///< the agent's property list in it
    CFRef<CFURLRef> agentSourceURL() const; ///< the agent that this installer carries
    CFRef<CFURLRef> agentDestURL() const; ///< the agent in the user's Application Support folder

    /// Starts "/bin/launchctl" with "load" or "unload" for the LaunchAgent. What it makes of that is not
    /// awaited.
    /// @return noErr once it runs; memFullErr when it could not be started or the location is unknown.
    OSStatus startStopVelmoraProcess(bool start);

private:
    AgentInstaller();

    bool fCanInstall = false;
    bool fCanUpdate = false;
    bool fInstalledVersionNewer = false;
};
