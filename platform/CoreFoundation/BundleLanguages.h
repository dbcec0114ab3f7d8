#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The user's languages, the most wanted first: the preference "AppleLanguages" of the current application,
/// else the host's LC_ALL, LC_MESSAGES or LANG, the first that is not empty. Empty for the locales "C" and
/// "POSIX".
std::vector<std::string> PreferredLanguages();

/// The localizations to look through, the best first. For the first language that has any: the same language
/// and region, then without region ("de-AT", "de"), else another region's ("pt" takes "pt-BR"); after those
/// the one for `lastResort`. When the languages have none, that one alone, or where it is missing, too, the
/// first that is available. Names count as equal in any of the forms "zh-Hans", "zh_CN", "zh_CN.UTF-8",
/// "English" and "en".
/// @param available names as the bundle has them; the answer is some of these.
std::vector<std::string> MatchingLocalizations(const std::vector<std::string>& available,
    const std::vector<std::string>& languages, std::string_view lastResort);
