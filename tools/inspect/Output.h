#pragma once

#include "tools/inspect/Record.h"
#include <ostream>

/// One line for each record, below the titles.
void WriteTable(std::ostream& out, const std::vector<Record>& records);

/// One paragraph for each record, a line for each field that has a value.
void WriteParagraphs(std::ostream& out, const std::vector<Record>& records);

/// A JSON array with an object for each record, in which fields without a value are missing.
/// @return false when a record's text is longer than the library writes.
bool WriteJSON(std::ostream& out, const std::vector<Record>& records);
