#include <IOKit/RecordedTextValue.h>

#include <CoreFoundation/CFNumber.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace iokit {

namespace {

constexpr uint8_t kNoDigit = 0xff;

constexpr std::array<uint8_t, 256> HexadecimalDigits()
{
    std::array<uint8_t, 256> digits {};
    digits.fill(kNoDigit);
    for (uint8_t i = 0; i < 10; ++i)
        digits.at(static_cast<size_t>('0') + i) = i;
    for (uint8_t i = 0; i < 6; ++i)
        digits.at(static_cast<size_t>('a') + i) = digits.at(static_cast<size_t>('A') + i)
            = static_cast<uint8_t>(10 + i);
    return digits;
}
constexpr std::array<uint8_t, 256> kDigits = HexadecimalDigits();

uint8_t DigitAt(std::string_view text, size_t position)
{
    return position < text.size() ? kDigits[static_cast<uint8_t>(text[position])] : kNoDigit;
}

cf::Owned<CFTypeRef> Flag(bool value)
{
    return cf::Owned<CFTypeRef>(cf::Retained<CFTypeRef>(value ? kCFBooleanTrue : kCFBooleanFalse));
}

}

TextValueReader::Result TextValueReader::read(std::string_view text, bool isCut)
{
    fText = text;
    fPosition = 0;
    fIsCut = isCut;
    fIsOpen = fIsLost = false;
    fUnreadable = 0;
    fClosers.clear();
    if (text.starts_with('"'))
        return readText();
    readValue();
    while (fMaker.depth() > 0 && !isAtEnd())
        readNext();
    fIsOpen = fIsOpen || fMaker.depth() > 0;
    if ((fIsOpen || !isAtEnd()) && !fIsLost)
        ++fUnreadable;
    return { fMaker.take(), fUnreadable, fIsOpen };
}

/// A text that is a value of its own goes up to the last quote. Where the line was cut, that may be one of several in it.
TextValueReader::Result TextValueReader::readText() const
{
    if (fText.size() < 2 || !fText.ends_with('"'))
        return { nullptr, 1, true };
    const std::string_view text = fText.substr(1, fText.size() - 2);
    if (fIsCut && (text.empty() || text.find('"') != std::string_view::npos))
        return { nullptr, 1, true };
    return { cf::Owned<CFTypeRef>(RecordedString(text)), 0, false };
}

void TextValueReader::readNext()
{
    const char c = fText[fPosition];
    if (c == fClosers.back()) {
        ++fPosition;
        fClosers.pop_back();
        fMaker.end();
    } else if (c == ',') {
        ++fPosition;
    } else {
        readMember();
    }
}

void TextValueReader::readMember()
{
    if (fMaker.kind() == Kind::Dictionary) {
        if (fText[fPosition] != '"')
            return skip();
        const size_t end = fText.find("\"=", fPosition + 1);
        if (end == std::string_view::npos)
            return leaveOpen();
        fMaker.setKey(fText.substr(fPosition + 1, end - fPosition - 1));
        fPosition = end + 2;
        if (isAtEnd())
            return;
    }
    readValue();
}

void TextValueReader::readValue()
{
    switch (isAtEnd() ? '\0' : fText[fPosition]) {
    case '{':
        return begin(Kind::Dictionary, '}');
    case '(':
        return begin(Kind::Array, ')');
    case '[':
        return begin(Kind::Array, ']');
    case '"':
        return readNestedText();
    case '<':
        return readData();
    case 'Y':
    case 'N':
        return readFlag();
    default:
        return readNumber();
    }
}

void TextValueReader::begin(Kind kind, char closer)
{
    ++fPosition;
    fClosers += closer;
    fUnreadable += fMaker.begin(kind) ? 0 : 1;
}

/// Whether what can follow a value stands there.
bool TextValueReader::isAfterValue(size_t position) const
{
    if (position == fText.size())
        return true;
    return fMaker.depth() > 0 && (fText[position] == ',' || fText[position] == fClosers.back());
}

