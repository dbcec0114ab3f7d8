#include <CoreFoundation/Converters.h>

#include <algorithm>
#include <climits>

namespace cf {

namespace {

constexpr char16_t kNoCharacter = 0xffff; ///< U+FFFF is no character, so no table has it

/// @return a converter that refuses whatever has no equivalent; null when ICU lacks the encoding.
UConverter* OpenStrictly(const char* name)
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name, &status);
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    return converter;
}

const char* AsChars(std::span<const UInt8> bytes) { return reinterpret_cast<const char*>(bytes.data()); }

}

ByteTable::ByteTable(const char* name)
{
    fCharacters.fill(kNoCharacter);
    const PairConverter converter(name);
    for (size_t i = 0; i < fCharacters.size(); i++) {
        const auto byte = static_cast<UInt8>(i);
        // ICU's tables for DOS put control characters into places of ASCII.
        const std::optional<Text> character
            = i < 0x80 ? Text(std::string(1, static_cast<char>(i))) : converter.decode({ &byte, 1 });
        if (character && character->length() == 1)
            fCharacters[i] = (*character)[0];
        fBytes[i] = { fCharacters[i], byte };
    }
    std::ranges::sort(fBytes);
}

std::optional<Text> ByteTable::decode(std::span<const UInt8> bytes) const
{
    std::u16string units(bytes.size(), u'\0');
    std::ranges::transform(bytes, units.begin(), [&](UInt8 byte) { return fCharacters[byte]; });
    if (std::ranges::find(units, kNoCharacter) != units.end())
        return std::nullopt;
    return Text(std::move(units));
}

std::optional<UInt8> ByteTable::byteOf(char32_t wanted) const
{
    const auto* const found = std::ranges::lower_bound(fBytes, wanted, {}, &Pair::first);
    if (found == fBytes.end() || found->first != wanted || wanted == kNoCharacter)
        return std::nullopt;
    return found->second;
}

PairConverter::PairConverter(const char* name)
    : fConverter(OpenStrictly(name))
{
}

std::optional<Text> PairConverter::decode(std::span<const UInt8> bytes) const
{
    if (bytes.size() > INT32_MAX) // the most that ICU takes at once
        return std::nullopt;
    std::u16string units(bytes.size(), u'\0'); // no character has more units than bytes
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = ucnv_toUChars(fConverter.get(), units.data(), static_cast<int32_t>(units.size()),
        AsChars(bytes), static_cast<int32_t>(bytes.size()), &status);
    if (U_FAILURE(status))
        return std::nullopt;
    units.resize(static_cast<size_t>(length));
    return Text(std::move(units));
}

size_t PairConverter::encode(char32_t character, std::span<UInt8> out) const
{
    std::u16string units;
    AppendCharacter(units, character);
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = ucnv_fromUChars(fConverter.get(), reinterpret_cast<char*>(out.data()),
        static_cast<int32_t>(out.size()), units.data(), static_cast<int32_t>(units.size()), &status);
    return U_SUCCESS(status) ? static_cast<size_t>(length) : 0;
}

}
