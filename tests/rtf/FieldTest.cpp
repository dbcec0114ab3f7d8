#include "Reading.h"

namespace {

/// The address of a field with this instruction, as it is written in the file.
std::string Address(const std::string& instruction)
{
    const auto document = Read("{\\field{\\*\\fldinst{" + instruction + "}}{\\fldrslt text}}");
    EXPECT_EQ(TextOf(*document), "text");
    return FormatAt(*document, "text").anchorHref().toStdString();
}

}

TEST(RtfLinks, HaveTheirAddressHoweverItIsWritten)
{
    EXPECT_EQ(Address("HYPERLINK \"https://example.com/a?b=1&c\""), "https://example.com/a?b=1&c");
    EXPECT_EQ(Address(" hyperlink https://example.com/ "), "https://example.com/");
    EXPECT_EQ(
        Address("HYPERLINK \"https://example.com/\" \\\\l \"part\" \\\\o \"a tip\" \\\\t \"_top\" \\\\n"),
        "https://example.com/#part");
    EXPECT_EQ(Address("HYPERLINK \\\\l \"part\""), "#part");
    EXPECT_EQ(Address("HYPERLINK \\\\o tip \"mailto:a@example.com\""), "mailto:a@example.com");
    EXPECT_EQ(Address("HYPERLINK \"C:\\\\\\\\a \\\\\"b\""), "C:\\a \"b");
    EXPECT_EQ(Address("{\\b HYPER}{LINK \"\\u233?\\'e9\"}{\\*\\datafield 00}"), "éé");
    EXPECT_EQ(Address("HYPERLINK \"open"), "open");
    EXPECT_EQ(Address("HYPERLINK"), "");
    EXPECT_EQ(Address("PAGEREF \"x\""), "");
    EXPECT_LE(Address("HYPERLINK " + std::string(100000, 'a')).size(), 4096U);
}

TEST(RtfLinks, AreUnderlinedInTheirColorUpToTheirEnd)
{
    const auto document
        = Read("{\\colortbl;\\red255\\green0\\blue0;}one {\\field{\\fldinst HYPERLINK a}{\\fldrslt"
               "{\\plain\\cf1 two {\\b three}}}}{\\field{\\fldinst PAGE}{\\fldrslt four}}");
    for (const char* text : { "two", "three" }) {
        const QTextCharFormat format = FormatAt(*document, text);
        EXPECT_TRUE(format.isAnchor());
        EXPECT_EQ(format.anchorHref(), "a");
        EXPECT_EQ(format.foreground().color(), kLinkColor);
        EXPECT_TRUE(format.fontUnderline());
    }
    for (const char* text : { "one", "four" })
        EXPECT_FALSE(FormatAt(*document, text).isAnchor()) << text;
}

TEST(RtfFields, MayHoldOtherFields)
{
    const auto document
        = Read("{\\field{\\*\\fldinst HYPERLINK out}{\\fldrslt a {\\field{\\fldinst PAGE}{\\fldrslt b}} "
               "{\\field{\\fldinst HYPERLINK in}{\\fldrslt c}} d}}");
    EXPECT_EQ(TextOf(*document), "a b c d");
    for (const auto& [text, address] :
        { std::pair { "a", "out" }, { "b", "out" }, { "c", "in" }, { "d", "out" } })
        EXPECT_EQ(FormatAt(*document, text).anchorHref(), address) << text;
    EXPECT_EQ(TextOf("{\\field{\\*\\fldinst IF {\\field{\\*\\fldinst X}{\\fldrslt y}}}{\\fldrslt z}}"), "z");
    EXPECT_EQ(TextOf("{\\fldrslt a}{\\fldinst b}{\\field c}"), "ac") << "parts without their field";
}
