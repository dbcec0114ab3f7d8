#include "ui/framework/rtf/SymbolFonts.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace rtf {

namespace {

constexpr char16_t kBullet = u'•';

/// From 0x20 on.
constexpr std::u16string_view kSymbolLowerHalf
    = u" !∀#∃%&∋()∗+,−./0123456789:;<=>?≅ΑΒΧΔΕΦΓΗΙϑΚΛΜΝΟΠΘΡΣΤΥςΩΞΨΖ[∴]⊥_"
      u"‾αβχδεφγηιϕκλμνοπθρστυϖωξψζ{|}∼";
/// From 0xa0 on.
constexpr std::u16string_view kSymbolUpperHalf
    = u"€ϒ′≤⁄∞ƒ♣♦♥♠↔←↑→↓°±″≥×∝∂•÷≠≡≈…⏐⎯↵ℵℑℜ℘⊗⊕∅∩∪⊃⊇⊄⊂⊆∈∉∠∇®©™∏√⋅¬∧∨⇔⇐⇑⇒⇓◊"
      u"⟨®©™∑⎛⎜⎝⎡⎢⎣⎧⎨⎩⎪€⟩∫⌠⎮⌡⎞⎟⎠⎤⎥⎦⎫⎬⎭";

static_assert(kSymbolLowerHalf.size() == 0x7f - 0x20 && kSymbolUpperHalf.size() == 0xff - 0xa0);

/// By byte.
constexpr auto kDingbats = std::to_array<std::pair<unsigned char, char16_t>>(
    { { 0x20, u' ' }, { 0x46, u'☞' }, { 0x6c, u'●' }, { 0x6d, u'❍' }, { 0x6e, u'■' }, { 0x6f, u'□' },
        { 0x70, u'❐' }, { 0x71, u'❑' }, { 0x72, u'❒' }, { 0x73, u'◆' }, { 0x74, u'◆' }, { 0x75, u'◆' },
        { 0x76, u'❖' }, { 0xa1, u'○' }, { 0xa7, u'▪' }, { 0xa8, u'□' }, { 0xd8, u'➢' }, { 0xe0, u'→' },
        { 0xe8, u'➔' }, { 0xf0, u'⇨' }, { 0xfb, u'✗' }, { 0xfc, u'✓' }, { 0xfd, u'☒' }, { 0xfe, u'☑' } });

static_assert(std::ranges::is_sorted(kDingbats));

}

char16_t SymbolCharacter(unsigned char byte)
{
    const std::u16string_view half = byte < 0x80 ? kSymbolLowerHalf : kSymbolUpperHalf;
    const size_t index = static_cast<size_t>(byte) - (byte < 0x80 ? 0x20 : 0xa0);
    return index < half.size() ? half[index] : kBullet;
}

char16_t DingbatCharacter(unsigned char byte)
{
    const auto* const found
        = std::ranges::lower_bound(kDingbats, byte, {}, [](auto pair) { return pair.first; });
    return found != kDingbats.end() && found->first == byte ? found->second : kBullet;
}

}
