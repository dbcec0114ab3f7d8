#include <IOKit/HostAttributes.h>

#include <CoreFoundation/CFUUID.h>
#include <CoreFoundation/Runtime.h>
#include <Host/HostText.h>

#include <algorithm>
#include <charconv>

namespace iokit {

namespace {

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\0'; }

}

std::string Cleaned(std::string_view text)
{
    const auto* const first = std::find_if_not(text.begin(), text.end(), IsBlank);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), IsBlank);
    std::string clean(first, last.base());
    std::replace_if(clean.begin(), clean.end(), IsControl, '?');
    return clean;
}

std::string UUIDText(const std::string& text)
{
    const cf::Owned<CFStringRef> string(cf::MakeString(text));
    const cf::Owned<CFUUIDRef> uuid(string ? CFUUIDCreateFromString(nullptr, string.get()) : nullptr);
    const cf::Owned<CFStringRef> capitals(uuid ? CFUUIDCreateString(nullptr, uuid.get()) : nullptr);
    return capitals ? cf::Utf8(capitals.get()) : "";
}

std::string Attributes::bytes(const std::string& name) const
{
    return HostText(fFolder + '/' + name).value_or("");
}

std::optional<uint64_t> Attributes::number(const std::string& name) const
{
    const std::string digits = text(name);
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    const bool isNumber = error == std::errc() && !digits.empty() && end == digits.data() + digits.size();
    return isNumber ? std::optional(value) : std::nullopt;
}

}
