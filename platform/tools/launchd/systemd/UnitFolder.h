#pragma once

#include "UnitFile.h"
#include <Host/Descriptor.h>

#include <optional>
#include <string>
#include <vector>

namespace launchd {

/// A unit file that launchctl has written.
struct OwnUnit {
    std::string label;
    UnitNotes notes;
    std::string text; ///< the whole file
};

/// The folder in which the user's own systemd units lie, ours among others'. Only files with our notes in
/// them are ever written or removed.
class UnitFolder {
public:
    /// @return the folder's path for the user whose home HostHomeFolder() names, "" for one without a home.
    static std::string path();

    /// @param folder which need not exist. @return our units there in the order in which they were written.
    static std::vector<OwnUnit> units(const std::string& folder);

    /// Makes the folder where there is none. For the holder of the home's lock: nobody else changes our units.
    /// @return nothing when it cannot be had, with `problem` set to one sentence.
    static std::optional<UnitFolder> make(const std::string& folder, std::string& problem);

    std::string pathOf(const std::string& label) const { return fPath + '/' + UnitName(label); }
    /// Whether something of that name is there, of whatever kind.
    bool has(const std::string& label) const;
    /// Whether a link that started the unit with a session is left although the unit's file is gone.
    bool hasLostLink(const std::string& label) const;

    /// @return 0 or an errno.
    int write(const std::string& label, const std::string& text) const;
    /// Removes the unit's file; a missing one is no failure. @return 0 or an errno.
    int remove(const std::string& label) const;
    /// Removes the links that start the unit with a session, as the manager would if there were one.
    void removeLinks(const std::string& label) const;
    /// Removes the folder, and those above it below the home, as far as they are empty.
    void removeIfEmpty() const;

private:
    UnitFolder(Descriptor folder, std::string path)
        : fFolder(std::move(folder))
        , fPath(std::move(path))
    {
    }

    Descriptor fFolder;
    std::string fPath;
};

} // namespace launchd
