#pragma once

#include <Host/Descriptor.h>

#include <string>

/// Keeps a record, which is a file that is replaced whole, for one program at a time: waits until no other has it. Folders that
/// are missing above it are made, with mode 0755.
/// @param path host path of the record, which need not be there. @param lock receives what holds the lock as long as it is open.
/// @return 0, or the errno of the step that failed.
int LockRecord(const std::string& path, Descriptor& lock);
