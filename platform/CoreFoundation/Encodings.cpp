#include <CoreFoundation/EncodingList.h>
#include <CoreFoundation/Encodings.h>

#include <algorithm>
#include <array>
#include <climits>
#include <unicode/ustring.h>

namespace cf {

namespace {

constexpr char16_t kByteOrderMark = 0xfeff;

std::string_view AsChars(std::span<const UInt8> bytes)
{
    return { reinterpret_cast<const char*>(bytes.data()), bytes.size() };
}

/// An unsigned number of Size bytes.
template <size_t Size> char32_t ReadUnit(const UInt8* bytes, bool bigEndian)
{
    char32_t unit = 0;
    for (size_t i = 0; i < Size; i++)
        unit |= static_cast<char32_t>(bytes[bigEndian ? Size - 1 - i : i]) << (8 * i);
    return unit;
}

template <size_t Size> void WriteUnit(char32_t unit, bool bigEndian, UInt8* bytes)
{
    for (size_t i = 0; i < Size; i++)
        bytes[bigEndian ? Size - 1 - i : i] = static_cast<UInt8>(unit >> (8 * i));
}

std::optional<Text> DecodeUtf8(std::span<const UInt8> bytes)
{
    if (bytes.size() > INT32_MAX) // the most that ICU takes at once
        return std::nullopt;
    std::u16string units(bytes.size(), u'\0');
    int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(units.data(), static_cast<int32_t>(units.size()), &length, AsChars(bytes).data(),
        static_cast<int32_t>(bytes.size()), &status);
    if (U_FAILURE(status))
        return std::nullopt;
    units.resize(static_cast<size_t>(length));
    return Text(std::move(units));
}

/// Takes a byte order mark off the front. @return the byte order.
template <size_t Size> bool TakeByteOrderMark(std::span<const UInt8>& bytes, bool bigEndian)
{
    if (bytes.size() < Size)
        return bigEndian;
    for (const bool order : { true, false }) {
        if (ReadUnit<Size>(bytes.data(), order) != kByteOrderMark)
            continue;
        bytes = bytes.subspan(Size);
        return order;
    }
    return bigEndian;
}

template <size_t Size>
std::optional<Text> DecodeUnits(const Encoding& encoding, std::span<const UInt8> bytes, bool external)
{
    if (bytes.size() % Size != 0)
        return std::nullopt;
    const bool bigEndian = external && encoding.openOrder ? TakeByteOrderMark<Size>(bytes, encoding.bigEndian)
                                                          : encoding.bigEndian;
    std::u16string units;
    units.reserve(bytes.size() / Size);
    for (size_t i = 0; i < bytes.size(); i += Size) {
        const char32_t unit = ReadUnit<Size>(&bytes[i], bigEndian);
        if (Size == 4 && (unit > 0x10ffff || IsSurrogate(unit)))
            return std::nullopt;
        AppendCharacter(units, unit);
    }
    return Text(std::move(units));
}

using CharacterBytes = std::array<UInt8, 4>;

size_t EncodeUtf8(char32_t character, CharacterBytes& out)
{
    if (IsSurrogate(character))
        return 0;
    const size_t count = character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
    for (size_t i = count; --i > 0; character >>= 6)
        out[i] = static_cast<UInt8>(0x80 | (character & 0x3f));
    constexpr std::array<UInt8, 5> leads = { 0, 0, 0xc0, 0xe0, 0xf0 };
    out[0] = static_cast<UInt8>(leads[count] | character);
    return count;
}

size_t EncodeUtf16(const Encoding& encoding, char32_t character, CharacterBytes& out)
{
    std::u16string units;
    AppendCharacter(units, character);
    for (size_t i = 0; i < units.size(); i++)
        WriteUnit<2>(units[i], encoding.bigEndian, &out[2 * i]);
    return 2 * units.size();
}

/// Writes characters in one encoding.
class Encoder {
public:
    explicit Encoder(const Encoding& encoding)
        : fEncoding(encoding)
        , fTable(encoding.table ? &encoding.table() : nullptr)
    {
        if (encoding.form == Form::Pairs)
            fPairs.emplace(encoding.converter);
    }

