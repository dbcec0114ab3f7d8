#pragma once

#include "util/CFRef.h"
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// What is not known has no value.
using Value = std::variant<std::monostate, bool, int64_t, std::string>;

struct Field {
    const char* key; ///< for programs
    const char* title; ///< for people
    Value value; ///< texts are bytes as they were found, UTF-8 as a rule
    std::string shown {}; ///< for people, where that is not just the value
};

/// One thing with what is known of it. Those of one report have the same fields in the same order.
using Record = std::vector<Field>;

/// A field's value as people read it: nothing that a terminal could take for a command, and "-" for what is not known.
std::string Shown(const Field& field);

/// @param bytes what is not UTF-8 in them becomes U+FFFD. @return UTF-8.
std::string ValidUTF8(std::string_view bytes);

/// The record for the library's JSON writer, which writes texts as they stand: they are escaped here.
/// @return null for one whose text would be longer than the library writes.
CFRef<CFDictionaryRef> DictionaryForJSON(const Record& record);
