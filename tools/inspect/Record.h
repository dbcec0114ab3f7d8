#pragma once

#include "util/CFRef.h"
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

struct Field;

/// One thing with what is known of it. Those of one table have the same fields in the same order.
using Record = std::vector<Field>;

/// What is not known has no value. An object is a property's of the device registry, a record one within the other.
using Value
    = std::variant<std::monostate, bool, int64_t, double, std::string, CFRef<CFTypeRef>, std::vector<Field>>;

/// Texts, keys and titles as well, are bytes as they were found, UTF-8 as a rule.
struct Field {
    std::string key; ///< for programs
    std::string title; ///< for people
    Value value;
    std::string shown {}; ///< for people, where that is not just the value
};

/// What the library counts in, as a value; none for a number that is too large for one.
Value Number(uint64_t number);

/// A text, where it is not "".
Value TextOrNone(std::string_view text);

/// A string's text, where it is one.
Value StringOrNone(CFTypeRef value);

/// "466 GB". @param bytes a number, or nothing, which gives "".
std::string SizeText(const Value& bytes);

/// A size in bytes. @param size as above.
Field SizeField(const char* key, const char* title, Value size);

/// The text with nothing in it that a terminal could take for a command.
std::string Printable(std::string_view text);

/// Printable text of at most so many characters: what is too long ends in "…".
std::string Shortened(std::string_view text, size_t characters);

/// A field's value as people read it, printable, and "-" for what is not known.
std::string Shown(const Field& field);

/// @param bytes what is not UTF-8 in them becomes U+FFFD. @return UTF-8.
std::string ValidUTF8(std::string_view bytes);

/// Appends the record as a JSON object, without the fields that have no value. The library's writer writes texts as they
/// stand: they are escaped here.
/// @return false where something is left out, because its text is longer than the library writes.
bool AppendObject(std::string& json, const Record& record);
