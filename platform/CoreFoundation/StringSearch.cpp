#include <CoreFoundation/StringObject.h>

#include <algorithm>
#include <climits>
#include <clocale>
#include <cstdlib>
#include <unicode/uchar.h>
#include <vector>

namespace {

/// The unit's text with capitals and small letters made one.
std::u16string Folded(const cf::Text& text)
{
    std::u16string folded;
    folded.reserve(text.length());
    for (size_t i = 0; i < text.length();) {
        const char32_t character = text.characterAt(i);
        i += cf::UnitCount(character);
        const UChar32 other = u_foldCase(static_cast<UChar32>(character), U_FOLD_CASE_DEFAULT);
        cf::AppendCharacter(folded, static_cast<char32_t>(other));
    }
    return folded;
}

template <class Char>
size_t Search(
    std::basic_string_view<Char> text, std::basic_string_view<Char> wanted, CFStringCompareFlags options)
{
    const bool backwards = options & kCFCompareBackwards;
    if (!(options & kCFCompareAnchored))
        return backwards ? text.rfind(wanted) : text.find(wanted);
    if (backwards)
        return text.ends_with(wanted) ? text.size() - wanted.size() : text.npos;
    return text.starts_with(wanted) ? 0 : text.npos;
}

/// Calls `function` with the units of the range and those of `wanted` as views of one kind, folded where
/// asked to.
template <class Function>
auto WithUnits(const cf::Text& text, CFRange range, const cf::Text& wanted, CFStringCompareFlags options,
    Function function)
{
    const auto start = static_cast<size_t>(range.location), count = static_cast<size_t>(range.length);
    if (options & kCFCompareCaseInsensitive) {
        const std::u16string foldedText = Folded(text.substring(start, count)), foldedWanted = Folded(wanted);
        return function(std::u16string_view(foldedText), std::u16string_view(foldedWanted));
    }
    if (text.isAscii() && wanted.isAscii())
        return function(
            std::string_view(text.ascii()).substr(start, count), std::string_view(wanted.ascii()));
    const std::u16string wantedUnits = wanted.units();
    // Text that is not ASCII is nowhere in text that is.
    const std::u16string_view units
        = text.isAscii() ? std::u16string_view() : std::u16string_view(text.wide());
    return function(text.isAscii() ? units : units.substr(start, count), std::u16string_view(wantedUnits));
}

template <class Char>
std::vector<size_t> SearchAll(
    std::basic_string_view<Char> text, std::basic_string_view<Char> wanted, CFStringCompareFlags options)
{
    std::vector<size_t> found;
    size_t start = 0, end = text.size();
    while (true) {
        const size_t at = Search(text.substr(start, end - start), wanted, options);
        if (at == std::string_view::npos)
            return found;
        found.push_back(start + at);
        if (options & kCFCompareAnchored)
            return found;
        if (options & kCFCompareBackwards)
            end = start + at;
        else
            start += at + wanted.size();
    }
}

bool IsDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

/// The run of digits at the front, without leading zeros; taken off `text`.
std::u16string_view TakeNumber(std::u16string_view& text)
{
    const auto* const end = std::ranges::find_if_not(text, IsDigit);
    std::u16string_view digits = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    digits.remove_prefix(std::min(digits.find_first_not_of(u'0'), digits.size()));
    return digits;
}

int CompareNumbers(std::u16string_view first, std::u16string_view second)
{
    if (first.size() != second.size())
        return first.size() < second.size() ? -1 : 1;
    return first.compare(second);
}

int CompareWithNumbers(std::u16string_view first, std::u16string_view second)
{
    while (!first.empty() && !second.empty()) {
        if (IsDigit(first.front()) && IsDigit(second.front())) {
            const std::u16string_view firstNumber = TakeNumber(first);
            if (const int order = CompareNumbers(firstNumber, TakeNumber(second)))
                return order;
            continue;
        }
        if (first.front() != second.front())
            return first.front() < second.front() ? -1 : 1;
        first.remove_prefix(1);
        second.remove_prefix(1);
    }
    return first.compare(second);
}

int Compare(const cf::Text& first, const cf::Text& second, CFStringCompareFlags options)
{
    if (options == 0 && first.isAscii() && second.isAscii())
        return first.ascii().compare(second.ascii());
    const bool fold = options & kCFCompareCaseInsensitive;
    const std::u16string firstUnits = fold ? Folded(first) : first.units();
    const std::u16string secondUnits = fold ? Folded(second) : second.units();
    return options & kCFCompareNumerically ? CompareWithNumbers(firstUnits, secondUnits)
                                           : firstUnits.compare(secondUnits);
}

/// What of the text may be part of a decimal number, from the first character that is no white space on.
std::string NumberText(const cf::Text& text)
{
    size_t at = 0;
    while (at < text.length() && u_isUWhiteSpace(text[at]))
        at++;
    std::string number;
    constexpr std::u16string_view allowed = u"0123456789+-.eE";
    for (; at < text.length() && allowed.find(text[at]) != std::u16string_view::npos; at++)
        number += static_cast<char>(text[at]);
    return number;
}

}

