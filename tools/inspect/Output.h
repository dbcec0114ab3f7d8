#pragma once

#include "tools/inspect/Record.h"
#include <ostream>

/// One line for each record, below the titles in capitals.
void WriteTable(std::ostream& out, const std::vector<Record>& records);

/// Of its lines, in characters.
size_t TableWidth(const std::vector<Record>& table);

/// One paragraph for each record, a line for each field that has a value.
void WriteParagraphs(std::ostream& out, const std::vector<Record>& records);

/// A JSON array with an object for each record, in which fields without a value are missing.
/// @param separator between the records, beside the comma. @return false where something is left out because its text is
/// longer than the library writes.
bool WriteJSON(std::ostream& out, const std::vector<Record>& records, const char* separator = "\n");
