#pragma once

#include "install/Authorizer.h"

/// Installs, updates and removes the dock's kernel extension. The extensions folder itself is changed only by
/// the privileged tool "driverinstall", which is started and not waited for. Main thread only; every change
/// may block in the system's password dialog. What is installed is looked at once, when the object is made.
class DriverInterface : public Authorizer {
public:
    /// The last interface made; null before the first and after one that could not be made.
    static DriverInterface* driverInterfacePtr();

    /// Compares the installed extension with the one that this installer carries, and becomes the shared
    /// interface, which replaces the one before it.
    /// @return null when there is no authorization or the main bundle has no Resources folder.
    static DriverInterface* init();

    // As the disk is now. Versions are 0 where there is none; paths are a Mac program's.
    static uint32_t carriedVersion();
    static uint32_t installedVersion();
    static std::string installedPath();
    static bool oldDriverInstalled(); ///< the extension of the earlier product generation is there

    bool canInstall() const; ///< no extension is installed, or none whose version can be read
    bool
    canUpdate() const; ///< an extension is installed in another version than the carried one, even a later
    bool driverPresent() const; ///< the opposite of canInstall()
    bool restartMightBeRequired() const; ///< installing or updating would change the extension
    bool restartRequired() const; ///< the last install, update or uninstall changed the system

    /// Removes the extension of the earlier product generation if it is there, then has the tool put the
    /// carried extension in place.
    /// @return noErr when the tool was started, paramErr without a Resources folder, else what running the
    /// tool gave.
    OSStatus install();
    /// The same as install(): replacing an installed extension is the tool's job.
    OSStatus update();
    /// Removes the extension of the earlier generation and the current one, where present.
    /// @return noErr, also when there was nothing to remove; else what running the tool gave.
    OSStatus uninstall();
    /// Removes the extension of the earlier generation where present; does not touch restartRequired().
    OSStatus uninstallOldDriverIfPresent();
    /// Starts the tool with these arguments.
    OSStatus callDriverInstallWithArguments(const std::vector<std::string>& arguments);

private:
    DriverInterface() = default;
    void readVersions();

    bool fDriverInstalled = false;
    bool fCanUpdate = false;
    bool fRestartRequired = false;
};
