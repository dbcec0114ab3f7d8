#pragma once

#include <map>
#include <optional>
#include <string>

/// An application in the host's menus.
struct DesktopEntry {
    std::string program; ///< what is executed: a path, or a name to look up
    std::map<std::string, std::string> names; ///< by language as locales have it: "de", "zh_CN"; "" for any

    /// The name in the user's language; never "".
    std::string nameForUser() const;
};

/// @param text of a .desktop file.
/// @return nothing for what is no application, has no name, or hands its program files of its own: that is an interpreter
/// or a wrapper, which others use as well.
std::optional<DesktopEntry> ReadDesktopEntry(const std::string& text);
