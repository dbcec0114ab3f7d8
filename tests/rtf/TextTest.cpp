#include "Reading.h"

TEST(RtfText, LeavesOutLineEndsButNotEscapedOnes)
{
    EXPECT_EQ(TextOf("a\nb\r\nc \x01"
                     "d"),
        "abc d");
    EXPECT_EQ(TextOf("a\\\nb\\\r\nc\\\rd\\par e"), "a¶b¶c¶d¶e");
    EXPECT_EQ(TextOf("\\{a\\}\\\\ \\tab b\tc\\line d\\page e\\sect\\sect f"), "{a}\\ →b→c↵d¶e¶f");
    EXPECT_EQ(TextOf("a\\par\\par b\\par"), "a¶¶b") << "the last one ends a paragraph, it does not begin one";
    EXPECT_EQ(TextOf("a\\b  b\\unknown-12c\\'zz\\'4 \\|\\:"), "a bczz4 ") << "one space belongs to a word";
}

TEST(RtfText, ShowsSpecialCharacters)
{
    EXPECT_EQ(TextOf("\\lquote\\rquote\\ldblquote\\rdblquote\\bullet\\endash\\emdash"), "‘’“”•–—");
    EXPECT_EQ(TextOf("a\\~b\\_c\\-d\\emspace\\zwnj e"), "a\u00a0b\u2011c\u00add\u2003\u200ce");
}

TEST(RtfText, IsInTheCodePageOfTheDocumentOrTheFont)
{
    const std::pair<const char*, const char*> cases[] = { { "\\'e9\\'80", "é€" }, { "\\mac\\'8e", "é" },
        { "\\pc\\'82", "é" }, { "\\pca\\'82", "é" }, { "\\ansicpg1251 \\'cf\xf0\\'e8", "При" },
        { "{\\fonttbl{\\f1\\fcharset204 A;}{\\f2\\fcharset238 B;}{\\f3\\cpg1253 C;}{\\f4\\fcharset77 D;}}"
          "\\f1\\'cf\\f2\\'e8\\f3\\'e1\\f4\\'8e\\f5\\'e9\\plain\\'e9",
            "Пčαééé" },
        { "\\ansicpg1251{\\fonttbl{\\f1\\fcharset0 A;}{\\f2\\fcharset1 B;}}\\f1\\'e9\\f2\\'e9", "éй" },
        { "\\f1\\'e9{\\fonttbl{\\f1\\fcharset204 A;}}\\'e9", "éй" },
        { "\\ansicpg65001 \xc3\xa9\\'e6\\'97\\'a5\xf0\x9f\x8d\x8f", "é日🍏" },
        { "\\ansicpg77777 \\'e9\\ansicpg1251\\'e9", "éй" } };
    for (const auto& [body, text] : cases)
        EXPECT_EQ(TextOf(body), text) << body;
}

TEST(RtfText, PutsTheBytesOfACharacterTogether)
{
    EXPECT_EQ(TextOf("\\ansicpg932 \\'93\\'fa\\'96{x}\\'96\\b y"), "日xy") << "a half character is dropped";
    EXPECT_EQ(TextOf("\\ansicpg932 \\'83e\\'83\\'58\\'83\ng \x93\xfa"), "テスト 日");
    EXPECT_EQ(TextOf("\\ansicpg932 \\'83\\\\\\'83\\}a"), "ソマa")
        << "also where the second has to be escaped";
    EXPECT_EQ(TextOf("\\ansicpg936 \\'d6\\'d0\\'ce\\'c4\\'80"), "中文€");
    EXPECT_EQ(TextOf("\\ansicpg932 \\'93 a\\'ffb"), "\ufffd a\ufffdb");
    EXPECT_EQ(TextOf("\\ansicpg1253 \\'d2x"), "\ufffdx");
}

TEST(RtfText, TakesUnicodeInsteadOfWhatStandsInForIt)
{
    EXPECT_EQ(TextOf("\\u8226?a\\u8226\\'95b\\u8226 \\bullet c\\u8226\\~d"), "•a•b•c•d");
    EXPECT_EQ(TextOf("\\uc0\\u8226 a\\uc2\\u8226 ??b{\\uc3\\u8226 \\'95??c}\\u8226 ??d"), "•a•b•c•d");
    EXPECT_EQ(TextOf("\\u8226{}a\\u8226{?}\\u8226\\par b"), "•a•?•¶b") << "never beyond a group or a word";
    EXPECT_EQ(TextOf("\\u1055\\u1088\\u1080"), "При");
    EXPECT_EQ(TextOf("\\u-10180 ?\\u-8369 ?\\u55356?{\\b\\u57167?}\\u127823?"), "🍏🍏🍏");
    EXPECT_EQ(TextOf("\\u55356?a\\u57167?\\u64976?\\u8233?\\u65532?\\u65535?\\u7?\\u99999999?"),
        "\ufffda\ufffd\ufffd\ufffd\ufffd\ufffd");
    EXPECT_EQ(TextOf("\\uc999999\\u8226 0123456789012345678901234567890123"), "•23");
    EXPECT_EQ(TextOf("{\\upr{ansi \\'e9{x}}{\\*\\ud{\\u233?t\\'e9}}}e"), "étée");
}

TEST(RtfText, ShowsTheSignsOfSymbolFontsInOthers)
{
    const char* const fonts
        = "{\\fonttbl{\\f1\\fcharset2 Symbol;}{\\f2\\fcharset2 Wingdings;}{\\f3\\fcharset2 Else;}}";
    const auto text = [&](const char* body) { return TextOf(std::string(fonts) + body); };
    EXPECT_EQ(text("\\f1\\'b7\\'d2 ab\\'ff\\f2\\'a7\\'fcz\\f3 ab"), "•® αβ•▪✓•ab");
    EXPECT_EQ(text("\\f1\\u-3913 ?\\f2\\u61607?\\f0\\u61623?"), "•▪•") << "their bytes in the private area";
    const auto document = Read(std::string(fonts) + "\\f1 - \\f3 x");
    EXPECT_FALSE(FormatAt(*document, " ").hasProperty(QTextFormat::FontFamilies));
    EXPECT_TRUE(FormatAt(*document, "x").hasProperty(QTextFormat::FontFamilies));
}

TEST(RtfText, LeavesOutWhatIsNotForShow)
{
    const char* const bodies[] = { "a{\\info{\\title T}}b", "a{\\stylesheet{\\s1 Normal;}}b",
        "a{\\header H\\par}b", "a{\\footerf F}b", "a{\\footnote N}b", "a{\\pict\\wmetafile8 0102}b",
        "a{\\object{\\result R}}b", "a{\\*\\unknown U{\\b V}}b", "a{\\*\\b V}b", "a{\\v hidden}b",
        "a\\v hidden\\v0 b", "a{\\deleted gone}b", "a{\\listoverridetable{x}}b", "a{\\pict\\bin4 }}{{}b",
        "a\\bin2 {{b", "a{\\*\\shppict{\\pict\\bin1 }}}b", "a{\\nonesttables\\par}b", "a{\\colortbl;x}b",
        "a{\\fonttbl{\\f0 Name;}}b", "{\\*}\\unknown a{\\*{\\unknown b}}" };
    for (const char* body : bodies)
        EXPECT_EQ(TextOf(body), "ab") << body;
}
