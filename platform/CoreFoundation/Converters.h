#pragma once

#include <CoreFoundation/Text.h>

#include <CoreFoundation/MacTypes.h>
#include <array>
#include <memory>
#include <optional>
#include <span>
#include <unicode/ucnv.h>

// What bytes stand for in encodings that only a table can tell, after ICU.

namespace cf {

/// What the bytes of an 8-bit encoding stand for, and back. Those below 128 are ASCII.
class ByteTable {
public:
    /// @param name ICU's name of the encoding.
    explicit ByteTable(const char* name);

    /// Nothing where a byte stands for no character.
    std::optional<Text> decode(std::span<const UInt8> bytes) const;
    /// @return nothing where the encoding lacks the character.
    std::optional<UInt8> byteOf(char32_t wanted) const;

private:
    using Pair = std::pair<char16_t, UInt8>;

    std::array<char16_t, 256> fCharacters {};
    std::array<Pair, 256> fBytes {}; ///< by character
};

/// Converts encodings with one byte or two for a character. Not for several threads at once.
class PairConverter {
public:
    /// @param name ICU's name of the encoding.
    explicit PairConverter(const char* name);

    /// Nothing where the bytes are not whole characters, all of which the encoding has.
    std::optional<Text> decode(std::span<const UInt8> bytes) const;
    /// Writes the bytes of a character. @return how many; 0 where the encoding lacks it.
    size_t encode(char32_t character, std::span<UInt8> out) const;

private:
    struct Close {
        void operator()(UConverter* converter) const { ucnv_close(converter); }
    };
    std::unique_ptr<UConverter, Close> fConverter; ///< null when ICU lacks the encoding
};

}
