// Any property list becomes a text within its limit, and the same text in either of two ways.

#include "util/CFRef.h"
#include "util/JSON.h"
#include "util/PropertyLists.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr size_t kLimit = 1048576;

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

template <class Container> void Check(Container container, bool (*create)(Container, CFDataRef*))
{
    static std::vector<char> text(kLimit);
    text[0] = 0;
    CFDataRef data = nullptr;
    const bool isWritten = create(container, &data);
    const CFRef<CFDataRef> owner(data);
    Require(ConvertObjectToJSON(container, text.data()) == isWritten);
    if (!isWritten)
        return;
    const auto size = static_cast<size_t>(CFDataGetLength(data));
    Require(size <= kLimit && std::strlen(text.data()) == size - 1);
    Require(std::memcmp(text.data(), CFDataGetBytePtr(data), size) == 0);
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const auto length = static_cast<uint32_t>(size);
    if (const CFRef<CFMutableDictionaryRef> dictionary(CreateCFDictionaryWithContentsOfBuffer(bytes, length));
        dictionary)
        Check<CFDictionaryRef>(dictionary.get(), CreateJSON_DataFromDictionary);
    else if (const CFRef<CFMutableArrayRef> array(CreateCFArrayWithContentsOfBuffer(bytes, length)); array)
        Check<CFArrayRef>(array.get(), CreateJSON_DataFromArray);
    return 0;
}