    /// @return the number of bytes written; 0 when the encoding lacks the character.
    size_t encode(char32_t character, CharacterBytes& out) const
    {
        switch (fEncoding.form) {
        case Form::Table: {
            const std::optional<UInt8> byte = fTable->byteOf(character);
            out[0] = byte.value_or(0);
            return byte ? 1 : 0;
        }
        case Form::Pairs:
            return fPairs->encode(character, out);
        case Form::Utf8:
            return EncodeUtf8(character, out);
        case Form::Utf16:
            return EncodeUtf16(fEncoding, character, out);
        case Form::Utf32:
            WriteUnit<4>(character, fEncoding.bigEndian, out.data());
            return IsSurrogate(character) ? 0 : 4;
        }
        return 0;
    }

private:
    const Encoding& fEncoding;
    const ByteTable* fTable;
    std::optional<PairConverter> fPairs;
};

/// Where encoded bytes go: into a buffer of limited size, or nowhere, when only measured.
class Sink {
public:
    Sink(UInt8* buffer, size_t size)
        : fBuffer(buffer)
        , fSize(buffer ? size : SIZE_MAX)
    {
    }

    bool take(const UInt8* bytes, size_t count)
    {
        if (count > fSize - fUsed)
            return false;
        if (fBuffer)
            std::copy_n(bytes, count, fBuffer + fUsed);
        fUsed += count;
        return true;
    }
    size_t room() const { return fSize - fUsed; }
    size_t used() const { return fUsed; }

private:
    UInt8* fBuffer;
    size_t fSize;
    size_t fUsed = 0;
};

}

bool IsKnownEncoding(CFStringEncoding encoding) { return FindEncoding(encoding) != nullptr; }

bool HasAsciiAsPart(CFStringEncoding encoding)
{
    const Encoding* known = FindEncoding(encoding);
    return known && (known->form == Form::Table || known->form == Form::Pairs || known->form == Form::Utf8);
}

size_t MaximumBytesPerUnit(CFStringEncoding encoding)
{
    const Encoding* known = FindEncoding(encoding);
    if (!known)
        return 0;
    constexpr std::array<size_t, 5> bytesOfForm = { 1, 2, 3, 2, 4 };
    return bytesOfForm.at(static_cast<size_t>(known->form));
}

std::optional<Text> Decode(CFStringEncoding encoding, std::span<const UInt8> bytes, bool external)
{
    const Encoding* known = FindEncoding(encoding);
    if (!known)
        return std::nullopt;
    if (HasAsciiAsPart(encoding) && IsAscii(AsChars(bytes)))
        return Text(std::string(AsChars(bytes)));
    switch (known->form) {
    case Form::Table:
        return known->table().decode(bytes);
    case Form::Pairs:
        return PairConverter(known->converter).decode(bytes);
    case Form::Utf8:
        return DecodeUtf8(external && AsChars(bytes).starts_with("\xef\xbb\xbf") ? bytes.subspan(3) : bytes);
    case Form::Utf16:
        return DecodeUnits<2>(*known, bytes, external);
    case Form::Utf32:
        return DecodeUnits<4>(*known, bytes, external);
    }
    return std::nullopt;
}

Encoded Encode(const Text& text, size_t start, size_t count, CFStringEncoding encoding, UInt8 lossByte,
    bool external, UInt8* buffer, size_t size)
{
    const Encoding* known = FindEncoding(encoding);
    if (!known)
        return {};
    Sink sink(buffer, size);
    if (text.isAscii() && HasAsciiAsPart(encoding)) {
        const size_t fitting = std::min(count, sink.room());
        sink.take(reinterpret_cast<const UInt8*>(text.ascii().data()) + start, fitting);
        return { fitting, fitting };
    }
    const Encoder encoder(*known);
    CharacterBytes bytes {};
    if (external && known->openOrder) {
        const size_t length = encoder.encode(kByteOrderMark, bytes);
        if (!sink.take(bytes.data(), length))
            return {};
    }
    const size_t end = start + count;
    size_t at = start;
    while (at < end) {
        char32_t character = text.characterAt(at);
        if (UnitCount(character) > end - at) // the range ends within a pair
            character = text[at];
        size_t length = encoder.encode(character, bytes);
        if (length == 0 && lossByte != 0)
            length = encoder.encode(lossByte, bytes);
        if (length == 0 || !sink.take(bytes.data(), length))
            break;
        at += UnitCount(character);
    }
    return { at - start, sink.used() };
}

std::optional<std::string> Encode(const Text& text, CFStringEncoding encoding)
{
    if (text.isAscii() && HasAsciiAsPart(encoding))
        return text.ascii();
    const Encoded needed = Encode(text, 0, text.length(), encoding, 0, false, nullptr, 0);
    if (needed.units < text.length() || !IsKnownEncoding(encoding))
        return std::nullopt;
    std::string bytes(needed.bytes, '\0');
    Encode(text, 0, text.length(), encoding, 0, false, reinterpret_cast<UInt8*>(bytes.data()), bytes.size());
    return bytes;
}

}
