#pragma once

#include <string>

/// What polkit says to a question, in the detail that it tells.
enum class PolkitAnswer {
    granted,
    dismissed, ///< the user closed the dialog
    denied, ///< by the rules, or because nobody could prove to be an administrator
    noAgent, ///< somebody would have to be asked, and may not be or cannot be
    unavailable ///< there is no polkit that answers
};

/// The action that stands for a right: "<bundle identifier>.<right>" where the program that runs has its own
/// policy file "<bundle identifier>.policy" installed, so that administrators can treat it apart; else the one
/// for running any program as another user.
std::string PolkitAction(const std::string& right);

/// Asks whether this process may do what the action stands for. Nothing is remembered here.
/// @param mayInteract the user may be asked, which takes as long as the user does.
PolkitAnswer AskPolkit(const std::string& action, bool mayInteract);
