#include <IOKit/HostScsi.h>

#include <IOKit/Properties.h>

#include <algorithm>
#include <charconv>
#include <vector>

namespace iokit {

namespace {

constexpr size_t kHeader = 4; // of the page and of each name in it
constexpr size_t kMostNames = 64;
constexpr unsigned kBinary = 1;
constexpr unsigned kWorldWide = 3; // what the standards call NAA

struct Designator {
    unsigned codeSet;
    unsigned association;
    unsigned type;
    std::string_view bytes;

    bool isWorldWide() const { return codeSet == kBinary && type == kWorldWide && bytes.size() == 8; }
};

unsigned ByteAt(std::string_view bytes, size_t place) { return static_cast<unsigned char>(bytes[place]); }

/// Nothing after one that is longer than the page can be believed.
std::vector<Designator> DesignatorsIn(std::string_view page)
{
    std::vector<Designator> found;
    page.remove_prefix(std::min(kHeader, page.size()));
    while (page.size() > kHeader && found.size() < kMostNames) {
        const size_t length = ByteAt(page, 3);
        if (length == 0 || length > page.size() - kHeader)
            break;
        found.push_back({ ByteAt(page, 0) & 0xFU, ByteAt(page, 1) >> 4U & 3U, ByteAt(page, 1) & 0xFU,
            page.substr(kHeader, length) });
        page.remove_prefix(kHeader + length);
    }
    return found;
}

cf::Owned<CFDictionaryRef> Described(const Designator& name)
{
    Properties properties;
    properties.number("Identifier Type", name.type)
        .number("Identifier Code Set", name.codeSet)
        .number("Association", name.association);
    if (name.codeSet == kBinary)
        properties.data("Identifier", name.bytes);
    else
        properties.text("Identifier", name.bytes);
    return properties.take();
}

}

std::optional<ScsiAddress> ScsiAddressIn(const std::string& name)
{
    std::vector<uint64_t> numbers;
    for (const char* next = name.data(); numbers.size() < 4;) {
        uint64_t number = 0;
        const auto [stop, error] = std::from_chars(next, name.data() + name.size(), number);
        if (error != std::errc() || *stop != (numbers.size() < 3 ? ':' : '\0'))
            return {};
        numbers.push_back(number);
        next = stop + 1;
    }
    return ScsiAddress { numbers[2], numbers[3] };
}

cf::Owned<CFArrayRef> DeviceIdentification(std::string_view page)
{
    std::vector<Designator> names = DesignatorsIn(page);
    std::stable_partition(
        names.begin(), names.end(), [](const Designator& name) { return name.isWorldWide(); });
    if (names.empty())
        return nullptr;
    cf::Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
    for (const Designator& name : names)
        CFArrayAppendValue(array.get(), Described(name).get());
    return cf::Owned<CFArrayRef>(array.release());
}

std::optional<uint64_t> WorldWideNumber(std::string_view text)
{
    if (!text.starts_with("0x"))
        return {};
    text.remove_prefix(2);
    uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, 16);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::string WorldWideName(std::string_view text)
{
    const std::optional<uint64_t> number = WorldWideNumber(text);
    std::string bytes;
    for (unsigned shift = 64; number && shift > 0; shift -= 8)
        bytes += static_cast<char>(*number >> (shift - 8) & 0xFFU);
    return bytes;
}

}
