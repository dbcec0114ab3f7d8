// A text is refused without a trace, or becomes a version that its own text gives again.

#include "settings/NumVersion.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

/// Whether the version's text leaves something out on purpose: the tens digit 0 of a number from 100 on.
bool TextIsExact(uint32_t version)
{
    const uint32_t number = version & 0xFF;
    return number < 100 || number % 100 >= 10;
}

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    constexpr uint32_t untouched = 0xDEADBEEF;
    uint32_t version = untouched;
    if (!ConvertStringToNumVersion(text.c_str(), &version)) {
        Require(version == untouched);
        return 0;
    }
    char written[16];
    ConvertNumVersionToString(version, written, sizeof written, size % 2 == 0);
    uint32_t again = 0;
    Require(ConvertStringToNumVersion(written, &again));
    Require(again == version || !TextIsExact(version));

    const size_t room = size % sizeof written + 1;
    char cut[sizeof written];
    ConvertNumVersionToString(version, cut, room, size % 2 == 0);
    Require(std::strlen(cut) < room && std::strncmp(cut, written, room - 1) == 0);
    return 0;
}
