#pragma once

#include "Tool.h"

#include <IOKit/NvramFirmware.h>

#include <iosfwd>

/// bless: tells and chooses the disk that the computer starts from. On a computer's own volume, where its firmware has a menu
/// of what it starts, it puts the entry for the disk to the front; elsewhere it is only remembered.
/// @return 0; 1 for a wrong command line, and where nothing can be told or chosen, which is complained of.
int Bless(const Arguments& arguments);

/// Where the choice is kept.
struct BlessPlace {
    iokit::Nvram& nvram;
    const iokit::EfiVariables* firmware; ///< its global variables; null where it is only remembered
};
/// The same for this place.
int BlessAt(const BlessPlace& place, const Arguments& arguments, std::ostream& out);
