#pragma once

/// What came of asking, as the program's exit status tells it.
enum class Answer {
    allowed = 0,
    refused = 1, ///< also by closing the window, at the end of input, and when the question was broken off
    nobodyAsked = 2 ///< there was nobody to ask in this way
};
