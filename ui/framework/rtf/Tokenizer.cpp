#include "ui/framework/rtf/Tokenizer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace rtf {

namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\t'; }

/// By byte: whether it is text and nothing else.
constexpr std::array<bool, 256> kIsText = [] {
    std::array<bool, 256> isText {};
    for (size_t byte = 0x20; byte < isText.size(); byte++)
        isText[byte] = byte != '\\' && byte != '{' && byte != '}';
    isText['\t'] = true;
    return isText;
}();

}

Token Tokenizer::next()
{
    while (!atEnd() && IsControl(fBytes[fAt])) // line ends stand anywhere, and mean nothing
        fAt++;
    if (atEnd())
        return {};
    switch (fBytes[fAt]) {
    case '{':
        fAt++;
        return { Token::Kind::Open };
    case '}':
        fAt++;
        return { Token::Kind::Close };
    case '\\':
        fAt++;
        return control();
    default:
        return textFrom(fAt);
    }
}

Token Tokenizer::textFrom(size_t start)
{
    while (!atEnd() && kIsText[static_cast<unsigned char>(fBytes[fAt])])
        fAt++;
    return { Token::Kind::Text, fBytes.substr(start, fAt - start) };
}

/// What a backslash, already taken, begins.
Token Tokenizer::control()
{
    if (atEnd())
        return {};
    const char first = fBytes[fAt];
    if (IsLetter(first))
        return word();
    fAt++;
    switch (first) {
    case '\'':
        return byte();
    case '\\':
    case '{':
    case '}':
        return { Token::Kind::Text, fBytes.substr(fAt - 1, 1) };
    default:
        return symbol(first);
    }
}

Token Tokenizer::word()
{
    const char* const first = fBytes.data() + fAt;
    const char* const end = fBytes.data() + fBytes.size();
    const char* at = std::find_if_not(first, end, IsLetter);
    Token token { Token::Kind::Word, { first, static_cast<size_t>(at - first) } };
    const char* const digits = at + (at < end && *at == '-' ? 1 : 0);
    if (digits < end && IsDigit(*digits)) {
        token.hasNumber = true;
        const auto [last, error] = std::from_chars(at, end, token.number);
        if (error != std::errc())
            token.number
                = digits > at ? std::numeric_limits<int32_t>::min() : std::numeric_limits<int32_t>::max();
        at = last;
    }
    if (at < end && *at == ' ') // belongs to the word
        at++;
    fAt = static_cast<size_t>(at - fBytes.data());
    if (token.text == "bin")
        fAt += std::min(fBytes.size() - fAt, static_cast<size_t>(std::max(token.number, 0)));
    return token;
}

/// The two digits after \'; where they are not, the escape is nothing but itself.
Token Tokenizer::byte()
{
    unsigned char value = 0;
    const char* const first = fBytes.data() + fAt;
    const char* const end = first + std::min<size_t>(2, fBytes.size() - fAt);
    const auto [last, error] = std::from_chars(first, end, value, 16);
    if (error != std::errc() || last != first + 2)
        return symbol('\'');
    fAt += 2;
    return { Token::Kind::Byte, {}, value };
}

Token Tokenizer::symbol(char character)
{
    if (character == '\r' && !atEnd() && fBytes[fAt] == '\n')
        fAt++;
    const char shown = character == '\r' ? '\n' : character;
    return { Token::Kind::Symbol, {}, static_cast<unsigned char>(shown) };
}

}
