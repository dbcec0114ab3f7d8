#pragma once

#include <string>
#include <vector>

// Test programs, and whatever they start, cannot touch a disk of this machine, whoever runs them. Linking `disk_guard`, as
// zek_test() does, has that seen to before main(): /dev/null lies on the files of all devices that store something, but for
// loop devices, in a mount namespace of the program's own, and no such file can be made. A program for which that cannot be
// done ends at once, with a sentence, unless none of these devices is in its reach anyway.

/// @return the files of devices that this process could open: disks but for loop devices, and what leads to them or to all of
/// memory. None in tests.
std::vector<std::string> DisksInReach();