/// Whether a text can end before `rest`: quotes with a comma are in texts too, but people put a space behind that.
bool TextValueReader::endsText(std::string_view rest) const
{
    return rest.empty() || rest.front() == fClosers.back()
        || (rest.front() == ',' && !rest.starts_with(", "));
}

/// @return the quote that ends a text; npos where none does.
size_t TextValueReader::endOfText(size_t position) const
{
    size_t quote = fText.find('"', position);
    while (quote != std::string_view::npos && !endsText(fText.substr(quote + 1)))
        quote = fText.find('"', quote + 1);
    return quote;
}

void TextValueReader::readNestedText()
{
    const size_t start = fPosition + 1;
    const size_t end = endOfText(start);
    if (end == std::string_view::npos)
        return leaveOpen();
    add(cf::Owned<CFTypeRef>(RecordedString(fText.substr(start, end - start))), end + 1);
}

void TextValueReader::readData()
{
    fBytes.clear();
    if (fText.substr(fPosition).starts_with("<\""))
        readTexts();
    else
        readHexadecimal();
}

void TextValueReader::readHexadecimal()
{
    size_t position = fPosition + 1;
    for (uint8_t high = 0, low = 0;
         (high = DigitAt(fText, position)) != kNoDigit && (low = DigitAt(fText, position + 1)) != kNoDigit;
         position += 2)
        fBytes += static_cast<char>(high << 4U | low);
    if (position + 1 >= fText.size() && !fText.ends_with('>'))
        return leaveOpen();
    if (fText[position] != '>')
        return skip();
    add(RecordedData(fBytes), position + 1);
}

void TextValueReader::readTexts()
{
    constexpr std::string_view between = "\",\"";
    size_t end = fText.find("\">", fPosition + 2);
    while (end != std::string_view::npos && !isAfterValue(end + 2))
        end = fText.find("\">", end + 1);
    if (end == std::string_view::npos)
        return leaveOpen();
    std::string_view texts = fText.substr(fPosition + 2, end - fPosition - 2);
    for (size_t next = 0; (next = texts.find(between)) != std::string_view::npos;) {
        fBytes.append(texts.substr(0, next)) += '\0';
        texts.remove_prefix(next + between.size());
    }
    fBytes.append(texts) += '\0';
    add(RecordedData(fBytes), end + 2);
}

void TextValueReader::readNumber()
{
    const bool isHexadecimal = fText.substr(fPosition).starts_with("0x");
    const char* const start = fText.data() + fPosition + (isHexadecimal ? 2 : 0);
    const char* const textEnd = fText.data() + fText.size();
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(start, textEnd, number, isHexadecimal ? 16 : 10);
    if (error != std::errc())
        return skip();
    if (end == textEnd && (fIsCut || fMaker.depth() > 0))
        return leaveOpen(); // digits may be missing
    add(RecordedNumber(number), static_cast<size_t>(end - fText.data()));
}

void TextValueReader::readFlag()
{
    const std::string_view rest = fText.substr(fPosition);
    if (rest.starts_with("Yes"))
        add(Flag(true), fPosition + 3);
    else if (rest.starts_with("No"))
        add(Flag(false), fPosition + 2);
    else
        skip();
}

/// @param end of the value: only if nothing else stands there is it what was meant.
void TextValueReader::add(cf::Owned<CFTypeRef> value, size_t end)
{
    if (!isAfterValue(end))
        return skip();
    fPosition = end;
    fIsLost = false;
    fUnreadable += fMaker.add(std::move(value)) ? 0 : 1;
}

/// Gives up a member; the next one begins after a comma.
void TextValueReader::skip()
{
    fUnreadable += fIsLost ? 0 : 1;
    fIsLost = true;
    if (fMaker.depth() == 0) {
        fPosition = fText.size();
        return;
    }
    fMaker.add(nullptr);
    const std::array<char, 2> stops { ',', fClosers.back() };
    fPosition = std::min(
        fText.find_first_of(std::string_view(stops.data(), stops.size()), fPosition), fText.size());
}

/// Gives up all that is left, as what does not end there.
void TextValueReader::leaveOpen()
{
    fIsOpen = true;
    fPosition = fText.size();
}

}
