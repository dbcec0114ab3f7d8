#pragma once

namespace rtf {

/// What a byte stands for in the font "Symbol".
char16_t SymbolCharacter(unsigned char byte);

/// What a byte stands for in the font "Wingdings", or the nearest to it; whatever is not used to mark items of lists
/// shows as a bullet.
char16_t DingbatCharacter(unsigned char byte);

}
