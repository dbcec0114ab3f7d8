#pragma once

#include "codesign/Bundle.h"

#include <string>
#include <vector>

namespace codesign {

/// What a check found out.
struct Finding {
    std::string problem; ///< "" when all is well
    std::string subcomponent; ///< path of the nested bundle that has the problem; "" for the bundle itself
    std::vector<std::string> details; ///< a line for each thing that is not as it was sealed
};

/// Compares what is in a bundle's contents folder with its seal, and nested bundles with theirs.
/// @param strict refuses links that lead out of the bundle, and what lies beside its contents folder.
Finding Verify(const Bundle& bundle, bool strict);

}
