#include "tools/inspect/Output.h"

#include "util/JSON.h"

#include <algorithm>

namespace {

/// In characters, which is columns for most scripts.
size_t Width(const std::string& text)
{
    const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), begins));
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
        line += Padded(cells[i], widths[i], std::holds_alternative<int64_t>(like[i].value)) + "  ";
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
}

}

void WriteTable(std::ostream& out, const std::vector<Record>& records)
{
    if (records.empty())
        return;
    std::vector<std::string> titles;
    for (const Field& field : records.front())
        titles.emplace_back(field.title);
    std::vector<std::vector<std::string>> lines { titles };
    std::vector<size_t> widths(titles.size(), 0);
    for (const Record& record : records) {
        lines.emplace_back();
        std::transform(record.begin(), record.end(), std::back_inserter(lines.back()), Shown);
    }
    for (const std::vector<std::string>& line : lines) {
        for (size_t i = 0; i < line.size(); ++i)
            widths[i] = std::max(widths[i], Width(line[i]));
    }
    for (const std::vector<std::string>& line : lines)
        WriteLine(out, line, widths, records.front());
}

void WriteParagraphs(std::ostream& out, const std::vector<Record>& records)
{
    size_t width = 0;
    for (const Record& record : records) {
        for (const Field& field : record)
            width = std::max(width, Width(field.title));
    }
    for (const Record& record : records) {
        if (&record != &records.front())
            out << '\n';
        for (const Field& field : record) {
            if (!std::holds_alternative<std::monostate>(field.value))
                out << Padded(field.title, width, false) << "  " << Shown(field) << '\n';
        }
    }
}

bool WriteJSON(std::ostream& out, const std::vector<Record>& records)
{
    // Each record is a text of its own, because the library limits the length of one.
    std::string all;
    for (const Record& record : records) {
        CFDataRef data = nullptr;
        if (!CreateJSON_DataFromDictionary(DictionaryForJSON(record).get(), &data))
            return false;
        const CFRef<CFDataRef> text(data);
        all += all.empty() ? "" : ",\n";
        all += reinterpret_cast<const char*>(CFDataGetBytePtr(data));
    }
    out << '[' << all << "]\n";
    return true;
}
