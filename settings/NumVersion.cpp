#include "settings/NumVersion.h"

#include "util/Bundle.h"
#include "util/CFText.h"

#include <Host/HostPath.h>
#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

enum Stage : uint8_t { kNoStage = 0x00, kDevelopment = 0x20, kAlpha = 0x40, kBeta = 0x60, kFinal = 0x80 };

struct StageLetter {
    char letter;
    Stage stage;
};
constexpr StageLetter kStageLetters[] = { { 'd', kDevelopment }, { 'a', kAlpha }, { 'b', kBeta } };

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

uint32_t DigitValue(char c) { return static_cast<uint32_t>(c - '0'); }

/// Reads one or two decimal digits as binary-coded decimal.
bool ReadMajor(const char*& text, uint32_t& major)
{
    if (!IsDigit(*text))
        return false;
    major = DigitValue(*text++);
    if (IsDigit(*text))
        major = major << 4 | DigitValue(*text++);
    return true;
}

/// Reads a number that fits a nibble: one digit, or 10 to 15.
bool ReadNibble(const char*& text, uint32_t& nibble)
{
    if (!IsDigit(*text))
        return false;
    const char first = *text++;
    nibble = DigitValue(first);
    if (!IsDigit(*text))
        return true;
    if (first != '1' || *text > '5')
        return false;
    nibble = 10 + DigitValue(*text++);
    return true;
}

/// Reads the number after a stage letter: up to three digits, below 256.
bool ReadNonRelease(const char*& text, uint32_t& number)
{
    if (!IsDigit(*text))
        return false;
    number = 0;
    for (int digits = 0; digits < 3 && IsDigit(*text); ++digits)
        number = number * 10 + DigitValue(*text++);
    return number < 256;
}

/// Reads what follows the numbers: a stage letter with its number, or nothing, which is a final version.
bool ReadStage(const char*& text, uint32_t& stage, uint32_t& nonRelease)
{
    stage = kFinal;
    nonRelease = 0;
    if (*text == '\0')
        return true;
    const auto* const known = std::find_if(std::begin(kStageLetters), std::end(kStageLetters),
        [text](const StageLetter& candidate) { return candidate.letter == *text; });
    if (known == std::end(kStageLetters))
        return IsDigit(*text);
    stage = known->stage;
    return ReadNonRelease(++text, nonRelease);
}

/// A text under construction in a buffer that is known to be long enough.
class Scratch {
public:
    void put(char c) { fText[fLength++] = c; }
    void putDigit(uint32_t digit) { put(static_cast<char>('0' + digit)); }
    void putNibble(uint32_t nibble)
    {
        if (nibble >= 10)
            put('1');
        putDigit(nibble % 10);
    }
    const char* text() const { return fText; }
    size_t length() const { return fLength; }

private:
    char fText[16] = {}; // the longest version, "99.15.15 b255", takes 13
    size_t fLength = 0;
};

void PutNumbers(Scratch& scratch, uint32_t version)
{
    const uint32_t tens = version >> 28, units = version >> 24 & 0xF;
    const uint32_t minor = version >> 20 & 0xF, bugFix = version >> 16 & 0xF;
    if (tens != 0)
        scratch.putDigit(tens);
    scratch.putDigit(units);
    scratch.put('.');
    scratch.putNibble(minor);
    if (bugFix == 0)
        return;
    scratch.put('.');
    scratch.putNibble(bugFix);
}

void PutNonRelease(Scratch& scratch, uint32_t number)
{
    if (number >= 100)
        scratch.putDigit(number / 100);
    // Whether there is a tens digit is decided by what remains below 100, so 105 comes out as 15.
    const uint32_t rest = number % 100;
    if (rest >= 10)
        scratch.putDigit(rest / 10);
    scratch.putDigit(rest % 10);
}

/// @return false when the version has no text.
bool PutVersion(Scratch& scratch, uint32_t version, bool spaceBeforeStage)
{
    const bool decimalMajor = version < 0xA0000000 && (version >> 24 & 0xF) < 10;
    if (!decimalMajor)
        return false;
    PutNumbers(scratch, version);
    const auto stage = static_cast<Stage>(version >> 8 & 0xFF);
    if (stage == kNoStage || stage == kFinal)
        return true;
    const auto* const known = std::find_if(std::begin(kStageLetters), std::end(kStageLetters),
        [stage](const StageLetter& candidate) { return candidate.stage == stage; });
    if (known == std::end(kStageLetters))
        return false;
    if (spaceBeforeStage)
        scratch.put(' ');
    scratch.put(known->letter);
    PutNonRelease(scratch, version & 0xFF);
    return true;
}

}

bool ConvertStringToNumVersion(const char* text, uint32_t* version)
{
    if (text == nullptr)
        return false;
    uint32_t major = 0, minor = 0, bugFix = 0, stage = 0, nonRelease = 0;
    if (!ReadMajor(text, major) || *text++ != '.' || !ReadNibble(text, minor))
        return false;
    if (text[0] == '.' && IsDigit(text[1]) && !ReadNibble(++text, bugFix))
        return false;
    if (*text == ' ')
        ++text;
    if (!ReadStage(text, stage, nonRelease))
        return false;
    *version = major << 24 | minor << 20 | bugFix << 16 | stage << 8 | nonRelease;
    return true;
}

void ConvertNumVersionToString(uint32_t version, char* buffer, size_t size, bool spaceBeforeStage)
{
    if (buffer == nullptr || size == 0)
        return;
    std::memset(buffer, 0, size);
    Scratch scratch;
    if (PutVersion(scratch, version, spaceBeforeStage))
        std::memcpy(buffer, scratch.text(), std::min(scratch.length(), size - 1));
}

uint32_t BundleVersion(const char* path)
{
    if (path == nullptr)
        return 0;
    const CFRef<CFURLRef> url = FileURL(HostPath(path), true);
    const CFRef<CFBundleRef> bundle(url ? CFBundleCreate(kCFAllocatorDefault, url.get()) : nullptr);
    if (!bundle)
        return 0;
    const CFStringRef text = BundleText(bundle.get(), kCFBundleVersionKey);
    char buffer[16];
    uint32_t version = 0;
    if (text != nullptr && CFStringGetCString(text, buffer, sizeof buffer, kCFStringEncodingASCII))
        ConvertStringToNumVersion(buffer, &version);
    return version;
}
