// A text is refused without a trace or becomes a size, whose own texts end within their buffers.

#include "util/StringConversions.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

/// Calls `write` with a buffer of exactly this size.
template <class Write> void WriteInto(size_t capacity, const Write& write)
{
    const auto buffer = std::make_unique<char[]>(capacity);
    std::memset(buffer.get(), 'x', capacity);
    write(buffer.get());
    Require(std::memchr(buffer.get(), 0, capacity) != nullptr);
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    constexpr uint64_t untouched = 0xDEADBEEF;
    uint64_t bytes = untouched;
    if (!ConvertSizeStringToUInt64(text.c_str(), &bytes)) {
        Require(bytes == untouched);
        return 0;
    }
    const size_t capacity = size % 32 + 1;
    WriteInto(capacity, [&](char* buffer) { ConvertUInt64ToSizeString(bytes, buffer, capacity); });
    WriteInto(capacity, [&](char* buffer) { ConvertUInt64ToStringWithCommas(bytes, buffer, capacity); });
    const std::string plain = std::to_string(bytes);
    uint64_t again = 0;
    Require(ConvertSizeStringToUInt64(plain.c_str(), &again) && (again == bytes || bytes > INT64_MAX));
    return 0;
}
