#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// What the start-up volume remembers of every volume that it has met: private/var/db/volinfo.database, a line for each
/// with what identifies it, a blank, and flags of eight hexadecimal digits. Lines that say something else are kept.
class VolumeDatabase {
public:
    static constexpr uint32_t kUsePermissions = 1;

    /// @param file host path. A missing one is an empty database. @return 0 or the errno of reading it.
    int read(const std::string& file);
    /// Replaces the file as a whole. @return 0 or an errno.
    int write(const std::string& file) const;

    /// @return nothing for a volume without a line.
    std::optional<uint32_t> flags(const std::string& key) const;
    void setFlags(const std::string& key, uint32_t flags);

private:
    std::vector<std::string> fLines;
};

/// @param links folder of links to the host's block devices, named by the UUIDs of the file systems on them.
/// @return the UUID of the file system on a device; "" where it has none.
std::string DeviceUUID(dev_t device, const std::string& links);

/// What identifies the volume that a file or folder lies on: the UUID of its file system or, where that has none, the
/// folder that it is mounted on.
/// @param path host path. @return "" with errno on failure.
std::string VolumeKey(const std::string& path);
