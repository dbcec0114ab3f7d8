#pragma once

#include <string_view>

class QColor;
class QTextDocument;

/// Reads rich text (RTF 1.x) into a document, replacing its content and its undo history. Takes time and memory in
/// proportion to the bytes, whatever they are; damaged RTF gives what could be read.
///
/// Shown: text in its font, size, style and color, paragraphs with their indents, tab stops and spacing, links, lists
/// as the numbers and bullets that the word processor wrote, tables as one paragraph a row with the cells at tab
/// stops. Left out: pictures, headers, footers, footnotes, hidden text. Black text, and white text without a
/// background, has no color of its own, and white backgrounds are dropped, so that all of it can be read on whatever
/// palette the view has. A view that already shows the document has its cursor behind the text afterwards.
///
/// Lengths are set for the resolution of the main screen. Call on the main thread, with a QGuiApplication.
/// @param bytes the file's content; not kept.
/// @param document gets its default tab distance from the text as well.
/// @param linkColor for links, which are underlined anchors with the address as written in the file, whatever its
/// scheme; "#name" for a place in the same text.
/// @return false when the bytes do not begin as RTF does; the document is then empty.
bool ReadRTF(std::string_view bytes, QTextDocument& document, const QColor& linkColor);
