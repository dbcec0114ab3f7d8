#pragma once

#include <string>
#include <vector>

// No mistake in a test, or in whatever it starts, can touch a disk of this machine, whoever runs it. Linking `disk_guard`, as
// zek_test() does, has that seen to before main(): /dev/null lies on the files of all devices that store something, but for
// loop devices, in a mount namespace of the program's own, and no such file can be made. A program for which that cannot be
// done ends at once, with a sentence, unless none of these devices is in its reach anyway. A test that undoes it on purpose
// can, and a disk that is attached while a test runs is not hidden from it.

/// @return the files of devices that this process could open: disks but for loop devices, and what leads to them or to all
/// of memory. None in tests.
std::vector<std::string> DisksInReach();
