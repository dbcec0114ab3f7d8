#pragma once

#include <cstdint>
#include <string>

/// What of the product is really on this computer, read from the disk and from launchd. Versions are 0 where
/// there is none; paths are the host's.
struct Installation {
    enum class LaunchAgent { absent, damaged, whole };

    std::string agentPath;
    uint32_t agentVersion = 0;
    bool agentFolder = false; ///< the agent's support folder is there, with or without an agent
    std::string launchAgentPath;
    LaunchAgent launchAgent = LaunchAgent::absent; ///< whole: exactly the list that the installer writes
    bool jobLoaded = false;
    int64_t jobProcess = 0; ///< process id; 0 while it does not run
    std::string driverPath;
    uint32_t driverVersion = 0;
    bool driverFolder = false; ///< something is at driverPath
    bool oldDriver = false; ///< the extension of the earlier product generation is there
    bool settings = false; ///< settings of the product are stored
    bool settingsOnDisk
        = false; ///< what was set is written; nothing that was set waits for a disk that refuses it
    std::string restartRequest; ///< the file that records a requested restart; "" when there is none

    /// The agent of this version, which is not 0, is in place, registered and running.
    bool agentComplete(uint32_t version) const;
    /// The driver of this version, which is not 0, is in place and no earlier generation is.
    bool driverComplete(uint32_t version) const;
    /// Nothing of the product is left but what uninstalling keeps.
    bool gone() const;
};

/// Needs the shared application controller and agent installer.
Installation ReadInstallation();
