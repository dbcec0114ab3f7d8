// The output of ps gives the same process however its reads are split. The first byte says where.

#include "util/Processes.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr const char* kName = "ps";

/// @return the process that is found when the text comes in pieces of this size.
pid_t Search(const std::string& text, size_t piece)
{
    std::vector<char> buffer(text.size() + 1);
    size_t leftover = 0;
    for (size_t at = 0; at < text.size(); at += piece) {
        const size_t count = std::min(piece, text.size() - at);
        std::memcpy(buffer.data() + leftover, text.data() + at, count);
        buffer[leftover + count] = 0;
        if (const pid_t found = SearchBufferFor_PID(buffer.data(), &leftover, kName); found != 0)
            return leftover == 0 ? found : -1;
        if (leftover > at + count)
            std::abort();
    }
    return 0;
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 2)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    const pid_t split = Search(text, size_t { data[0] } + 1);
    const bool isOneText = text.find('\0') == std::string::npos; // a zero byte ends the piece that it is in
    if (isOneText && split != Search(text, text.size()))
        std::abort();
    return 0;
}
