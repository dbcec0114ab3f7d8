#include "profile/TextForm.h"

#include "profile/Facts.h"

#include <array>
#include <ctime>

namespace profile {

namespace {

/// Shown through another key, or as a heading.
bool IsHidden(const Entry& entry)
{
    return entry.key == "_name" || entry.key == "_items" || entry.key == "size";
}

/// "1,234,567".
std::string Grouped(int64_t number)
{
    std::string digits = std::to_string(number);
    for (size_t at = digits.size(); at > 3 && digits[at - 4] != '-'; at -= 3)
        digits.insert(at - 3, ",");
    return digits;
}

std::string TimeText(Date date)
{
    std::array<char, 64> text {};
    tm parts {};
    localtime_r(&date.at, &parts);
    return { text.data(), std::strftime(text.data(), text.size(), "%F %T", &parts) };
}

void WriteEntries(std::ostream& out, const Item& item, size_t indent);

/// Writes what comes behind a label: the value, or, below it and further in, what is inside.
struct ValueWriter {
    std::ostream& out;
    const std::string& key;
    size_t indent; ///< of the label

    void operator()(const std::string& text) const { out << ' ' << ValueInWords(text) << '\n'; }
    void operator()(int64_t number) const
    {
        if (key.ends_with("_in_bytes"))
            out << ' ' << DecimalSize(number) << " (" << Grouped(number) << " bytes)\n";
        else
            out << ' ' << number << '\n';
    }
    void operator()(double number) const { out << ' ' << number << '\n'; }
    void operator()(Date date) const { out << ' ' << TimeText(date) << '\n'; }
    void operator()(const std::vector<std::string>& texts) const
    {
        for (const std::string& text : texts)
            out << ' ' << text;
        out << '\n';
    }
    void operator()(const Item& item) const
    {
        out << '\n';
        WriteEntries(out, item, indent + 4);
    }
    void operator()(const Item::List& items) const
    {
        out << '\n';
        for (const Item& item : items) {
            out << std::string(indent + 2, ' ') << ValueInWords(item.text("_name")) << ":\n";
            WriteEntries(out, item, indent + 4);
        }
    }
};

void WriteEntries(std::ostream& out, const Item& item, size_t indent)
{
    for (const Entry& entry : item.entries()) {
        if (IsHidden(entry))
            continue;
        out << std::string(indent, ' ') << KeyInWords(entry.key) << ':';
        std::visit(ValueWriter { out, entry.key, indent }, entry.value);
    }
}

void WriteItems(std::ostream& out, const Item::List& items, size_t indent)
{
    for (const Item& item : items) {
        out << std::string(indent, ' ') << ValueInWords(item.text("_name")) << ":\n\n";
        WriteEntries(out, item, indent + 2);
        out << '\n';
        for (const Entry& entry : item.entries()) {
            if (const auto* const inner = std::get_if<Item::List>(&entry.value);
                inner && entry.key == "_items")
                WriteItems(out, *inner, indent + 4);
        }
    }
}

}

void WriteText(std::ostream& out, const std::string& title, const Item::List& items)
{
    out << title << ":\n\n";
    WriteItems(out, items, 4);
}

} // namespace profile
