#include "Reading.h"

#include <QFont>

namespace {

QStringList Families(const QTextDocument& document, const char* text)
{
    return FormatAt(document, text).fontFamilies().toStringList();
}

/// The colors as "foreground/background", "-" where there is none.
std::string Colors(const QTextDocument& document, const char* text)
{
    const QTextCharFormat format = FormatAt(document, text);
    const auto name
        = [](bool is, const QBrush& brush) { return is ? brush.color().name().toStdString() : "-"; };
    return name(format.hasProperty(QTextFormat::ForegroundBrush), format.foreground()) + "/"
        + name(format.hasProperty(QTextFormat::BackgroundBrush), format.background());
}

}

TEST(RtfCharacters, ChangeTheirStyleUntilItIsSwitchedOffOrTheGroupEnds)
{
    EXPECT_EQ(RunsOf("a\\b b\\i c\\b0 d\\i0 e"), "[12 a][b12 b][bi12 c][i12 d][12 e]");
    EXPECT_EQ(RunsOf("{\\b\\fs40 a{\\i b}c}d"), "[b20 a][bi20 b][b20 c][12 d]");
    EXPECT_EQ(RunsOf("\\b\\i\\ul\\strike\\super\\fs21 a\\plain b"), "[bisu1^10.5 a][12 b]");
    EXPECT_EQ(RunsOf("\\super a\\nosupersub b\\sub c\\up4 d\\up0 e"), "[^12 a][12 b][_12 c][^12 d][12 e]");
    EXPECT_EQ(RunsOf("\\caps a\\caps0\\scaps b"), "[C12 a][c12 b]");
    EXPECT_EQ(RunsOf("\\b a\\b b"), "[b12 ab]") << "one run of what is alike";
}

TEST(RtfCharacters, HaveColorsOfTheTableButNoneThatCouldVanish)
{
    const auto document
        = Read("{\\colortbl;\\red0\\green0\\blue0;\\red255\\green255\\blue255;\\red200\\green0\\blue999;"
               "\\red255\\green255\\blue0;\\red0\\green0\\blue90;\\red20\\green20\\blue20;}"
               "\\cf0 auto \\cf1 black \\cf6 dark \\cf2 white \\cf3 color \\cf99 unknown \\cf-1 negative "
               "{\\cf3\\cb2 page}{\\highlight4 marked}{\\cb5 night}{\\cf2\\chcbpat5 stars}");
    for (const char* plain : { "auto", "black", "dark", "white", "unknown", "negative" })
        EXPECT_EQ(Colors(*document, plain), "-/-") << plain;
    EXPECT_EQ(Colors(*document, "color"), "#c800ff/-");
    EXPECT_EQ(Colors(*document, "page"), "#c800ff/-");
    EXPECT_EQ(Colors(*document, "marked"), "#000000/#ffff00") << "the view's white would not do on yellow";
    EXPECT_EQ(Colors(*document, "night"), "#ffffff/#00005a");
    EXPECT_EQ(Colors(*document, "stars"), "#ffffff/#00005a");
    EXPECT_EQ(Colors(*Read("{\\colortbl\\red255\\green0\\blue0;}a"), "a"), "-/-") << "0 is nobody's choice";
}

TEST(RtfFonts, AreFoundByNumberWithTheFamilyAsHint)
{
    const auto document
        = Read("\\deff2{\\fonttbl{\\f0\\froman\\fcharset0{\\*\\panose 02}Times New Roman{\\*\\falt A};}"
               "{\\f2\\fmodern Courier New;}\\f3\\fswiss Helvetica-Bold;\\f4\\fnil .SFNS-Regular;}"
               "first \\f0 second \\f3 third \\f4 fourth \\f9 fifth \\plain sixth");
    EXPECT_EQ(Families(*document, "first"), QStringList("Courier New"));
    EXPECT_EQ(FormatAt(*document, "first").fontStyleHint(), QFont::TypeWriter);
    EXPECT_EQ(Families(*document, "second"), QStringList("Times New Roman"));
    EXPECT_EQ(FormatAt(*document, "second").fontStyleHint(), QFont::Serif);
    EXPECT_EQ(Families(*document, "third"), (QStringList { "Helvetica", "Helvetica-Bold" }));
    EXPECT_EQ(FormatAt(*document, "third").fontStyleHint(), QFont::SansSerif);
    EXPECT_EQ(Families(*document, "fourth"), QStringList());
    EXPECT_EQ(Families(*document, "fifth"), QStringList());
    EXPECT_EQ(Families(*document, "sixth"), QStringList("Courier New"));
}

TEST(RtfFonts, HaveNamesInTheirOwnCodePage)
{
    const auto document = Read("{\\fonttbl{\\f1\\fcharset128 \\'82\\'6c\\'82r;}}\\f1 text");
    EXPECT_EQ(Families(*document, "text"), QStringList("ＭＳ"));
}
