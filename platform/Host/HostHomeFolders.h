#pragma once

/// The folders in the user's Library that every home on a Mac has, so that programs there never make them. While this
/// lives they are here, too; at its end those that hold nothing go, so that what was installed and removed again leaves
/// no trace. On a Mac it does nothing.
class HostHomeFolders {
public:
    /// Makes the folders that are missing. One that cannot be made shows where something is to be put into it.
    HostHomeFolders();
    HostHomeFolders(const HostHomeFolders&) = delete;
    HostHomeFolders& operator=(const HostHomeFolders&) = delete;
    ~HostHomeFolders();
};
