#pragma once

#include "Tool.h"

/// "ioreg": prints the device registry as a tree, or as an XML property list.
int Ioreg(const Arguments& arguments);
