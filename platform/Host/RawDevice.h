#pragma once

/// Opens a raw device for reading: what is read comes from the device itself, not out of the system's memory. Reads have to
/// start at multiples of the device's blocks, as have their sizes and buffers; multiples of 4096 will do.
/// @param macPath as a Mac program writes it, "/dev/rdisk2". @return a descriptor to be closed; -1 with errno.
int HostOpenRawDevice(const char* macPath);
