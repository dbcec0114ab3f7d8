#pragma once

#include "Tool.h"

/// mdutil: lets the desktop's indexers into a volume, or keeps them out by marker files at its top, one that they obey and one
/// for the Mac's, should the volume get there. Whoever may write there may do so.
/// @return 0; 64 for a wrong command line; 1 for what is not the top of a mounted volume or the start-up volume, and when a
/// marker cannot be changed.
int Mdutil(const Arguments& arguments);
