#pragma once

#include <QString>
#include <cstddef>
#include <string>

/// What the user is asked about. Both texts can be shown as they are, as plain text.
struct Question {
    QString program; ///< who wants to make changes
    QString folder; ///< of the start-up volume
};

/// Text from outside, made fit to be shown to somebody who is to rely on it: nothing in it can work on a terminal, start
/// a new line, turn the direction of the text around or hide. Each such character, and each byte that is no UTF-8,
/// shows as U+FFFD. Markup is left as it is.
/// @param utf8 may be any bytes. @param limit in characters (code points), at least 3; where there are more, those in
/// the middle make room for "…".
QString Showable(const std::string& utf8, size_t limit);
