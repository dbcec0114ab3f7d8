#pragma once

/// The program's own words in one language, UTF-8.
struct AgentWords {
    const char* language; ///< as folders of localizations are named
    const char* title;
    const char* message; ///< %1 is the program that asks
    const char* powers; ///< leads to the volume's folder, which follows on a line of its own
    const char* reason; ///< for there being no password
    const char* allow;
    const char* cancel;
    const char* terminalQuestion; ///< with the first letters of what may be typed
    const char* yes; ///< what may be typed, in lower case, between spaces
    const char* no;
    const char* unclear; ///< after anything else was typed
};

/// The words in the user's language; English where they are not translated into it.
const AgentWords& UsersAgentWords();
