#include <IOKit/UdevRecord.h>

#include <Host/HostText.h>
#include <IOKit/HostAttributes.h>

#include <charconv>
#include <sstream>

namespace iokit {

namespace {

/// Turns each "\x20" into what it stands for.
std::string Decoded(const std::string& text)
{
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char* const digits = text.data() + i + 2;
        const bool isEscape = text.compare(i, 2, "\\x") == 0 && i + 4 <= text.size()
            && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        plain += isEscape ? static_cast<char>(byte) : text[i];
        i += isEscape ? 3 : 0;
    }
    return plain;
}

}

UdevRecord::UdevRecord(const std::string& folder, const std::string& deviceNumbers)
{
    std::istringstream lines(HostText(folder + "/b" + deviceNumbers).value_or(""));
    for (std::string line; std::getline(lines, line);) {
        const size_t equals = line.find('=');
        if (line.starts_with("E:") && equals != std::string::npos)
            fValues[line.substr(2, equals - 2)] = line.substr(equals + 1);
    }
}

std::string UdevRecord::operator[](const std::string& name) const
{
    const auto place = fValues.find(name);
    if (place == fValues.end())
        return "";
    const bool isEncoded = name.ends_with("_ENC") || name.ends_with("_NAME");
    return Cleaned(isEncoded ? Decoded(place->second) : place->second);
}

}
