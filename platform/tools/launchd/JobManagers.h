#pragma once

#include "supervisor/SupervisorClient.h"
#include "systemd/SystemdClient.h"

namespace launchd {

/// All who may keep the user's jobs, as one. Jobs are loaded into the user's systemd manager where it serves,
/// else into our own supervisor; whoever keeps a job already is found, and none is loaded twice. What the
/// supervisor took on before there was a systemd manager moves over when it is loaded again; what systemd
/// took on before it went away counts as loaded. Both can be unloaded.
class JobManagers : public ServiceManager {
public:
    Answer load(const JobFile& file, const std::string& session) override;
    Answer unload(const std::string& path, const std::string& label) override;
    /// Systemd's jobs first.
    Answer list(std::vector<JobState>& jobs) override;

private:
    Answer loadIntoSupervisor(const JobFile& file, const std::string& session);

    SystemdClient fSystemd;
    SupervisorClient fSupervisor;
};

} // namespace launchd
