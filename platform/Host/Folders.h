#pragma once

#include <string>
#include <sys/types.h>

/// Makes a folder and those above it that are missing, but never the start-up volume itself: nothing is made
/// on a volume that is not there.
/// @param path host path of the folder. @param mode of the folder, and @param modeAbove of those above it
/// that have to be made, both less the process's mask.
/// @return 0 when the folder was made; EEXIST when there is something at `path` already, of whatever kind;
/// else the errno of the step that failed, and the folders made by then stay.
int MakeFolders(const std::string& path, mode_t mode, mode_t modeAbove);
