#pragma once

#include <string>

/// "diskutil enableJournal" and "disableJournal": gives an ext2, ext3 or ext4 volume a journal or takes it away, which while it
/// is mounted for writing only the former can be.
/// @param target as FindTarget() has it, or the folder that the volume is mounted on.
/// @return 0, also where it was so before; 1 after a complaint.
int SetJournaling(const std::string& target, bool wanted);
