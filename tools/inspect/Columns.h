#pragma once

#include "tools/inspect/Record.h"
#include <span>

/// A field that a table for people has.
struct Column {
    const char* key;
    const char* title;
    int rank; ///< on a narrow terminal, columns with high ones are left out
};

/// A record as a line of a table: sizes short, long texts cut.
/// @param record has a field for each column.
Record Row(const Record& record, std::span<const Column> columns);

/// Room is scarce: columns for which nothing is known are left out, then, on a narrow terminal, what matters least.
/// @param table rows for these columns.
void FitTerminal(std::vector<Record>& table, std::span<const Column> columns);
