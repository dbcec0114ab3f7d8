#pragma once

#include <QFontMetrics>
#include <QPalette>
#include <QString>

// How pages look that bring no style of their own. All sizes, in pixels, grow with the font.

/// The style sheet in the palette's colours, for light ones as for dark. Links keep a contrast of 4.5 to 1.
QString HelpStyleSheet(const QPalette& palette, const QFontMetrics& font);

/// The margin around the page and the indent of lists.
int HelpIndent(const QFontMetrics& font);

/// The greatest width of a line of text.
int HelpColumnWidth(const QFontMetrics& font);
