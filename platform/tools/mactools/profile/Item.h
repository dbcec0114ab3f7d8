#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/Runtime.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace profile {

struct Entry;
struct Date {
    std::time_t at;
};

/// A dictionary of a report, in the order in which people read it.
class Item {
public:
    using List = std::vector<Item>;
    using Value = std::variant<std::string, int64_t, double, Date, std::vector<std::string>, Item, List>;

    Item() = default;
    explicit Item(const std::string& name);

    /// Adds a fact, unless it is known already or tells nothing: "", an empty container, a time that property lists
    /// cannot hold. Of several sources for a fact the best one therefore comes first.
    Item& set(const char* key, Value value);
    /// The same; nothing tells nothing.
    Item& setNumber(const char* key, std::optional<int64_t> number);
    /// Adds an entry, whatever is in it.
    Item& put(const char* key, Value value);
    /// Takes the entries of that key away here and in everything inside.
    void remove(const char* key);

    const std::vector<Entry>& entries() const { return fEntries; }
    /// @return the text of that key; "" when there is none.
    std::string text(std::string_view key) const;

private:
    std::vector<Entry> fEntries;
};

struct Entry {
    std::string key;
    Item::Value value;
};

/// @return the value as objects of a property list.
cf::Owned<CFTypeRef> PropertyListOf(const Item::Value& value);

} // namespace profile
