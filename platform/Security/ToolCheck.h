#pragma once

#include <Host/Descriptor.h>

#include <string>

/// Opens a program that is to be started with privileges, if nobody who lacks them can have put it there or
/// can change it: it and each folder above it belong to root, and nobody else can write the program or
/// replace what leads to it. Links in the path are resolved first, and what is opened is what was checked.
/// @param hostPath absolute. @param trustsCaller files of the effective user are as good as root's, and the group that
/// the user shares with nobody may write them.
/// @return an O_PATH descriptor of an executable regular file, or none.
Descriptor OpenTrustedTool(const std::string& hostPath, bool trustsCaller);
