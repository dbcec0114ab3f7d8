#pragma once

// The basic types of <MacTypes.h>, on which the C interfaces of every framework rest. Sizes are those of a
// 64-bit Mac.

using UInt8 = unsigned char;
using SInt8 = signed char;
using UInt16 = unsigned short;
using SInt16 = signed short;
using UInt32 = unsigned int;
using SInt32 = signed int;
using UInt64 = unsigned long long;
using SInt64 = signed long long;

using Float32 = float;
using Float64 = double;

using Boolean = unsigned char;
using Byte = UInt8;
using SignedByte = SInt8;

using UniChar = UInt16; ///< one UTF-16 unit
using UniCharCount = unsigned long;
using UTF8Char = UInt8;
using UTF16Char = UInt16;
using UTF32Char = UInt32;
using StringPtr = unsigned char*; ///< Pascal string: a length byte, then that many bytes
using ConstStringPtr = const unsigned char*;
using Str255 = unsigned char[256];

using OSErr = SInt16;
using OSStatus = SInt32;
using FourCharCode = UInt32;
using OSType = FourCharCode;
using ByteCount = unsigned long;
using ItemCount = unsigned long;
using Ptr = char*;
using Handle = Ptr*;
using Size = long;

enum { noErr = 0 };

/// A process in two halves: 0, 0 is none, and 0, 1 the system.
struct ProcessSerialNumber {
    UInt32 highLongOfPSN;
    UInt32 lowLongOfPSN;
};

/// A version in four bytes, named as they lie in a little-endian whole.
struct NumVersion {
    UInt8 nonRelRev; ///< revision of a version that is not final, 0 to 255
    UInt8 stage; ///< 0x20 development, 0x40 alpha, 0x60 beta, 0x80 final
    UInt8 minorAndBugRev; ///< a nibble each
    UInt8 majorRev; ///< two binary-coded decimal digits
};

union NumVersionVariant {
    NumVersion parts;
    UInt32 whole;
};
