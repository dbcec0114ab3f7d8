#pragma once

#include <host/HostTree.h>
#include <profile/Item.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>

/// A hand-made host in a temporary folder of its own, removed at the end.
class HostFolder {
public:
    HostFolder();
    ~HostFolder();
    HostFolder(const HostFolder&) = delete;
    HostFolder& operator=(const HostFolder&) = delete;

    /// Writes files below a folder, which ends in a slash. An entry whose text begins with "-> " becomes a link to a name
    /// in the tree.
    HostFolder& add(
        const std::string& folder, std::initializer_list<std::pair<std::string, std::string>> files);

    const std::filesystem::path& root() const { return fRoot; }
    HostTree tree() const { return HostTree(fRoot); }

private:
    std::filesystem::path fRoot;
};

/// What a report says, "{_name: Hub, _items: [{…}]}".
std::string Flat(const profile::Item::Value& value);
