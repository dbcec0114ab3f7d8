#include "ui/framework/Archiver.h"

#include "util/CFText.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr uint8_t kLargestSmallNumber = 0x7f; ///< numbers up to this are one byte

// What a byte above that means.
enum Tag : uint8_t {
    kInt16 = 0x81, ///< a number in the next two bytes
    kInt32 = 0x82, ///< a number in the next four bytes
    kNew = 0x84, ///< a text, class or object that the stream has not mentioned before
    kNil = 0x85,
    kEndOfObject = 0x86,
};

constexpr uint8_t kStreamerVersion = 4;
constexpr std::string_view kLittleEndianSignature = "streamtyped";
constexpr std::string_view kBigEndianSignature = "typedstream";
constexpr uint32_t kSystemVersion = 1000; ///< of every Mac since its first
constexpr std::string_view kObjectType = "@";
constexpr std::string_view kBytesType = "+";

struct StreamClass {
    std::string_view name;
    uint8_t version;
};
constexpr StreamClass kString { "NSString", 1 };
constexpr StreamClass kObject { "NSObject", 0 };

class Writer {
public:
    void byte(uint8_t value) { fBytes.push_back(value); }

    void number(uint32_t value)
    {
        if (value <= kLargestSmallNumber) {
            byte(static_cast<uint8_t>(value));
            return;
        }
        const bool isShort = value <= INT16_MAX;
        byte(isShort ? kInt16 : kInt32);
        for (int shift = 0; shift < (isShort ? 16 : 32); shift += 8)
            byte(static_cast<uint8_t>(value >> shift));
    }

    void counted(std::string_view text)
    {
        number(static_cast<uint32_t>(text.size()));
        fBytes.insert(fBytes.end(), text.begin(), text.end());
    }

    void newText(std::string_view text)
    {
        byte(kNew);
        counted(text);
    }

    void newClass(const StreamClass& described)
    {
        byte(kNew);
        newText(described.name);
        number(described.version);
    }

    CFRef<CFDataRef> data() const
    {
        return CFRef(CFDataCreate(kCFAllocatorDefault, fBytes.data(), static_cast<CFIndex>(fBytes.size())));
    }

private:
    std::vector<uint8_t> fBytes;
};

/// Each step answers whether the stream went on as expected; after a "no" nothing more is read.
class Reader {
public:
    explicit Reader(std::string_view bytes)
        : fBytes(bytes)
    {
    }

    bool byte(uint8_t& value)
    {
        if (fBytes.empty())
            return false;
        value = static_cast<uint8_t>(fBytes.front());
        fBytes.remove_prefix(1);
        return true;
    }

    bool expect(uint8_t expected)
    {
        uint8_t value = 0;
        return byte(value) && value == expected;
    }

    bool number(uint32_t& value)
    {
        uint8_t first = 0;
        if (!byte(first))
            return false;
        value = first;
        if (first == kInt16)
            return bytesOfNumber(2, value);
        if (first == kInt32)
            return bytesOfNumber(4, value);
        return first <= kLargestSmallNumber;
    }

    bool counted(std::string_view& text)
    {
        uint32_t size = 0;
        if (!number(size) || size > fBytes.size())
            return false;
        text = fBytes.substr(0, size);
        fBytes.remove_prefix(size);
        return true;
    }

    bool newText(std::string_view& text) { return expect(kNew) && counted(text); }

    bool signature()
    {
        std::string_view text;
        uint32_t systemVersion = 0;
        if (!expect(kStreamerVersion) || !counted(text))
            return false;
        fIsBigEndian = text == kBigEndianSignature;
        return (fIsBigEndian || text == kLittleEndianSignature) && number(systemVersion);
    }

    /// An object's class and its superclasses, from the class itself up to the root.
    bool classes(std::vector<std::string_view>& names)
    {
        for (uint8_t tag = 0; byte(tag);) {
            if (tag == kNil)
                return !names.empty();
            std::string_view name;
            uint32_t version = 0;
            if (tag != kNew || !newText(name) || !number(version))
                return false;
            names.push_back(name);
        }
        return false;
    }

    bool atEnd() const { return fBytes.empty(); }

private:
    bool bytesOfNumber(size_t count, uint32_t& value)
    {
        if (count > fBytes.size())
            return false;
        value = 0;
        for (size_t index = 0; index < count; ++index) {
            const size_t place = fIsBigEndian ? index : count - 1 - index;
            value = value << 8 | static_cast<uint8_t>(fBytes[place]);
        }
        fBytes.remove_prefix(count);
        return true;
    }

    std::string_view fBytes;
    bool fIsBigEndian = false;
};

bool ReadString(Reader& reader, std::string_view& text)
{
    std::string_view type;
    std::string_view contentType;
    std::vector<std::string_view> classes;
    return reader.signature() && reader.newText(type) && type == kObjectType && reader.expect(kNew)
        && reader.classes(classes) && std::find(classes.begin(), classes.end(), kString.name) != classes.end()
        && reader.newText(contentType) && contentType == kBytesType && reader.counted(text)
        && reader.expect(kEndOfObject) && reader.atEnd();
}

}

CFRef<CFDataRef> ArchivedDataWithRootObject(CFStringRef text)
{
    if (text == nullptr)
        return {};
    Writer writer;
    writer.byte(kStreamerVersion);
    writer.counted(kLittleEndianSignature);
    writer.number(kSystemVersion);
    writer.newText(kObjectType);
    writer.byte(kNew);
    writer.newClass(kString);
    writer.newClass(kObject);
    writer.byte(kNil);
    writer.newText(kBytesType);
    writer.counted(StdString(text));
    writer.byte(kEndOfObject);
    return writer.data();
}

CFRef<CFStringRef> UnarchiveObjectWithData(CFDataRef data)
{
    if (data == nullptr)
        return {};
    Reader reader({ reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
        static_cast<size_t>(CFDataGetLength(data)) });
    std::string_view text;
    return ReadString(reader, text) ? CFText(text) : CFRef<CFStringRef>();
}
