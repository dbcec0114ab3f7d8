#pragma once

#include "tools/driverinstall/FileDescriptor.h"
#include "tools/driverinstall/Outcome.h"
#include <chrono>
#include <string>

/// The folder of kernel extensions, open and locked for one run; the lock ends with the object. The folder is
/// trusted: it is itself a folder and no link, belongs to the effective user, and only that user can write to
/// it. What is locked is a hidden file in it, which is there only while runs go on, or after one was killed.
class ExtensionsFolder {
public:
    enum class Missing { create, accept };

    ExtensionsFolder() = default;
    ExtensionsFolder(const ExtensionsFolder&) = delete;
    ExtensionsFolder& operator=(const ExtensionsFolder&) = delete;
    ~ExtensionsFolder();

    /// Call once.
    /// @param path host path.
    /// @param missing whether to create the folder (its parent has to be there), or to succeed without one,
    /// with descriptor() -1.
    /// @param longestWait how long to wait for another run to end.
    /// @return ok, destinationRefused, notPermitted, busy, or diskError.
    Outcome open(const std::string& path, Missing missing, std::chrono::milliseconds longestWait);

    int descriptor() const { return fFolder.get(); }

private:
    FileDescriptor fFolder;
    FileDescriptor fLock;
};
