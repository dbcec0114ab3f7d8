#pragma once

#include "job/Answer.h"

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace launchd {

/// What the manager knows about one service.
struct UnitState {
    std::string loadState; ///< "loaded", "not-found", "bad-setting", "masked", ...
    std::string activeState; ///< "active", "inactive", "failed", "deactivating", ...
    std::string fragmentPath; ///< the unit's file, which need not exist any more; "" for a unit without
    std::string sourcePath; ///< SourcePath, as the file had it when it was read
    int32_t mainStatus = 0; ///< exit status or signal of the last run; 0 when none is remembered
    int32_t mainCode = 0; ///< CLD_EXITED, CLD_KILLED, ..., or 0
    uint32_t mainPid = 0; ///< 0 while it does not run
    uint64_t stopTimeOut = 0; ///< from SIGTERM to SIGKILL in microseconds; UINT64_MAX for ever
};

/// The user's systemd manager, spoken to over the user's message bus. No call throws; each is answered within
/// a few seconds, but those that wait for a service, and its sentence when it fails is part of a longer one.
class UserManager {
public:
    /// @return null where no user manager answers.
    static std::unique_ptr<UserManager> connect();

    /// Whether a manager of the user's seems to run, if only one that does not answer.
    static bool seemsToRun();

    /// The folders in which the manager looks for units, the first one first.
    const std::vector<std::string>& unitPath() const { return fUnitPath; }

    /// Also makes it read the unit's file, if it has one and is not known yet.
    Answer state(const std::string& unit, UnitState& state);
    /// Makes it read the changed files.
    Answer reload();
    /// Makes the links that the unit's [Install] section asks for, or takes away all links to the unit,
    /// whether its file exists or not.
    Answer enable(const std::string& unit);
    Answer disable(const std::string& unit);

    /// Starts or stops the unit, unless that is so already, and waits until it has happened or failed.
    /// @param patience std::chrono::microseconds::max() to wait for ever.
    Answer start(const std::string& unit, std::chrono::microseconds patience);
    Answer stop(const std::string& unit, std::chrono::microseconds patience);
    /// Forgets that the unit failed; what it does not know needs no forgetting.
    void resetFailed(const std::string& unit);

private:
    explicit UserManager(const std::string& busAddress);

    Answer runJob(const char* method, const std::string& unit, std::chrono::microseconds patience);
    std::string waitForJob(const std::string& job, std::chrono::microseconds patience);

    std::unique_ptr<sdbus::IConnection> fConnection;
    std::unique_ptr<sdbus::IProxy> fManager;
    std::vector<std::string> fUnitPath;
    std::map<std::string, std::string> fJobResults; ///< of the jobs that ended, by their object paths
};

} // namespace launchd
