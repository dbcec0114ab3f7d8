#pragma once

#include "UnitFolder.h"
#include "UserManager.h"
#include "job/ServiceManager.h"

#include <memory>

namespace launchd {

/// The user's jobs as units of the user's systemd manager, which then starts them with each session without
/// our doing. The unit files are the record of what is loaded, also while no manager runs.
///
/// Loading what is loaded from the same file with the same content is no failure here: the unit is enabled
/// and started again where it was not. A unit that launchctl has not written is neither replaced nor removed.
/// Unloading also clears up where a unit's file was removed by hand.
class SystemdClient : public ServiceManager {
public:
    static constexpr const char* name = "systemd";

    SystemdClient();

    /// Whether a manager answers on the user's bus that looks for units in UnitFolder::path(): one that
    /// serves another home is no concern of this user's jobs. Nothing can be loaded without.
    bool serves() const { return fManager != nullptr; }

    /// Whether systemd could be told exactly what the job asks for.
    static Answer canTake(const JobFile& file, const std::string& session);

    Answer load(const JobFile& file, const std::string& session) override;
    Answer unload(const std::string& path, const std::string& label) override;
    Answer list(std::vector<JobState>& jobs) override;

private:
    Answer checkFree(const UnitFolder& folder, const JobFile& file);
    Answer writeUnit(const UnitFolder& folder, const JobFile& file, const std::string& text);
    Answer checkTaken(const UnitFolder& folder, const JobFile& file);
    Answer activate(const JobFile& file);
    std::string startProblem(const Job& job, const std::string& reason);

    std::string labelOf(const UnitFolder& folder, const std::string& path, const std::string& label);
    bool isLeftOver(const UnitFolder& folder, const std::string& path, const std::string& label);
    Answer stopUnit(const std::string& path, const std::string& label);
    Answer end(const UnitFolder& folder, const std::string& path, const std::string& label);

    std::unique_ptr<UserManager> fManager; ///< null where none serves
    bool fIsUnanswered = false; ///< a manager seems to run, which may have jobs of ours, but says nothing
    std::string fFolder; ///< as the manager spells it
};

} // namespace launchd
