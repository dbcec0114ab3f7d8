#include "HostFolder.h"

#include "tests/support/TestVolume.h"

#include <cstdlib>
#include <type_traits>

namespace fs = std::filesystem;
using profile::Entry;
using profile::Item;

HostFolder::HostFolder()
{
    std::string name = fs::temp_directory_path() / "host-XXXXXX";
    fRoot = mkdtemp(name.data());
}

HostFolder::~HostFolder() { fs::remove_all(fRoot); }

HostFolder& HostFolder::add(
    const std::string& folder, std::initializer_list<std::pair<std::string, std::string>> files)
{
    for (const auto& [name, text] : files) {
        const fs::path path = fRoot / (folder + name);
        fs::create_directories(path.parent_path());
        if (text.starts_with("-> "))
            fs::create_symlink(fRoot / text.substr(3), path);
        else
            TestVolume::write(path, text);
    }
    return *this;
}

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
