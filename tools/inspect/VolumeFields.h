#pragma once

#include "tools/inspect/Record.h"

// What several commands tell of mounted volumes. Paths are as a Mac program writes them.

/// @param isVolume without which nothing is known, here and below.
void AddSystem(const char* path, bool isVolume, Record& record);

void AddSpace(const char* path, bool isVolume, Record& record);
