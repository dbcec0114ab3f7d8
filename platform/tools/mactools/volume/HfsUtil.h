#pragma once

#include "Tool.h"

/// "hfs.util -s disk2s1": gives an HFS or HFS+ volume that nobody uses a new UUID.
/// @return as such utilities answer: 253 when it is done; 254 for what is no HFS volume; 252 when reading or writing failed;
/// 250 for a wrong command line and for a device that is not there or in use.
int HfsUtil(const Arguments& arguments);
