#include "tools/inspect/Output.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

const std::vector<Record> kRecords {
    { { "name", "NAME", std::string("a\"b\\c\n\x1b\x7f\xc2\x9b\u00fc") },
        { "size", "SIZE", int64_t { 7 }, "7 bytes" }, { "is", "IS", true } },
    { { "name", "NAME", std::string("\xE4\xC3\xA4") }, { "size", "SIZE", int64_t { 1234567 } },
        { "is", "IS", {} } },
};

template <class Write> std::string Written(const Write& write)
{
    std::ostringstream out;
    write(out, kRecords);
    return out.str();
}

}

TEST(InspectOutputTest, TablesAlignAndShowNothingThatATerminalObeys)
{
    EXPECT_EQ(Written(WriteTable),
        "NAME           SIZE  IS\n"
        "a\"b\\c????\u00fc  7 bytes  yes\n"
        "\uFFFD\u00e4          1234567  -\n");
    EXPECT_EQ(Written(WriteParagraphs),
        "NAME  a\"b\\c????\u00fc\nSIZE  7 bytes\nIS    yes\n\nNAME  \uFFFD\u00e4\nSIZE  1234567\n");
}

TEST(InspectOutputTest, JSONIsEscapedAndLeavesOutWhatIsNotKnown)
{
    const std::string json
        = Written([](std::ostream& out, const auto& records) { return WriteJSON(out, records); });
    EXPECT_NE(json.find(R"("name":"a\"b\\c\u000a\u001b\u007f\u009bü")"), std::string::npos) << json;
    EXPECT_NE(json.find("\"size\":1234567"), std::string::npos) << json;
    EXPECT_EQ(json.find("null"), std::string::npos);
    std::ostringstream none;
    EXPECT_TRUE(WriteJSON(none, {}));
    EXPECT_EQ(none.str(), "[]\n");

    const std::string wide(400000, 'x');
    std::ostringstream out;
    EXPECT_TRUE(WriteJSON(out, std::vector<Record>(4, Record { { "k", "K", wide } })))
        << "more than one text may hold";
    EXPECT_EQ(out.str().size(), 4 * (400000 + 8) + 3 * 2 + 3U);
    const std::vector<Record> tooLong { { { "k", "K", std::string(174763, '\x01') }, { "l", "L", true } } };
    std::ostringstream rest;
    EXPECT_FALSE(WriteJSON(rest, tooLong)) << "escaped, it is longer than a text may be";
    EXPECT_EQ(rest.str(), "[{\"l\":true}]\n");
}
