#pragma once

#include <IOKit/RecordedValue.h>

#include <string>
#include <string_view>

namespace iokit {

/// Reads properties' values in the form that the registry's text has: "text", 12, 0xc, Yes, <0a0b>, <"text","text">,
/// {"key"=value}, (value,value), [value,value]. Nothing in texts is escaped: where one ends follows from what comes after it.
class TextValueReader {
public:
    struct Result {
        cf::Owned<CFTypeRef> value; ///< null for none; of a container, what could be read
        size_t unreadable;
        bool isOpen; ///< the text ends before the value does
    };

    explicit TextValueReader(Keys& keys)
        : fMaker(keys)
    {
    }

    /// @param isCut whether the text may have lost its end.
    Result read(std::string_view text, bool isCut);

private:
    using Kind = ValueMaker::Kind;

    Result readText() const;
    void readNext();
    void readMember();
    void readValue();
    void begin(Kind kind, char closer);
    void readNestedText();
    void readData();
    void readHexadecimal();
    void readTexts();
    void readNumber();
    void readFlag();

    bool isAtEnd() const { return fPosition == fText.size(); }
    bool isAfterValue(size_t position) const;
    bool endsText(std::string_view rest) const;
    size_t endOfText(size_t position) const;
    void add(cf::Owned<CFTypeRef> value, size_t end);
    void skip();
    void leaveOpen();

    ValueMaker fMaker;
    std::string_view fText;
    size_t fPosition = 0;
    bool fIsCut = false;
    bool fIsOpen = false;
    bool fIsLost = false; ///< what comes next belongs to what could not be read, until a member can be
    size_t fUnreadable = 0;
    std::string fClosers; ///< of the containers around the position
    std::string fBytes;
};

}
