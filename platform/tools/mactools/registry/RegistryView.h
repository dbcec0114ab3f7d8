#pragma once

#include <IOKit/Registry.h>

#include <cstddef>
#include <string>
#include <vector>

/// What is to be seen of the registry, and how.
struct RegistryView {
    iokit::Plane plane = iokit::Plane::Service; ///< whose tree it is

    // Entries with this class or one derived from it, this name (with or without its location) and this property, each "" for
    // any: their properties are shown.
    std::string className;
    std::string name;
    std::string key;
    bool onlySubtrees = false; ///< what lies below those entries, and no more
    bool allProperties = false; ///< of all entries, that is
    size_t depth = 0; ///< levels of entries in each tree, 0 for all

    bool hexadecimal = false; ///< numbers
    bool inheritance = false; ///< classes with those that they derive from
    bool boldNames = false;
    size_t width = 0; ///< characters of each line, 0 for all

    bool hasCriteria() const { return !className.empty() || !name.empty() || !key.empty(); }
    /// Whether there are criteria, and the entry meets all of them.
    bool isWanted(const iokit::Entry& entry) const;
    /// Whether the entries below one are shown. @param level of that entry in its tree, from 1.
    bool showsBelow(size_t level) const { return depth == 0 || level < depth; }
    bool showsProperties(const iokit::Entry& entry) const { return allProperties || isWanted(entry); }
    /// The entries that the trees begin with. Below a wanted one no other is looked for, as its tree holds it.
    std::vector<const iokit::Entry*> tops(const iokit::Registry& registry) const;
};
