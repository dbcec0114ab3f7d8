#pragma once

#include "ui/framework/rtf/Rtf.h"

#include <QColor>
#include <QTextBlock>
#include <QTextDocument>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>

inline const QColor kLinkColor(1, 2, 3);

/// What "{\rtf1\ansi BODY}" gives.
std::unique_ptr<QTextDocument> Read(std::string_view body);

/// Its text in UTF-8: "¶" between paragraphs, "↵" for a line end within one, "→" for a tab.
std::string TextOf(std::string_view body);
std::string TextOf(const QTextDocument& document);

/// The format of the first character of `text`, which has to occur; in documents whose text is ASCII.
QTextCharFormat FormatAt(const QTextDocument& document, const char* text);

/// The runs as "[what text]", such as "[b12 word]": b bold, i italic, s struck out, u and the number of its style
/// underlined, ^ raised, _ lowered, C all capitals, c small ones, and the size.
std::string RunsOf(std::string_view body);

/// All bytes of a file.
std::string Sample(const std::string& name);
