#pragma once

#include "Tool.h"

/// "diskutil list": the disks and their partitions, as a table or a property list. "enableJournal" and "disableJournal": whether
/// a volume has a journal. "apfs addVolume" and other verbs are refused; no message has a passphrase in it.
int Diskutil(const Arguments& arguments);
