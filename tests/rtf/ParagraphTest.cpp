#include "Reading.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

double Pixels(double twips) { return twips * QGuiApplication::primaryScreen()->logicalDotsPerInchY() / 1440; }

QTextBlockFormat Paragraph(const char* body, int number = 0)
{
    return Read(body)->findBlockByNumber(number).blockFormat();
}

/// The tab stops in twips.
std::vector<double> Tabs(const char* body)
{
    std::vector<double> twips;
    for (const QTextOption::Tab& tab : Paragraph(body).tabPositions())
        twips.push_back(tab.position / Pixels(1));
    return twips;
}

}

TEST(RtfParagraphs, HaveTheFormatThatHoldsAtTheirEnd)
{
    const auto document = Read("\\qc\\li720 a\\ri1440 b\\par c\\pard d\\par{\\qr e}");
    const QTextBlockFormat first = document->firstBlock().blockFormat();
    EXPECT_EQ(first.alignment(), Qt::AlignHCenter);
    EXPECT_DOUBLE_EQ(first.leftMargin(), Pixels(720));
    EXPECT_DOUBLE_EQ(first.rightMargin(), Pixels(1440));
    EXPECT_FALSE(document->firstBlock().next().blockFormat().hasProperty(QTextFormat::BlockAlignment));
    EXPECT_EQ(Paragraph("\\qr a").alignment(), Qt::AlignRight | Qt::AlignAbsolute) << "the last one as well";
    EXPECT_EQ(Paragraph("\\qj a").alignment(), Qt::AlignJustify);
    EXPECT_EQ(Paragraph("\\rtlpar a").layoutDirection(), Qt::RightToLeft);
}

TEST(RtfParagraphs, HaveSpaceAndIndentsWithinReason)
{
    const QTextBlockFormat format = Paragraph("\\sb200\\sa100\\li720\\fi-360 a");
    EXPECT_DOUBLE_EQ(format.topMargin(), Pixels(200));
    EXPECT_DOUBLE_EQ(format.bottomMargin(), Pixels(100));
    EXPECT_DOUBLE_EQ(format.textIndent(), Pixels(-360));
    const QTextBlockFormat mad = Paragraph("\\sb-5\\sa2000000000\\li-99\\fi-2147483649\\ri99999999 a");
    EXPECT_EQ(mad.topMargin(), 0);
    EXPECT_LE(mad.bottomMargin(), Pixels(2880));
    EXPECT_LE(mad.rightMargin(), Pixels(7200));
    EXPECT_EQ(mad.leftMargin() + mad.textIndent(), 0) << "nothing beyond the edge";
}

TEST(RtfParagraphs, HaveTheirLineSpacing)
{
    const struct {
        const char* body;
        int type;
        double height;
    } cases[] = { { "a", QTextBlockFormat::SingleHeight, 0 },
        { "\\sl360\\slmult1 a", QTextBlockFormat::ProportionalHeight, 150 },
        { "\\sl240\\slmult1 a", QTextBlockFormat::SingleHeight, 0 },
        { "\\sl400 a", QTextBlockFormat::MinimumHeight, Pixels(400) },
        { "\\sl-400\\slmult0 a", QTextBlockFormat::FixedHeight, Pixels(400) },
        { "\\sl1\\slmult1 a", QTextBlockFormat::ProportionalHeight, 50 },
        { "\\sl0 a", QTextBlockFormat::SingleHeight, 0 } };
    for (const auto& [body, type, height] : cases) {
        EXPECT_EQ(Paragraph(body).lineHeightType(), type) << body;
        EXPECT_DOUBLE_EQ(Paragraph(body).lineHeight(), height) << body;
    }
}

TEST(RtfParagraphs, HaveTabStopsCountedFromTheFirstLine)
{
    EXPECT_EQ(Tabs("\\tx720\\tx360\\tx-5 a"), (std::vector<double> { 360, 720 }));
    EXPECT_EQ(Tabs("\\tx720\\li360 a"), (std::vector<double> { 360 }));
    EXPECT_EQ(Tabs("\\li720\\fi-360\\tx1440\\tx200 a"), (std::vector<double> { 360, 1080 }))
        << "where the first line hangs out, the indent is a stop as well";
    const auto tabs
        = Paragraph("\\tqr\\tx720\\tqdec\\tx900\\tx1000\\pard\\tqc\\tx100\\tx200 a").tabPositions();
    ASSERT_EQ(tabs.size(), 2);
    EXPECT_EQ(tabs[0].type, QTextOption::CenterTab);
    EXPECT_EQ(tabs[1].type, QTextOption::LeftTab);
    EXPECT_DOUBLE_EQ(Read("a")->defaultTextOption().tabStopDistance(), Pixels(720));
    EXPECT_DOUBLE_EQ(Read("\\deftab360 a")->defaultTextOption().tabStopDistance(), Pixels(360));
}

TEST(RtfParagraphs, AreAsHighAsTheirFontAlsoWhenEmpty)
{
    const auto document = Read("a\\par\\fs60\\par\\fs20 b");
    EXPECT_EQ(document->findBlockByNumber(1).charFormat().fontPointSize(), 30);
}

TEST(RtfLists, ShowTheNumbersAndBulletsThatAreWritten)
{
    EXPECT_EQ(TextOf("{\\listtext\\tab\\uc0\\u8226 \\tab}One\\par{\\listtext\\f9   2.\\tab}\\ls1\\ilvl0 Two"),
        "→•→One¶2.→Two");
    EXPECT_EQ(TextOf("{\\fonttbl{\\f2\\fcharset2 "
                     "Symbol;}}{\\pntext\\f2\\'B7\\tab}{\\*\\pn\\pnlvlblt{\\pntxtb\\'B7}}One"),
        "•→One");
    EXPECT_EQ(TextOf("\\ls1\\ilvl0 One\\par \\ls1 Two"), "One¶Two");
    EXPECT_EQ(RunsOf("{\\listtext\\pard\\plain\\b 1.\\tab}\\fs20 Two"), "[b12 1.\t][10 Two]");
}

TEST(RtfTables, HaveARowInEachParagraphWithTheCellsAtTabStops)
{
    const char* const table
        = "a\\par\\trowd\\cellx2000\\cellx4000\\cellx9000\\pard\\intbl x\\cell\\cell y\\par z\\cell"
          "{\\trowd\\cellx2000\\cellx4000\\cellx9000\\row}\\pard\\intbl u\\cell v\\cell\\cell\\row\\pard b";
    EXPECT_EQ(TextOf(table), "a¶x→→y↵z¶u→v¶b");
    const QTextBlockFormat row = Paragraph(table, 1);
    EXPECT_DOUBLE_EQ(row.leftMargin(), Pixels(4000)) << "further lines stay in the last column";
    EXPECT_DOUBLE_EQ(row.textIndent(), -Pixels(4000));
    EXPECT_DOUBLE_EQ(row.tabPositions().value(0).position, Pixels(2000));
    EXPECT_EQ(Paragraph(table, 3).leftMargin(), 0);
    EXPECT_EQ(TextOf("\\row\\intbl a\\cell\\row\\trowd\\row"), "¶a¶") << "a table without columns";
}
