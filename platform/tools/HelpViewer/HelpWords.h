#pragma once

/// The viewer's own words in one language, UTF-8.
struct HelpWords {
    const char* language; ///< as folders of localizations are named
    const char* back;
    const char* forward;
    const char* contents;
    const char* search;
    const char* notFound;
};

/// The words in the user's language; English where they are not translated into it.
const HelpWords& UsersHelpWords();
