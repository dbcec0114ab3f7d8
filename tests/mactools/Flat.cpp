#include "Flat.h"

using profile::Entry;
using profile::Item;

namespace {

struct Flattener {
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return std::to_string(number); }
    std::string operator()(profile::Date date) const { return "@" + std::to_string(date.at); }
    std::string operator()(const Item& item) const
    {
        std::string text;
        for (const Entry& entry : item.entries())
            text += (text.empty() ? "" : ", ") + entry.key + ": " + Flat(entry.value);
        return "{" + text + "}";
    }
    template <class Element> std::string operator()(const std::vector<Element>& list) const
    {
        std::string text;
        for (const Element& element : list)
            text += (text.empty() ? "" : ", ") + (*this)(element);
        return "[" + text + "]";
    }
};

}

std::string Flat(const Item::Value& value) { return std::visit(Flattener(), value); }
