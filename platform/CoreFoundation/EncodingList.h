#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreFoundation/Converters.h>

namespace cf {

enum class Form {
    Table, ///< one byte each, the lower half ASCII
    Pairs, ///< one byte or two each; ASCII stands for itself, but may also be a second byte
    Utf8,
    Utf16,
    Utf32
};

/// What is known of an encoding.
struct Encoding {
    CFStringEncoding id;
    UInt32 windowsCodepage; ///< 0 for none
    Form form;
    const ByteTable& (*table)() = nullptr; ///< for Form::Table
    const char* converter = nullptr; ///< ICU's name, for Form::Pairs
    bool bigEndian = false;
    bool openOrder = false; ///< a byte order mark may say otherwise
};

/// @return null for one that is not known.
const Encoding* FindEncoding(CFStringEncoding id);
/// @return null where there is none with this number.
const Encoding* FindEncodingOfCodepage(UInt32 codepage);

}
