#include <CoreFoundation/Encodings.h>
#include <CoreFoundation/StringObject.h>

#include <algorithm>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace cf {

__CFString& CheckMutable(CFMutableStringRef string, const char* function)
{
    if (!Check(string, function).isMutable())
        Fail(function, "cannot change an immutable string");
    return *string;
}

void Replace(__CFString& string, size_t start, size_t count, const Text& replacement, const char* function)
{
    const size_t length = string.text.length() - count + replacement.length();
    if (string.limit > 0 && length > static_cast<size_t>(string.limit))
        Fail(function, "grows past the length it was made with");
    string.text.replace(start, count, replacement);
}

namespace {

CFMutableStringRef CreateMutable(CFIndex limit, const Text& text, const char* function)
{
    if (limit < 0 || (limit > 0 && text.length() > static_cast<size_t>(limit)))
        Fail(function, "the maximum length is below the length");
    return new __CFString(text, limit);
}

void ReplaceRange(CFMutableStringRef string, CFRange range, const Text& replacement, const char* function)
{
    __CFString& changed = CheckMutable(string, function);
    CheckRange(range, changed.length(), function);
    Replace(changed, static_cast<size_t>(range.location), static_cast<size_t>(range.length), replacement,
        function);
}

/// Leaves units start … end of the string.
void KeepOnly(__CFString& string, size_t start, size_t end)
{
    string.text = string.text.substring(start, end - start);
}

using CaseMapping = int32_t (*)(
    char16_t* to, int32_t room, const char16_t* from, int32_t length, const char* locale, UErrorCode* status);

void MapCase(CFMutableStringRef string, CaseMapping mapping, const char* function)
{
    __CFString& changed = CheckMutable(string, function);
    const std::u16string from = changed.text.units();
    // ICU counts in 32 bits, and one letter becomes three at most.
    if (from.size() > INT32_MAX / 3)
        Fail(function, "the string is too long");
    std::u16string to(from.size() * 3, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = mapping(to.data(), static_cast<int32_t>(to.size()), from.data(),
        static_cast<int32_t>(from.size()), "", &status);
    if (U_FAILURE(status))
        Fail(function, u_errorName(status));
    to.resize(static_cast<size_t>(length));
    Replace(changed, 0, from.size(), Text(std::move(to)), function);
}

}

}

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef, CFIndex maxLength)
{
    return cf::CreateMutable(maxLength, {}, __func__);
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex maxLength, CFStringRef theString)
{
    return cf::CreateMutable(maxLength, cf::Check(theString, __func__).text, __func__);
}

void CFStringAppend(CFMutableStringRef theString, CFStringRef appendedString)
{
    CFStringInsert(theString, CFStringGetLength(theString), appendedString);
}

void CFStringAppendCharacters(CFMutableStringRef theString, const UniChar* chars, CFIndex numChars)
{
    const cf::Owned<CFStringRef> appended(CFStringCreateWithCharacters(nullptr, chars, numChars));
    CFStringAppend(theString, appended.get());
}

void CFStringAppendCString(CFMutableStringRef theString, const char* cStr, CFStringEncoding encoding)
{
    const cf::Owned<CFStringRef> appended(CFStringCreateWithCString(nullptr, cStr, encoding));
    if (appended)
        CFStringAppend(theString, appended.get());
}

void CFStringInsert(CFMutableStringRef str, CFIndex idx, CFStringRef insertedStr)
{
    cf::ReplaceRange(str, CFRangeMake(idx, 0), cf::Check(insertedStr, __func__).text, __func__);
}

void CFStringDelete(CFMutableStringRef theString, CFRange range)
{
    cf::ReplaceRange(theString, range, {}, __func__);
}

void CFStringReplace(CFMutableStringRef theString, CFRange range, CFStringRef replacement)
{
    cf::ReplaceRange(theString, range, cf::Check(replacement, __func__).text, __func__);
}

void CFStringReplaceAll(CFMutableStringRef theString, CFStringRef replacement)
{
    CFStringReplace(theString, CFRangeMake(0, CFStringGetLength(theString)), replacement);
}

CFIndex CFStringFindAndReplace(CFMutableStringRef theString, CFStringRef stringToFind,
    CFStringRef replacementString, CFRange rangeToSearch, CFStringCompareFlags compareOptions)
{
    __CFString& string = cf::CheckMutable(theString, __func__);
    const cf::Text& wanted = cf::Check(stringToFind, __func__).text;
    const cf::Text& replacement = cf::Check(replacementString, __func__).text;
    cf::CheckRange(rangeToSearch, string.length(), __func__);
    const std::vector<size_t> places = cf::FindAll(string.text, rangeToSearch, wanted, compareOptions);
    // Built anew: replacing in place would move the rest of the text once for every place.
    cf::Text result;
    size_t copied = 0;
    for (const size_t place : places) {
        result.append(string.text.substring(copied, place - copied));
        result.append(replacement);
        copied = place + wanted.length();
    }
    result.append(string.text.substring(copied, string.text.length() - copied));
    cf::Replace(string, 0, string.text.length(), result, __func__);
    return static_cast<CFIndex>(places.size());
}

void CFStringTrim(CFMutableStringRef theString, CFStringRef trimString)
{
    __CFString& string = cf::CheckMutable(theString, __func__);
    const CFIndex step = CFStringGetLength(trimString);
    const cf::Owned<CFStringRef> trimmed(CFStringCreateCopy(nullptr, trimString));
    CFRange left { 0, string.length() };
    while (CFStringFindWithOptions(theString, trimmed.get(), left, kCFCompareAnchored, nullptr))
        left = { left.location + step, left.length - step };
    while (CFStringFindWithOptions(
        theString, trimmed.get(), left, kCFCompareAnchored | kCFCompareBackwards, nullptr))
        left.length -= step;
    cf::KeepOnly(
        string, static_cast<size_t>(left.location), static_cast<size_t>(left.location + left.length));
}

void CFStringTrimWhitespace(CFMutableStringRef theString)
{
    __CFString& string = cf::CheckMutable(theString, __func__);
    // No white space lies outside the characters of a single unit.
    const auto isSpace = [&](size_t index) { return u_isUWhiteSpace(string.text[index]); };
    size_t start = 0, end = string.text.length();
    while (start < end && isSpace(start))
        start++;
    while (end > start && isSpace(end - 1))
        end--;
    cf::KeepOnly(string, start, end);
}

void CFStringLowercase(CFMutableStringRef theString, CFLocaleRef)
{
    cf::MapCase(theString, u_strToLower, __func__);
}

void CFStringUppercase(CFMutableStringRef theString, CFLocaleRef)
{
    cf::MapCase(theString, u_strToUpper, __func__);
}
