#pragma once

#include "supervisor/SupervisorClient.h"
#include "systemd/SystemdClient.h"

namespace launchd {

/// All who may keep the user's jobs, as one. Jobs are loaded into the user's systemd manager where it serves,
/// else into our own supervisor; whoever keeps a job already is found, so what the supervisor took on before
/// there was a systemd manager, or systemd before it went away, can still be unloaded, and is not loaded
/// twice.
class JobManagers : public ServiceManager {
public:
    Answer load(const JobFile& file, const std::string& session) override;
    Answer unload(const std::string& path, const std::string& label) override;
    /// Systemd's jobs first.
    Answer list(std::vector<JobState>& jobs) override;

private:
    SystemdClient fSystemd;
    SupervisorClient fSupervisor;
};

} // namespace launchd
