#pragma once

#include "tests/support/TemporaryFolder.h"

#include <Host/Descriptor.h>

#include <string>
#include <sys/types.h>
#include <vector>

/// The real disk service with udev and a system bus of their own, for the real kernel's loop devices. The process that
/// makes one gets name spaces of its own for it, in which /dev has no other disk's file, and /run and /media are empty; it
/// can have only one. All that was started and attached goes with it.
class DiskSystem {
public:
    DiskSystem();
    DiskSystem(const DiskSystem&) = delete;
    DiskSystem& operator=(const DiskSystem&) = delete;
    ~DiskSystem();

    /// Why it cannot be had here, as a sentence; "" for no reason. Then nothing below may be called.
    const std::string& problem() const { return fProblem; }

    /// Whether file systems of the kind can be made and mounted here.
    static bool canHave(const std::string& fileSystem);

    /// Makes an image and attaches it. @param command for a shell, that makes what is in the file $image.
    /// @return the device's file, known to udev and to the service; "" when that could not be done.
    std::string attach(const std::string& command) { return attach(command, true); }
    /// The same, for a device that stays until it is told to go; one at most.
    std::string attachForGood(const std::string& command) { return attach(command, false); }

    /// The device's BSD name; "" for none.
    static std::string bsdName(const std::string& device);

private:
    void startServices();
    void start(std::vector<std::string> command, const std::string& log);
    std::string attach(const std::string& command, bool goesWithProgram);

    std::string fProblem {};
    TemporaryFolder fFolder;
    std::vector<pid_t> fServices {};
    std::vector<Descriptor>
        fHeld {}; ///< devices that go when they are closed, also when the program is ended by force
    std::string fForGood {}; ///< a device to be detached; "" for none
    int fImages = 0;
};

/// Its output goes to /dev/null. @return its exit status.
int RunCommand(const std::string& command);
