#pragma once

#include "CoreFoundation/Runtime.h"

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBundle.h>

#include <algorithm>
#include <array>
#include <string>

/// The words of a program in the user's language, else the first ones.
/// @param all one for each language, whose `language` names it as folders of localizations do.
template <class Words, size_t Count> const Words& UsersWords(const std::array<Words, Count>& all)
{
    const cf::Owned<CFMutableArrayRef> languages(
        CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (const Words& words : all)
        CFArrayAppendValue(languages.get(), cf::Owned<CFStringRef>(cf::MakeString(words.language)).get());
    const cf::Owned<CFArrayRef> preferred(CFBundleCopyPreferredLocalizationsFromArray(languages.get()));
    const std::string best = cf::Utf8(static_cast<CFStringRef>(CFArrayGetValueAtIndex(preferred.get(), 0)));
    return *std::find_if(
        all.begin(), all.end(), [&best](const Words& words) { return words.language == best; });
}
