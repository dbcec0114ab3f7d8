#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace rtf {

/// A piece of rich text as it is written.
struct Token {
    enum class Kind : uint8_t {
        End, ///< there is nothing more
        Open, ///< a group begins
        Close, ///< a group ends
        Text, ///< bytes of text in `text`: no line ends and, but for tabs, no control characters
        Byte, ///< one byte of text in `number`, written as \'hh
        Word, ///< a control word: its name in `text`, its parameter in `number`
        Symbol ///< a control symbol: its character in `number`; '\n' for a line end of any form
    };

    Kind kind = Kind::End;
    std::string_view text = {};
    int32_t number = 0; ///< too large a parameter gives the largest number
    bool hasNumber = false; ///< a word came with a parameter
};

/// Takes rich text apart. The binary data of \bin is passed over, at most to the end.
class Tokenizer {
public:
    /// @param bytes must outlive the tokenizer and its tokens.
    explicit Tokenizer(std::string_view bytes)
        : fBytes(bytes)
    {
    }

    Token next();

private:
    Token textFrom(size_t start);
    Token control();
    Token word();
    Token byte();
    Token symbol(char character);

    bool atEnd() const { return fAt >= fBytes.size(); }

    std::string_view fBytes;
    size_t fAt = 0;
};

}
