#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace iokit {

/// Text that a device gave, fit to be shown: without white space and nulls at both ends, other control characters, which
/// could do anything to a terminal, as "?".
std::string Cleaned(std::string_view text);

/// @return the UUID in capitals, as a Mac writes it; "" where the text is none.
std::string UUIDText(const std::string& text);

/// A folder of the kernel's in which each file holds one fact. Facts come and go with the device; one that is not there is
/// empty.
class Attributes {
public:
    explicit Attributes(std::string folder)
        : fFolder(std::move(folder))
    {
    }

    const std::string& folder() const { return fFolder; }
    /// @param name of the file, relative to the folder, everywhere.
    std::string bytes(const std::string& name) const;
    std::string text(const std::string& name) const { return Cleaned(bytes(name)); }
    /// @return a decimal number; none for anything else.
    std::optional<uint64_t> number(const std::string& name) const;
    bool isOne(const std::string& name) const { return number(name) == 1; }

private:
    std::string fFolder;
};

}
