#include <CoreFoundation/Encodings.h>
#include <CoreFoundation/StringObject.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstring>
#include <vector>

namespace {

enum class Kind { Unused, Int, Long, LongLong, Double, LongDouble, Pointer };

union Argument {
    long long integer;
    double real;
    long double longReal;
    const void* pointer;
};

constexpr size_t kNoArgument = SIZE_MAX;

/// A width or precision: a number, or the number of the argument that says it.
struct Amount {
    int value;
    size_t argument = kNoArgument;
};

struct Conversion {
    std::string flags;
    Amount width { 0 };
    Amount precision { -1 }; ///< negative: none given
    std::string length; ///< "", "hh", "h", "l", "ll" …
    char letter = 0;
    size_t argument = kNoArgument;
};

/// Literal text, then perhaps a conversion (letter not 0).
struct Piece {
    cf::Text literal;
    Conversion conversion;
};

/// Bounds what a format can ask for: more is a slip of the pen, and would only eat memory or read arguments
/// never given.
constexpr int kMaximumAmount = 0xffff;
constexpr int kMaximumArguments = 64;

bool Contains(std::string_view set, char16_t unit)
{
    return unit < 0x80 && unit != 0 && set.find(static_cast<char>(unit)) != std::string_view::npos;
}

Kind KindOf(const Conversion& conversion)
{
    if (Contains("@sSp", static_cast<char16_t>(conversion.letter)))
        return Kind::Pointer;
    if (Contains("aAeEfFgG", static_cast<char16_t>(conversion.letter)))
        return conversion.length == "L" ? Kind::LongDouble : Kind::Double;
    if (conversion.length == "ll" || conversion.length == "q")
        return Kind::LongLong;
    return Contains("lzjt", conversion.length.empty() ? u'\0' : static_cast<char16_t>(conversion.length[0]))
        ? Kind::Long
        : Kind::Int;
}

class Parser {
public:
    explicit Parser(const cf::Text& format)
        : fFormat(format)
    {
    }

    std::vector<Piece> pieces()
    {
        std::vector<Piece> pieces;
        size_t literalStart = 0;
        while (fAt < fFormat.length()) {
            if (fFormat[fAt] != u'%') {
                fAt++;
                continue;
            }
            const size_t percent = fAt++;
            Conversion conversion;
            if (!parse(conversion)) // not a conversion: stays as text
                continue;
            pieces.push_back({ fFormat.substring(literalStart, percent - literalStart), conversion });
            literalStart = fAt;
        }
        pieces.push_back({ fFormat.substring(literalStart, fFormat.length() - literalStart), {} });
        return pieces;
    }

private:
    bool peek(std::string_view set) const { return fAt < fFormat.length() && Contains(set, fFormat[fAt]); }
    bool take(char wanted)
    {
        const bool there = peek({ &wanted, 1 });
        fAt += there;
        return there;
    }

    int number()
    {
        int value = 0;
        for (; peek("0123456789"); fAt++)
            value = std::min(value * 10 + (fFormat[fAt] - u'0'), kMaximumAmount);
        return value;
    }

    /// "n$". @return the argument's number from 0, or kNoArgument with nothing taken.
    size_t position()
    {
        const size_t start = fAt;
        const int value = number();
        if (value >= 1 && value <= kMaximumArguments && take('$'))
            return static_cast<size_t>(value - 1);
        fAt = start;
        return kNoArgument;
    }

    size_t positionOrNext()
    {
        const size_t explicitly = position();
        return explicitly == kNoArgument ? fNext++ : explicitly;
    }

    Amount amount()
    {
        if (take('*'))
            return { 0, positionOrNext() };
        return { number() };
    }

    bool parse(Conversion& conversion)
    {
        const size_t start = fAt, next = fNext;
        const size_t explicitly = position();
        for (; peek("-+ #0'"); fAt++)
            conversion.flags += static_cast<char>(fFormat[fAt]);
        conversion.width = amount();
        if (take('.'))
            conversion.precision = amount();
        for (; peek("hlqLzjt") && conversion.length.size() < 2; fAt++)
            conversion.length += static_cast<char>(fFormat[fAt]);
        if (!peek("@sSpcCdDiuUoOxXaAeEfFgG%") || fNext > kMaximumArguments - 1) {
            fAt = start;
            fNext = next;
            return false;
        }
        conversion.letter = static_cast<char>(fFormat[fAt++]);
        if (Contains("DUO", static_cast<char16_t>(conversion.letter))) // other spellings of d, u and o
            conversion.letter = static_cast<char>(conversion.letter | 0x20);
        if (conversion.letter != '%')
            conversion.argument = explicitly == kNoArgument ? fNext++ : explicitly;
        return true;
    }

