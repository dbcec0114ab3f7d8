#pragma once

#include "job/ServiceManager.h"

#include <optional>

namespace launchd {

/// The user's jobs as our own supervisor keeps them. Loading starts it where there is none; where there is
/// none to unload from or to list, nothing is loaded.
class SupervisorClient : public ServiceManager {
public:
    Answer load(const JobFile& file, const std::string& session) override;
    Answer unload(const std::string& path, const std::string& label) override;
    Answer list(std::vector<JobState>& jobs) override;
};

} // namespace launchd
