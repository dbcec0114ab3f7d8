#include "Reading.h"

#include <filesystem>

namespace {

std::string Repeated(int count, const std::string& text)
{
    std::string result;
    for (int i = 0; i < count; i++)
        result += text;
    return result;
}

}

TEST(RtfDocument, IsReplacedAndEmptyAfterWhatIsNoRichText)
{
    QTextDocument document("before");
    EXPECT_TRUE(ReadRTF("{\\rtf1 \\b one\\par two}trailing}", document, kLinkColor));
    EXPECT_EQ(TextOf(document), "one¶two");
    EXPECT_TRUE(document.isUndoRedoEnabled());
    EXPECT_FALSE(document.isUndoAvailable());
    EXPECT_FALSE(document.isModified());
    document.setUndoRedoEnabled(false);
    EXPECT_TRUE(ReadRTF("{\\rtf", document, kLinkColor));
    EXPECT_EQ(TextOf(document), "");
    EXPECT_FALSE(document.isUndoRedoEnabled());
    for (const char* bytes : { "", "{\\rt", "plain text", "{rtf1}", " {\\rtx" }) {
        document.setPlainText("before");
        EXPECT_FALSE(ReadRTF(bytes, document, kLinkColor)) << bytes;
        EXPECT_TRUE(document.isEmpty()) << bytes;
    }
}

TEST(RtfDamage, GivesWhatCouldBeReadWhereverTheFileEnds)
{
    for (const auto& entry : std::filesystem::directory_iterator(RTF_SAMPLES)) {
        const std::string whole = Sample(entry.path().filename());
        QTextDocument document;
        int characters = 0;
        for (size_t size = 5; size < whole.size(); size += 13) {
            const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            ASSERT_TRUE(ReadRTF({ cut.data(), cut.size() }, document, kLinkColor)) << entry.path() << size;
            ASSERT_GE(document.characterCount() + 2, characters) << "text was lost again"; // a half character
            characters = document.characterCount();
        }
        EXPECT_GT(characters, 50) << entry.path();
    }
}

TEST(RtfDamage, SkipsGroupsNestedTooDeepButNothingAfterThem)
{
    EXPECT_EQ(TextOf("a" + Repeated(10000, "{") + "b" + Repeated(10000, "}") + "c"), "ac");
    EXPECT_EQ(TextOf(Repeated(10000, "{\\*\\x") + "b" + Repeated(10000, "}") + "c"), "c");
    EXPECT_EQ(TextOf(Repeated(400, "{") + "a" + Repeated(400, "}") + "b"), "ab");
    EXPECT_EQ(TextOf("a}}}b"), "a") << "the text ends with its group";
}

TEST(RtfDamage, BoundsEveryNumber)
{
    for (const char* number :
        { "99999999999999999999", "2147483647", "-2147483648", "-99999999999999", "-1", "0" })
        for (const char* word :
            { "fs", "cf", "cb", "highlight", "f", "li", "fi", "ri", "sb", "sa", "sl", "tx", "cellx", "deff",
                "deftab", "ansicpg", "uc", "u", "up", "b", "ul", "bin0 \\trowd\\cellx" })
            EXPECT_NE(TextOf(std::string("a\\") + word + number + " b\\intbl c\\cell d\\row e").find('a'),
                std::string::npos)
                << word << number;
    EXPECT_EQ(TextOf("a\\bin99999999999 b"), "a") << "the data goes on to the end";
    EXPECT_EQ(TextOf("a\\bin-5 b"), "ab");
    EXPECT_EQ(
        TextOf(
            "{\\colortbl;\\red-1\\green999999999999\\blue;}{\\fonttbl\\f2147483647\\fcharset-1\\cpg-1 A;}a"),
        "a");
}
