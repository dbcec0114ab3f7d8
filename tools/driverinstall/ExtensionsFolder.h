#pragma once

#include "tools/driverinstall/FileDescriptor.h"
#include "tools/driverinstall/Outcome.h"
#include <chrono>
#include <string>

/// The folder of kernel extensions, open and locked for one run; the lock ends with the object. The folder is
/// trusted: it is itself a folder and no link, belongs to the effective user, and nobody else can write to
/// it.
class ExtensionsFolder {
public:
    enum class Missing { create, accept };

    /// @param path host path. @param missing whether to create the folder (its parent has to be there), or to
    /// succeed
    ///   without one, with descriptor() -1.
    /// @param longestWait how long to wait for another run to end.
    /// @return ok, destinationRefused, notPermitted, or busy.
    Outcome open(const std::string& path, Missing missing, std::chrono::milliseconds longestWait);

    int descriptor() const { return fFolder.get(); }

private:
    FileDescriptor fFolder;
};
