#include "Reading.h"

#include <fstream>
#include <iterator>

namespace {

std::string Traits(const QTextCharFormat& format)
{
    std::string traits;
    traits += format.fontWeight() == QFont::Bold ? "b" : "";
    traits += format.fontItalic() ? "i" : "";
    traits += format.fontStrikeOut() ? "s" : "";
    if (format.underlineStyle() != QTextCharFormat::NoUnderline)
        traits += "u" + std::to_string(format.underlineStyle());
    traits += format.verticalAlignment() == QTextCharFormat::AlignSuperScript ? "^" : "";
    traits += format.verticalAlignment() == QTextCharFormat::AlignSubScript ? "_" : "";
    traits += format.fontCapitalization() == QFont::AllUppercase ? "C" : "";
    traits += format.fontCapitalization() == QFont::SmallCaps ? "c" : "";
    return traits + QString::number(format.fontPointSize()).toStdString();
}

}

std::unique_ptr<QTextDocument> Read(std::string_view body)
{
    auto document = std::make_unique<QTextDocument>();
    // In a buffer of the exact size, for the address sanitizer to see.
    const std::string whole = "{\\rtf1\\ansi " + std::string(body) + "}";
    const std::vector<char> exact(whole.begin(), whole.end());
    EXPECT_TRUE(ReadRTF({ exact.data(), exact.size() }, *document, kLinkColor));
    return document;
}

std::string TextOf(const QTextDocument& document)
{
    QString text;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        text += (block == document.begin() ? "" : "¶") + block.text();
    return text.replace(QChar::LineSeparator, "↵").replace('\t', "→").toStdString();
}

std::string TextOf(std::string_view body) { return TextOf(*Read(body)); }

QTextCharFormat FormatAt(const QTextDocument& document, const char* text)
{
    const QTextCursor found = document.find(text, 0, QTextDocument::FindCaseSensitively);
    EXPECT_FALSE(found.isNull()) << text;
    QTextCursor cursor(const_cast<QTextDocument*>(&document));
    cursor.setPosition(found.selectionStart() + 1);
    return cursor.charFormat();
}

std::string RunsOf(std::string_view body)
{
    const auto document = Read(body);
    std::string runs;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        for (auto run = block.begin(); !run.atEnd(); ++run)
            runs += "[" + Traits(run.fragment().charFormat()) + " " + run.fragment().text().toStdString()
                + "]";
    return runs;
}

std::string Sample(const std::string& name)
{
    std::ifstream file(std::string(RTF_SAMPLES "/") + name, std::ios::binary);
    EXPECT_TRUE(file) << name;
    return { std::istreambuf_iterator<char>(file), {} };
}
