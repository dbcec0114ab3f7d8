#pragma once

#include <Host/Descriptor.h>

#include <optional>
#include <string>

namespace launchd {

/// The folder in which a user's supervisor on one start-up volume is met: private/tmp/launchd.<user id> of
/// the volume, or .launchd of the home where the volume is the system's. It holds the supervisor's socket; a flock() on the folder itself says that a supervisor serves
/// there. Both the socket and the folder are taken away by the supervisor when it ends, and reused when it
/// was killed. Only a real folder that the caller owns and nobody else may enter is used.
class RuntimeFolder {
public:
    static std::string path();

    /// Opens the folder.
    /// @return nothing when it cannot be used, with `problem` set, or does not exist, with `problem` empty.
    static std::optional<RuntimeFolder> open(std::string& problem);

    /// Makes the folder where there is none, and takes its lock for as long as the result lives.
    /// @return nothing when it cannot be used, with `problem` set, or is another process's, with `problem`
    /// empty.
    static std::optional<RuntimeFolder> claim(std::string& problem);

    /// @return a socket connected to the supervisor, or none with errno set. Sending and connecting are
    /// bounded in time, receiving is not.
    Descriptor connect() const;

    /// Replaces whatever socket is there. Only for the holder of the lock.
    /// @return a non-blocking listening socket, or none with errno set.
    Descriptor listen() const;

    /// Removes the socket and the folder. Only for the holder of the lock.
    void remove() const;

private:
    explicit RuntimeFolder(Descriptor folder)
        : fFolder(std::move(folder))
    {
    }
    /// Whether path() still names the folder that is open, which its last holder may have removed.
    bool isInPlace() const;

    Descriptor fFolder;
};

} // namespace launchd
