#include "codesign/SealRules.h"

#include <CoreFoundation/CoreFoundation.h>

#include "CoreFoundation/Runtime.h"

#include <tuple>
#include <unicode/regex.h>

namespace codesign {

struct SealRules::Rule {
    std::unique_ptr<icu::RegexMatcher> matcher;
    double weight = 1;
    bool omit = false;
    bool nested = false;

    /// @param value of a pattern in the seal. @return whether it makes sense.
    bool read(CFTypeRef value);
};

namespace {

constexpr int32_t kPatience = 300; ///< for one match, in units of about a millisecond
constexpr char16_t kReplacement = 0xfffd;

bool IsTrue(CFTypeRef value) { return value == kCFBooleanTrue; }

/// @return whether the value is a number. @param weight stays as it is otherwise.
bool ReadWeight(CFTypeRef value, double& weight)
{
    return value != nullptr && CFGetTypeID(value) == CFNumberGetTypeID()
        && CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberDoubleType, &weight);
}

/// The path for matching. Rules mean by "." any character and by "$" the very end, which with line ends in a name would
/// be otherwise here.
icu::UnicodeString Subject(const std::string& path)
{
    icu::UnicodeString text = icu::UnicodeString::fromUTF8(path);
    return text.findAndReplace(icu::UnicodeString(u'\n'), icu::UnicodeString(kReplacement));
}

}

SealRules::SealRules() = default;
SealRules::SealRules(SealRules&&) noexcept = default;
SealRules& SealRules::operator=(SealRules&&) noexcept = default;
SealRules::~SealRules() = default;

size_t SealRules::count() const { return fRules.size(); }

bool SealRules::Rule::read(CFTypeRef value)
{
    if (CFGetTypeID(value) == CFBooleanGetTypeID())
        omit = !IsTrue(value);
    else if (CFGetTypeID(value) != CFDictionaryGetTypeID())
        return ReadWeight(value, weight);
    else {
        const auto facts = static_cast<CFDictionaryRef>(value);
        ReadWeight(CFDictionaryGetValue(facts, CFSTR("weight")), weight);
        omit = IsTrue(CFDictionaryGetValue(facts, CFSTR("omit")));
        nested = IsTrue(CFDictionaryGetValue(facts, CFSTR("nested")));
    }
    return true;
}

bool SealRules::read(CFDictionaryRef rules)
{
    const auto count = static_cast<size_t>(CFDictionaryGetCount(rules));
    std::vector<const void*> patterns(count);
    std::vector<const void*> values(count);
    CFDictionaryGetKeysAndValues(rules, patterns.data(), values.data());
    for (size_t i = 0; i < count; ++i) {
        UErrorCode status = U_ZERO_ERROR;
        const std::string pattern = cf::Utf8(static_cast<CFStringRef>(patterns[i]));
        Rule rule { std::make_unique<icu::RegexMatcher>(
            icu::UnicodeString::fromUTF8(pattern), UREGEX_UNIX_LINES, status) };
        rule.matcher->setTimeLimit(kPatience, status);
        if (U_FAILURE(status))
            return false;
        if (!rule.read(values[i]))
            return false;
        fRules.push_back(std::move(rule));
    }
    return true;
}

std::optional<SealRules::Answer> SealRules::answer(const std::string& path)
{
    if (fGaveUp)
        return {};
    const icu::UnicodeString subject = Subject(path);
    const Rule* best = nullptr;
    for (const Rule& rule : fRules) {
        UErrorCode status = U_ZERO_ERROR;
        const bool matches = rule.matcher->reset(subject).find(status);
        fGaveUp = U_FAILURE(status);
        if (fGaveUp)
            return {};
        // Of two with the same weight the stricter one: their order in the seal means nothing.
        if (matches
            && (best == nullptr
                || std::tuple(rule.weight, !rule.omit) > std::tuple(best->weight, !best->omit)))
            best = &rule;
    }
    if (best == nullptr || best->omit)
        return Answer::omitted;
    return best->nested ? Answer::nestedCode : Answer::sealed;
}

}