    const cf::Text& fFormat;
    size_t fAt = 0;
    size_t fNext = 0;
};

std::vector<Kind> KindsOfArguments(const std::vector<Piece>& pieces)
{
    std::vector<Kind> kinds;
    const auto use = [&](size_t argument, Kind kind) {
        if (argument == kNoArgument)
            return;
        if (argument >= kinds.size())
            kinds.resize(argument + 1, Kind::Unused);
        kinds[argument] = kind;
    };
    for (const auto& [literal, conversion] : pieces) {
        use(conversion.width.argument, Kind::Int);
        use(conversion.precision.argument, Kind::Int);
        use(conversion.argument, KindOf(conversion));
    }
    return kinds;
}

/// All in one function, since what a callee does to a va_list differs between processors.
std::vector<Argument> Fetch(const std::vector<Kind>& kinds, va_list list)
{
    // NOLINTBEGIN(clang-analyzer-valist.Uninitialized): the analyzer loses a va_list on its way into a
    // function
    std::vector<Argument> arguments;
    for (const Kind kind : kinds) {
        Argument argument {};
        switch (kind) {
        case Kind::Int:
            argument.integer = va_arg(list, int);
            break;
        case Kind::Double:
            argument.real = va_arg(list, double);
            break;
        case Kind::Long:
            argument.integer = va_arg(list, long);
            break;
        case Kind::LongDouble:
            argument.longReal = va_arg(list, long double);
            break;
        case Kind::LongLong:
            argument.integer = va_arg(list, long long);
            break;
        case Kind::Pointer:
        case Kind::Unused: // a number that the format leaves out still takes its place
            argument.pointer = va_arg(list, const void*);
            break;
        }
        arguments.push_back(argument);
    }
    // NOLINTEND(clang-analyzer-valist.Uninitialized)
    return arguments;
}

/// A conversion with its width and precision known.
struct Field {
    const Conversion& conversion;
    int width;
    int precision;
};

cf::Text Padded(cf::Text text, const Field& field)
{
    const bool left = field.width < 0 || field.conversion.flags.find('-') != std::string::npos;
    const auto width = static_cast<size_t>(std::min(std::abs(field.width), kMaximumAmount));
    if (text.length() < width)
        text.replace(left ? text.length() : 0, 0, cf::Text(std::string(width - text.length(), ' ')));
    return text;
}

/// While it lives, this thread's C library writes numbers with a point, whatever the program's locale.
class PlainNumbers {
public:
    PlainNumbers()
        : fBefore(uselocale(plain()))
    {
    }
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;
    ~PlainNumbers() { uselocale(fBefore); }

private:
    static locale_t plain()
    {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }

