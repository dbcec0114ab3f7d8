#pragma once

#include "Tool.h"

/// "diskutil list": the disks and their partitions, as a table or a property list. Other verbs are refused.
int Diskutil(const Arguments& arguments);
