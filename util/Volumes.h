#pragma once

/// Whether a volume is mounted on exactly this folder. @param path as a Mac program writes it; null is none.
bool VolumeExistsAtPathname(const char* path);