    locale_t fBefore;
};

template <class Value> cf::Text Printed(const Field& field, const char* length, Value value)
{
    const std::string format = "%" + field.conversion.flags + "*.*" + length + field.conversion.letter;
    const PlainNumbers plainNumbers;
    const int size = std::snprintf(nullptr, 0, format.c_str(), field.width, field.precision, value);
    std::string text(static_cast<size_t>(std::max(size, 0)) + 1, '\0');
    (void)std::snprintf(text.data(), text.size(), format.c_str(), field.width, field.precision, value);
    text.pop_back();
    return cf::Text(std::move(text));
}

/// The argument with the size that the conversion gives it.
long long Narrowed(const Conversion& conversion, long long value)
{
    const bool isSigned = Contains("di", static_cast<char16_t>(conversion.letter));
    if (conversion.length == "hh")
        return isSigned ? static_cast<signed char>(value) : static_cast<unsigned char>(value);
    if (conversion.length == "h")
        return isSigned ? static_cast<short>(value) : static_cast<unsigned short>(value);
    if (KindOf(conversion) == Kind::Int)
        return isSigned ? static_cast<int>(value) : static_cast<long long>(static_cast<unsigned>(value));
    return value;
}

cf::Text FromSystemEncoding(std::string_view chars)
{
    const auto* bytes = reinterpret_cast<const UInt8*>(chars.data());
    // Every byte is a character of Mac OS Roman.
    return cf::Decode(kCFStringEncodingMacRoman, { bytes, chars.size() }, false).value_or(cf::Text());
}

/// The text of a conversion that shows text, before width and precision.
cf::Text TextOf(const Field& field, const Argument& argument)
{
    const char letter = field.conversion.letter;
    if (letter == 'c') {
        const char byte = static_cast<char>(argument.integer);
        return FromSystemEncoding({ &byte, 1 });
    }
    if (letter == 'C')
        return cf::Text(std::u16string(1, static_cast<char16_t>(argument.integer)));
    if (!argument.pointer)
        return cf::Text(std::string("(null)"));
    const size_t most = field.precision < 0 ? SIZE_MAX : static_cast<size_t>(field.precision);
    if (letter == 's') {
        const auto* chars = static_cast<const char*>(argument.pointer);
        // With a precision the bytes need no terminator.
        return FromSystemEncoding({ chars, most == SIZE_MAX ? std::strlen(chars) : strnlen(chars, most) });
    }
    if (letter == 'S') {
        std::u16string units;
        for (const auto* unit = static_cast<const UniChar*>(argument.pointer); units.size() < most && *unit;
             unit++)
            units += static_cast<char16_t>(*unit);
        return cf::Text(std::move(units));
    }
    const cf::Owned<CFStringRef> text(static_cast<const cf::Object*>(argument.pointer)->copyFormattedText());
    return text->text;
}

cf::Text PointerText(const Field& field, const void* pointer)
{
    std::array<char, 2 + 2 * sizeof pointer + 1> text {};
    (void)std::snprintf(text.data(), text.size(), "0x%llx", reinterpret_cast<unsigned long long>(pointer));
    return Padded(cf::Text(std::string(text.data())), field);
}

cf::Text Converted(const Conversion& conversion, const std::vector<Argument>& arguments)
{
    if (conversion.letter == '%')
        return cf::Text(std::string("%"));
    const auto amount = [&](const Amount& given) {
        const int value = given.argument == kNoArgument ? given.value
                                                        : static_cast<int>(arguments[given.argument].integer);
        return std::clamp(value, -kMaximumAmount, kMaximumAmount);
    };
    const Field field { conversion, amount(conversion.width), amount(conversion.precision) };
    const Argument& argument = arguments[conversion.argument];
    if (Contains("@sScC", static_cast<char16_t>(conversion.letter))) {
        cf::Text text = TextOf(field, argument);
        if (field.precision >= 0 && text.length() > static_cast<size_t>(field.precision))
            text = text.substring(0, static_cast<size_t>(field.precision));
        return Padded(std::move(text), field);
    }
    if (conversion.letter == 'p')
        return PointerText(field, argument.pointer);
    if (KindOf(conversion) == Kind::LongDouble)
        return Printed(field, "L", argument.longReal);
    if (KindOf(conversion) == Kind::Double)
        return Printed(field, "", argument.real);
    return Printed(field, "ll", Narrowed(conversion, argument.integer));
}

}

void CFStringAppendFormatAndArguments(
    CFMutableStringRef theString, CFTypeRef, CFStringRef format, va_list arguments)
{
    __CFString& string = cf::CheckMutable(theString, __func__);
    const std::vector<Piece> pieces = Parser(cf::Check(format, __func__).text).pieces();
    const std::vector<Argument> values = Fetch(KindsOfArguments(pieces), arguments);
    cf::Text text;
    for (const auto& [literal, conversion] : pieces) {
        text.append(literal);
        if (conversion.letter != 0)
            text.append(Converted(conversion, values));
    }
    cf::Replace(string, string.text.length(), 0, text, __func__);
}

CFStringRef CFStringCreateWithFormatAndArguments(
    CFAllocatorRef alloc, CFTypeRef formatOptions, CFStringRef format, va_list arguments)
{
    const cf::Owned<CFMutableStringRef> string(CFStringCreateMutable(alloc, 0));
    CFStringAppendFormatAndArguments(string.get(), formatOptions, format, arguments);
    return cf::MakeString(std::move(string->text));
}

// NOLINTNEXTLINE(cert-dcl50-cpp): variadic by its public interface
CFStringRef CFStringCreateWithFormat(CFAllocatorRef alloc, CFTypeRef formatOptions, CFStringRef format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    CFStringRef string = CFStringCreateWithFormatAndArguments(alloc, formatOptions, format, arguments);
    va_end(arguments);
    return string;
}

// NOLINTNEXTLINE(cert-dcl50-cpp): variadic by its public interface
void CFStringAppendFormat(CFMutableStringRef theString, CFTypeRef formatOptions, CFStringRef format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    CFStringAppendFormatAndArguments(theString, formatOptions, format, arguments);
    va_end(arguments);
}
