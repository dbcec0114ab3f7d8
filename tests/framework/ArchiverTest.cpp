#include "ui/framework/Archiver.h"

#include "util/CFText.h"

#include <gtest/gtest.h>
#include <optional>

using namespace std::string_literals;

namespace {

const std::string kLittleEndian = "\x04\x0bstreamtyped\x81\xe8\x03"s;
const std::string kBigEndian = "\x04\x0btypedstream\x81\x03\xe8"s;
const std::string kNewObject = "\x84\x01@\x84"s;
const std::string kString = "\x84\x84\x08NSString\x01"s;
const std::string kRoot = "\x84\x84\x08NSObject\x00\x85"s;
const std::string kBytes = "\x84\x01+"s;
const std::string kEnd = "\x86"s;

std::string StringStream(const std::string& length, const std::string& text)
{
    return kLittleEndian + kNewObject + kString + kRoot + kBytes + length + text + kEnd;
}

std::string Archived(const std::string& text)
{
    const CFRef<CFDataRef> data = ArchivedDataWithRootObject(CFText(text).get());
    return { reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())),
        static_cast<size_t>(CFDataGetLength(data.get())) };
}

std::optional<std::string> Unarchived(const std::string& stream)
{
    const CFRef<CFDataRef> data(CFDataCreate(kCFAllocatorDefault,
        reinterpret_cast<const UInt8*>(stream.data()), static_cast<CFIndex>(stream.size())));
    const CFRef<CFStringRef> text = UnarchiveObjectWithData(data.get());
    return text ? std::optional(StdString(text.get())) : std::nullopt;
}

}

TEST(ArchiverTest, ATextIsATypedStreamWithOneString)
{
    EXPECT_EQ(Archived("{{1, 2}, {3, 4}}"), StringStream("\x10", "{{1, 2}, {3, 4}}"));
    EXPECT_EQ(Archived(""), StringStream("\0"s, ""));
    EXPECT_EQ(Archived("\u00e9\u4e2d"), StringStream("\x05", "\u00e9\u4e2d"))
        << "bytes count, not characters";
    EXPECT_FALSE(ArchivedDataWithRootObject(nullptr));
}

TEST(ArchiverTest, LongTextsHaveTheirLengthInTwoOrFourBytes)
{
    const std::pair<size_t, std::string> lengths[]
        = { { 127, "\x7f"s }, { 128, "\x81\x80\x00"s }, { 255, "\x81\xff\x00"s }, { 32767, "\x81\xff\x7f"s },
              { 32768, "\x82\x00\x80\x00\x00"s }, { 70000, "\x82\x70\x11\x01\x00"s } };
    for (const auto& [length, bytes] : lengths) {
        const std::string text(length, 'x');
        EXPECT_EQ(Archived(text), StringStream(bytes, text)) << length;
        EXPECT_EQ(Unarchived(StringStream(bytes, text)), text) << length;
    }
}

TEST(ArchiverTest, StreamsOfEitherByteOrderAndOfMutableStringsAreRead)
{
    const std::string mutableString = "\x84\x84\x0fNSMutableString\x01"s;
    EXPECT_EQ(Unarchived(kBigEndian + kNewObject + kString + kRoot + kBytes + "\x02hi" + kEnd), "hi");
    EXPECT_EQ(Unarchived(kBigEndian + kNewObject + mutableString + kString + kRoot + kBytes + "\x81\x01\x2c"
                  + std::string(300, 'y') + kEnd),
        std::string(300, 'y'));
}

TEST(ArchiverTest, AnythingElseIsNothing)
{
    const std::string whole = StringStream("\x02", "hi");
    ASSERT_EQ(Unarchived(whole), "hi");
    for (size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(Unarchived(whole.substr(0, length)), std::nullopt) << length;
    const std::string bad[] = { whole + "x", StringStream("\x03", "hi"),
        StringStream("\x82\xff\xff\xff\xff", "hi"), StringStream("\x80", std::string(128, 'x')),
        StringStream("\x02", "\xff\xfe"), "\x03" + whole.substr(1), "\x04\x0bstrangetype" + whole.substr(13),
        kLittleEndian + kNewObject + "\x84\x84\x08NSNumber\x01"s + kRoot + kBytes + "\x02hi" + kEnd,
        kLittleEndian + "\x84\x01i\x84" + kString + kRoot + kBytes + "\x02hi" + kEnd,
        kLittleEndian + kNewObject + kString + kRoot + "\x84\x01i" + "\x02hi" + kEnd,
        kLittleEndian + kNewObject + "\x85" + kBytes + "\x02hi" + kEnd };
    for (const std::string& stream : bad)
        EXPECT_EQ(Unarchived(stream), std::nullopt) << testing::PrintToString(stream);
    EXPECT_FALSE(UnarchiveObjectWithData(nullptr));
}
