#include "tools/inspect/Output.h"

#include <algorithm>

namespace {

/// In characters, which is columns for most scripts.
size_t Width(const std::string& text)
{
    const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), begins));
}

bool IsNumber(const Field& field)
{
    return std::holds_alternative<int64_t>(field.value) || std::holds_alternative<double>(field.value);
}

std::string InCapitals(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
        [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

std::string Padded(const std::string& text, size_t width, bool isNumber)
{
    const std::string padding(width - std::min(Width(text), width), ' ');
    return isNumber ? padding + text : text + padding;
}

void WriteLine(std::ostream& out, const std::vector<std::string>& cells, const std::vector<size_t>& widths,
    const Record& like)
{
    std::string line;
    for (size_t i = 0; i < cells.size(); ++i)
        line += Padded(cells[i], widths[i], IsNumber(like[i])) + "  ";
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

using Cells = std::vector<std::vector<std::string>>;

/// The lines of a table, the first with the titles; none without records.
Cells CellsOf(const std::vector<Record>& records)
{
    if (records.empty())
        return {};
    Cells lines(1);
    for (const Field& field : records.front())
        lines.front().push_back(InCapitals(field.title));
    for (const Record& record : records) {
        lines.emplace_back();
        std::transform(record.begin(), record.end(), std::back_inserter(lines.back()), Shown);
    }
    return lines;
}

std::vector<size_t> WidthsOf(const Cells& cells)
{
    std::vector<size_t> widths(cells.empty() ? 0 : cells.front().size(), 0);
    for (const std::vector<std::string>& line : cells) {
        for (size_t i = 0; i < line.size(); ++i)
            widths[i] = std::max(widths[i], Width(line[i]));
    }
    return widths;
}

/// Of the fields and of those within, in characters.
size_t TitleWidth(const Record& record)
{
    size_t width = 0;
    for (const Field& field : record) {
        const auto* const within = std::get_if<Record>(&field.value);
        width = std::max(width, within != nullptr ? TitleWidth(*within) : Width(Printable(field.title)));
    }
    return width;
}

void WriteFields(std::ostream& out, const Record& record, size_t width)
{
    for (const Field& field : record) {
        if (const auto* const within = std::get_if<Record>(&field.value))
            WriteFields(out, *within, width);
        else if (!std::holds_alternative<std::monostate>(field.value))
            out << Padded(Printable(field.title), width, false) << "  " << Shown(field) << '\n';
    }
}

}

void WriteTable(std::ostream& out, const std::vector<Record>& records)
{
    const Cells cells = CellsOf(records);
    const std::vector<size_t> widths = WidthsOf(cells);
    for (const std::vector<std::string>& line : cells)
        WriteLine(out, line, widths, records.front());
}

size_t TableWidth(const std::vector<Record>& table)
{
    size_t width = 0;
    for (const size_t column : WidthsOf(CellsOf(table)))
        width += column + 2;
    return width - std::min<size_t>(width, 2);
}

void WriteParagraphs(std::ostream& out, const std::vector<Record>& records)
{
    for (const Record& record : records) {
        if (&record != &records.front())
            out << '\n';
        WriteFields(out, record, TitleWidth(record));
    }
}

bool WriteJSON(std::ostream& out, const std::vector<Record>& records, const char* separator)
{
    bool isWhole = true;
    std::string text = "[";
    for (const Record& record : records) {
        isWhole = AppendObject(text, record) && isWhole;
        text += &record != &records.back() ? std::string(",") + separator : "";
        out << text;
        text.clear();
    }
    out << text << "]\n";
    return isWhole;
}
