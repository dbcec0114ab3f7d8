#include "tools/inspect/Columns.h"

#include "tools/inspect/Output.h"

#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr size_t kWidestCell = 32; // of a text

size_t TerminalWidth()
{
    winsize size {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : SIZE_MAX;
}

Field Cell(const Field& fact, const Column& column)
{
    Field cell = fact;
    cell.title = column.title;
    if (const auto* const text = std::get_if<std::string>(&cell.value))
        cell.shown = Shortened(*text, kWidestCell);
    else if (!cell.shown.empty())
        cell.shown = SizeText(cell.value);
    return cell;
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

}

Record Row(const Record& record, std::span<const Column> columns)
{
    Record row;
    for (const Column& column : columns) {
        const auto found = std::find_if(
            record.begin(), record.end(), [&column](const Field& one) { return one.key == column.key; });
        row.push_back(Cell(*found, column));
    }
    return row;
}

void FitTerminal(std::vector<Record>& table, std::span<const Column> columns)
{
    const size_t width = TerminalWidth();
    std::vector<Column> left(columns.begin(), columns.end());
    for (size_t i = left.size(); i-- > 0;) {
        const auto isEmpty = [i](const Record& row) { return IsEmpty(row[i]); };
        if (!std::all_of(table.begin(), table.end(), isEmpty))
            continue;
        Drop(table, i);
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(i));
    }
    while (left.size() > 1 && TableWidth(table) > width) {
        const auto last = std::max_element(left.begin(), left.end(),
            [](const Column& first, const Column& second) { return first.rank < second.rank; });
        Drop(table, static_cast<size_t>(last - left.begin()));
        left.erase(last);
    }
}