namespace cf {

std::vector<size_t> FindAll(const Text& text, CFRange range, const Text& wanted, CFStringCompareFlags options)
{
    if (wanted.length() == 0)
        return {};
    std::vector<size_t> found = WithUnits(text, range, wanted, options,
        [&](auto units, auto wantedUnits) { return SearchAll(units, wantedUnits, options); });
    std::ranges::sort(found); // backwards they come from the end
    for (size_t& place : found)
        place += static_cast<size_t>(range.location);
    return found;
}

}

CFComparisonResult CFStringCompare(
    CFStringRef theString1, CFStringRef theString2, CFStringCompareFlags compareOptions)
{
    const int order
        = Compare(cf::Check(theString1, __func__).text, cf::Check(theString2, __func__).text, compareOptions);
    if (order == 0)
        return kCFCompareEqualTo;
    return order < 0 ? kCFCompareLessThan : kCFCompareGreaterThan;
}

Boolean CFStringFindWithOptions(CFStringRef theString, CFStringRef stringToFind, CFRange rangeToSearch,
    CFStringCompareFlags searchOptions, CFRange* result)
{
    const __CFString& string = cf::Check(theString, __func__);
    const __CFString& wanted = cf::Check(stringToFind, __func__);
    cf::CheckRange(rangeToSearch, string.length(), __func__);
    if (wanted.length() == 0)
        return false;
    const size_t found = WithUnits(string.text, rangeToSearch, wanted.text, searchOptions,
        [&](auto units, auto wantedUnits) { return Search(units, wantedUnits, searchOptions); });
    if (found == std::string::npos)
        return false;
    if (result)
        *result = { rangeToSearch.location + static_cast<CFIndex>(found), wanted.length() };
    return true;
}

CFRange CFStringFind(CFStringRef theString, CFStringRef stringToFind, CFStringCompareFlags compareOptions)
{
    CFRange found { kCFNotFound, 0 };
    CFStringFindWithOptions(
        theString, stringToFind, CFRangeMake(0, CFStringGetLength(theString)), compareOptions, &found);
    return found;
}

Boolean CFStringHasPrefix(CFStringRef theString, CFStringRef prefix)
{
    return CFStringFind(theString, prefix, kCFCompareAnchored).location != kCFNotFound;
}

Boolean CFStringHasSuffix(CFStringRef theString, CFStringRef suffix)
{
    return CFStringFind(theString, suffix, kCFCompareAnchored | kCFCompareBackwards).location != kCFNotFound;
}

CFArrayRef CFStringCreateArrayBySeparatingStrings(
    CFAllocatorRef alloc, CFStringRef theString, CFStringRef separatorString)
{
    const __CFString& string = cf::Check(theString, __func__);
    const cf::Text& separator = cf::Check(separatorString, __func__).text;
    std::vector<size_t> ends = cf::FindAll(string.text, { 0, string.length() }, separator, 0);
    ends.push_back(string.text.length());
    CFMutableArrayRef parts = CFArrayCreateMutable(alloc, 0, &kCFTypeArrayCallBacks);
    size_t start = 0;
    for (const size_t end : ends) {
        const cf::Owned<CFStringRef> part(cf::MakeString(string.text.substring(start, end - start)));
        CFArrayAppendValue(parts, part.get());
        start = end + separator.length();
    }
    return parts;
}

CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef, CFArrayRef theArray, CFStringRef separatorString)
{
    const cf::Text& separator = cf::Check(separatorString, __func__).text;
    cf::Text combined;
    for (CFIndex i = 0; i < CFArrayGetCount(theArray); i++) {
        if (i > 0)
            combined.append(separator);
        const auto* part = static_cast<CFStringRef>(CFArrayGetValueAtIndex(theArray, i));
        combined.append(cf::Check(part, __func__).text);
    }
    return cf::MakeString(std::move(combined));
}

SInt32 CFStringGetIntValue(CFStringRef str)
{
    const std::string number = NumberText(cf::Check(str, __func__).text);
    const long long value = std::strtoll(number.c_str(), nullptr, 10);
    return static_cast<SInt32>(std::clamp<long long>(value, INT32_MIN, INT32_MAX));
}

double CFStringGetDoubleValue(CFStringRef str)
{
    // The program's own locale may want a comma.
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(NumberText(cf::Check(str, __func__).text).c_str(), nullptr, plain);
}
