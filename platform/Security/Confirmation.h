#pragma once

enum class Confirmation {
    given,
    refused,
    impossible ///< there is nobody to ask, or the program that asks could not be run
};

/// Has the user confirm, in a window or on the terminal, that this program may change the start-up volume that
/// is the user's own. A program of its own asks, so that this one needs no windows. Returns when it is answered.
Confirmation AskForConfirmation();
