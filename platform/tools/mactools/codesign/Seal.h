#pragma once

#include "codesign/Bundle.h"
#include "codesign/SealRules.h"

#include <map>
#include <string>

namespace codesign {

constexpr const char* kUnsigned = "code object is not signed at all";
constexpr const char* kDamagedSeal = "invalid resource directory (directory or signature have been modified)";

struct SealedItem {
    enum class Kind { file, link, code };
    Kind kind;
    std::string value; ///< of a file its SHA-256 or, where the seal has none, SHA-1; of a link what it says
    bool isOptional; ///< may be missing
};

/// What a bundle's _CodeSignature/CodeResources says.
struct Seal {
    int version
        = 0; ///< 1 knows only files, 2 links and nested code as well; where a bundle has both, 2 counts
    std::map<std::string, SealedItem>
        items; ///< by path below the contents folder; never to be opened by that
    SealRules rules;
};

/// @return "" or what is wrong with the seal, in words.
std::string ReadSeal(const Bundle& bundle, Seal& seal);

}
