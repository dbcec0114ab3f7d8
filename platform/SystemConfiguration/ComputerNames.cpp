#include "ComputerNames.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace {

constexpr size_t kLongestLabel = 63;

/// @param name a host's, as "desk.example.org".
std::string FirstLabel(const std::string& name) { return name.substr(0, name.find('.')); }

/// As the kernel has it, without the domain.
std::string HostName(const HostTree& host)
{
    const std::string name = host.text("proc/sys/kernel/hostname");
    return name == "(none)" ? "" : FirstLabel(name); // nobody has given one yet
}

/// Undoes the quoting of a shell's word: 'as it is', "with \" in it", with\ a\ blank.
std::string Unquoted(std::string_view word)
{
    constexpr std::string_view escapable = "\"\\$`"; // between double quotes
    std::string text;
    char quote = 0;
    for (size_t i = 0; i < word.size(); ++i) {
        const char next = i + 1 < word.size() ? word[i + 1] : 0;
        const bool isEscape = word[i] == '\\' && next != 0
            && (quote == 0 || (quote == '"' && escapable.find(next) != std::string_view::npos));
        if (isEscape)
            text += word[++i];
        else if (word[i] == quote)
            quote = 0;
        else if (quote == 0 && (word[i] == '"' || word[i] == '\''))
            quote = word[i];
        else
            text += word[i];
    }
    return text;
}

}

std::string sc::ComputerName(const HostTree& host)
{
    const TextPairs facts = PairsOf(host.bytes("etc/machine-info"), '=');
    const std::string name = CleanLine(Unquoted(ValueOf(facts, "PRETTY_HOSTNAME")));
    return name.empty() ? HostName(host) : name;
}

std::string sc::LocalHostName(const HostTree& host)
{
    std::string label;
    for (const char character : HostName(host)) {
        const auto code = static_cast<unsigned char>(character);
        const bool isPlain = code < 0x80 && std::isalnum(code) != 0;
        if (isPlain || (character == '-' && !label.empty()))
            label += character;
        else if (character != '\'' && !label.empty() && label.back() != '-')
            label += '-'; // one for all that cannot be in the name
    }
    label.resize(std::min(label.size(), kLongestLabel));
    label.erase(label.find_last_not_of('-') + 1);
    return label;
}
