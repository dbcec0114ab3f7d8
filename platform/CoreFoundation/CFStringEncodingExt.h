#pragma once

#include <CoreFoundation/CFBase.h>

/// Encodings beyond the built-in ones, for wherever a CFStringEncoding is asked for.
enum CFStringEncodings : CFIndex {
    kCFStringEncodingMacGreek = 6,
    kCFStringEncodingMacCyrillic = 7,
    kCFStringEncodingMacCentralEurRoman = 29,
    kCFStringEncodingMacTurkish = 35,
    kCFStringEncodingDOSLatinUS = 0x0400, ///< code page 437
    kCFStringEncodingDOSGreek = 0x0405, ///< code page 737
    kCFStringEncodingDOSBalticRim = 0x0406, ///< code page 775
    kCFStringEncodingDOSLatin1 = 0x0410, ///< code page 850
    kCFStringEncodingDOSLatin2 = 0x0412, ///< code page 852
    kCFStringEncodingDOSCyrillic = 0x0413, ///< code page 855
    kCFStringEncodingDOSTurkish = 0x0414, ///< code page 857
    kCFStringEncodingDOSPortuguese = 0x0415, ///< code page 860
    kCFStringEncodingDOSIcelandic = 0x0416, ///< code page 861
    kCFStringEncodingDOSHebrew = 0x0417, ///< code page 862
    kCFStringEncodingDOSCanadianFrench = 0x0418, ///< code page 863
    kCFStringEncodingDOSNordic = 0x041a, ///< code page 865
    kCFStringEncodingDOSRussian = 0x041b, ///< code page 866
    kCFStringEncodingDOSGreek2 = 0x041c, ///< code page 869
    kCFStringEncodingDOSThai = 0x041d, ///< code page 874, also for Windows
    kCFStringEncodingDOSJapanese = 0x0420, ///< code page 932, also for Windows
    kCFStringEncodingDOSChineseSimplif = 0x0421, ///< code page 936, also for Windows
    kCFStringEncodingDOSKorean = 0x0422, ///< code page 949, also for Windows
    kCFStringEncodingDOSChineseTrad = 0x0423, ///< code page 950, also for Windows
    kCFStringEncodingWindowsLatin2 = 0x0501, ///< code page 1250
    kCFStringEncodingWindowsCyrillic = 0x0502, ///< code page 1251
    kCFStringEncodingWindowsGreek = 0x0503, ///< code page 1253
    kCFStringEncodingWindowsLatin5 = 0x0504, ///< code page 1254
    kCFStringEncodingWindowsHebrew = 0x0505, ///< code page 1255
    kCFStringEncodingWindowsArabic = 0x0506, ///< code page 1256
    kCFStringEncodingWindowsBalticRim = 0x0507, ///< code page 1257
    kCFStringEncodingWindowsVietnamese = 0x0508 ///< code page 1258
};
