#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace iokit {

/// A class of registry entries and the one it derives from.
struct Class {
    std::string name;
    const Class* super; ///< null for OSObject alone

    /// Whether it is the class of that name or derives from it.
    bool derivesFrom(std::string_view ancestor) const;
};

/// The classes that a registry's entries have, one object for each.
class Classes {
public:
    /// @return the class of that name, good as long as this object. One that is not known, as a driver of its own may
    /// have, counts as derived straight from IOService, which every driver is.
    const Class& named(const std::string& name);

    /// Takes over what a registry tells of a class: its name and, behind colons, the names of those that it derives from.
    /// @param origin what the last of them derives from where that is neither told nor known.
    const Class& learn(std::string_view lineage, const char* origin);

private:
    const Class& add(const std::string& name, const char* origin);

    std::unordered_map<std::string, Class> fClasses;
};

}
