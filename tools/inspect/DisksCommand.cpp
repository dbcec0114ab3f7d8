#include "tools/inspect/Commands.h"
#include "tools/inspect/Media.h"
#include "tools/inspect/Output.h"

#include <algorithm>
#include <array>
#include <set>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

struct Column {
    const char* key;
    const char* title;
    bool isOfDrive; ///< what partitions share
    int rank; ///< on a narrow terminal, columns with high ones are left out
};

constexpr std::array kColumns {
    Column { "name", "Name", false, 0 },
    Column { "size", "Size", false, 1 },
    Column { "bus", "Bus", true, 4 },
    Column { "mediaType", "Type", true, 3 },
    Column { "make", "Make", true, 8 },
    Column { "model", "Model", true, 2 },
    Column { "firmware", "Firmware", true, 11 },
    Column { "serialNumber", "Serial", true, 9 },
    Column { "location", "Location", true, 12 },
    Column { "partitionType", "Partitions", false, 5 },
    Column { "isTRIMSupported", "TRIM", true, 10 },
    Column { "volumePath", "Volume", false, 6 },
    Column { "label", "Label", false, 7 },
};

constexpr size_t kWidestCell = 32; // of a text

size_t TerminalWidth()
{
    winsize size {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : SIZE_MAX;
}

/// A field as the table has it: without what the drive's own row tells, and without labels that only repeat the model.
Field Cell(const Field& fact, const Column& column, bool isPartition)
{
    Field cell = fact;
    cell.title = column.title;
    auto* const text = std::get_if<std::string>(&cell.value);
    if (fact.key == "size")
        cell.shown = SizeText(fact.value);
    const bool isModel = fact.key == "label" && text != nullptr && text->ends_with("Media");
    if (isModel || (isPartition && column.isOfDrive))
        cell.value = std::string();
    else if (text != nullptr)
        cell.shown = Shortened(*text, kWidestCell);
    return cell;
}

Record Row(const Record& facts, bool isPartition)
{
    Record row;
    for (const Column& column : kColumns) {
        const auto found = std::find_if(
            facts.begin(), facts.end(), [&column](const Field& one) { return one.key == column.key; });
        row.push_back(Cell(*found, column, isPartition));
    }
    return row;
}

bool IsEmpty(const Field& field)
{
    const auto* const text = std::get_if<std::string>(&field.value);
    return std::holds_alternative<std::monostate>(field.value) || (text != nullptr && text->empty());
}

void Drop(std::vector<Record>& table, size_t column)
{
    for (Record& row : table)
        row.erase(row.begin() + static_cast<Record::difference_type>(column));
}

/// Room is scarce: columns for which nothing is known are left out, then, on a narrow terminal, what matters least.
void FitTable(std::vector<Record>& table, size_t width)
{
    std::vector<Column> columns(kColumns.begin(), kColumns.end());
    for (size_t i = columns.size(); i-- > 0;) {
        const auto isEmpty = [i](const Record& row) { return IsEmpty(row[i]); };
        if (!std::all_of(table.begin(), table.end(), isEmpty))
            continue;
        Drop(table, i);
        columns.erase(columns.begin() + static_cast<std::ptrdiff_t>(i));
    }
    while (columns.size() > 1 && TableWidth(table) > width) {
        const auto last = std::max_element(columns.begin(), columns.end(),
            [](const Column& first, const Column& second) { return first.rank < second.rank; });
        Drop(table, static_cast<size_t>(last - columns.begin()));
        columns.erase(last);
    }
}

}

Findings FindDisks(const Request& request)
{
    Findings findings;
    findings.isTable = request.operands.empty() && !request.asJSON;
    const std::set<std::string> wanted(request.operands.begin(), request.operands.end());
    std::set<std::string> missing = wanted;
    MediaFacts facts;
    for (const Medium& medium : AllMedia()) {
        missing.erase(medium.name);
        if (!wanted.empty() && !wanted.contains(medium.name))
            continue;
        const Record record = facts.describe(medium);
        findings.records.push_back(findings.isTable ? Row(record, medium.isPartition) : record);
    }
    if (findings.isTable)
        FitTable(findings.records, TerminalWidth());
    for (const std::string& name : missing)
        findings.problems.push_back("no disk or partition has the name " + name);
    return findings;
}
