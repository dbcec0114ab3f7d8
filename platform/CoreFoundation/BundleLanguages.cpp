#include "CoreFoundation/BundleLanguages.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CFString.h>

#include "CoreFoundation/Runtime.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

namespace {

using Renaming = std::pair<std::string_view, std::string_view>;

/// Names that bundles had before the standard codes, and Chinese, whose regions stand for a script.
constexpr std::array<Renaming, 14> kRenamings = { {
    { "english", "en" },
    { "german", "de" },
    { "french", "fr" },
    { "spanish", "es" },
    { "italian", "it" },
    { "dutch", "nl" },
    { "japanese", "ja" },
    { "zh", "zh-hans" },
    { "zh-cn", "zh-hans-cn" },
    { "zh-sg", "zh-hans-sg" },
    { "zh-tw", "zh-hant-tw" },
    { "zh-hk", "zh-hant-hk" },
    { "zh-mo", "zh-hant-mo" },
    { "no", "nb" },
} };

/// One form for all the ways to write a language.
std::string Canonical(std::string_view name)
{
    std::string result(name.substr(0, name.find_first_of(".@")));
    for (char& c : result) {
        if (c == '_')
            c = '-';
        else if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    const auto* const renaming = std::find_if(
        kRenamings.begin(), kRenamings.end(), [&](const Renaming& entry) { return entry.first == result; });
    return renaming == kRenamings.end() ? result : std::string(renaming->second);
}

/// A language with ever less said about it: zh-hans-cn, zh-hans. Chinese without a script is no reading
/// matter.
std::vector<std::string> Generalizations(std::string_view language)
{
    std::vector<std::string> result;
    std::string tag = Canonical(language);
    while (!tag.empty() && tag != "zh") {
        result.push_back(tag);
        const size_t dash = tag.rfind('-');
        tag.resize(dash == std::string::npos ? 0 : dash);
    }
    return result;
}

void AddMatches(
    const std::vector<std::string>& available, std::string_view language, std::vector<std::string>& matches)
{
    const std::vector<std::string> tags = Generalizations(language);
    const size_t before = matches.size();
    for (const std::string& tag : tags) {
        for (const std::string& name : available) {
            if (Canonical(name) == tag && std::find(matches.begin(), matches.end(), name) == matches.end())
                matches.push_back(name);
        }
    }
    if (matches.size() != before || tags.empty())
        return;
    const auto relative = std::find_if(available.begin(), available.end(),
        [&](const std::string& name) { return Canonical(name).starts_with(tags.back() + '-'); });
    if (relative != available.end())
        matches.push_back(*relative);
}

std::vector<std::string> LanguagesFromPreferences()
{
    std::vector<std::string> languages;
    const cf::Owned<CFPropertyListRef> value(
        CFPreferencesCopyAppValue(CFSTR("AppleLanguages"), kCFPreferencesCurrentApplication));
    if (!value || CFGetTypeID(value.get()) != CFArrayGetTypeID())
        return languages;
    const auto* array = static_cast<CFArrayRef>(value.get());
    for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
        const CFTypeRef entry = CFArrayGetValueAtIndex(array, i);
        if (CFGetTypeID(entry) == CFStringGetTypeID())
            languages.push_back(cf::Utf8(static_cast<CFStringRef>(entry)));
    }
    return languages;
}

std::vector<std::string> LanguagesFromHost()
{
    for (const char* variable : { "LC_ALL", "LC_MESSAGES", "LANG" }) {
        const char* value = std::getenv(variable);
        if (!value || !*value)
            continue;
        const std::string_view name = std::string_view(value).substr(0, std::string_view(value).find('.'));
        if (name == "C" || name == "POSIX")
            return {};
        return { value };
    }
    return {};
}

} // namespace

std::vector<std::string> PreferredLanguages()
{
    std::vector<std::string> languages = LanguagesFromPreferences();
    return languages.empty() ? LanguagesFromHost() : languages;
}

std::vector<std::string> MatchingLocalizations(const std::vector<std::string>& available,
    const std::vector<std::string>& languages, std::string_view lastResort)
{
    std::vector<std::string> matches;
    for (const std::string& language : languages) {
        AddMatches(available, language, matches);
        if (!matches.empty())
            break;
    }
    AddMatches(available, lastResort, matches);
    if (matches.empty() && !available.empty())
        matches.push_back(available.front());
    return matches;
}
