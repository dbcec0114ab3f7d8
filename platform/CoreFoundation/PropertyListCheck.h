#pragma once

#include <cstdint>
#include <string_view>

/// How deep arrays and dictionaries may lie inside each other in any property list that is read, written or
/// copied. libplist, and the functions here, descend by recursion: the bound is what keeps the stack from
/// overflowing.
constexpr unsigned kPropertyListDepthLimit = 512;

/// Whether libplist's functions can take and give the date: whole seconds, in 32 bits.
inline bool IsPlainDate(double secondsSinceReference)
{
    return secondsSinceReference > INT32_MIN && secondsSinceReference < INT32_MAX
        && secondsSinceReference == static_cast<double>(static_cast<int32_t>(secondsSinceReference));
}

/// What a look over the bytes of a property list says before they are handed to libplist.
struct PropertyListCheck {
    const char* fault; ///< null when the bytes are fit to be read, else what is wrong with them (static text)
    std::string_view
        document; ///< the bytes to hand over: the argument without what precedes and follows the root
    bool hasWideIntegers; ///< an integer above 2^63-1 occurs, so the sign of an integer must be looked at
    bool hasWideDates; ///< a date occurs that IsPlainDate() is not true of
};

/// Checks a text for being one well-formed XML property list. libplist accepts more than that: it reads "abc"
/// as the integer 0 and a bad date as 1970, takes a document that ends early, and overflows the stack on deep
/// nesting. Text content is not checked for being valid UTF-8; making a CFString of it does that.
/// @param text UTF-8, with or without a byte order mark.
PropertyListCheck CheckXMLPropertyList(std::string_view text);

/// Checks the object table of a binary property list: that all of it lies inside the bytes, that no container
/// holds itself, and that depth and size stay bounded once every reference is expanded. libplist makes a copy
/// for each reference, so a few hundred bytes could otherwise grow without end.
PropertyListCheck CheckBinaryPropertyList(std::string_view bytes);
