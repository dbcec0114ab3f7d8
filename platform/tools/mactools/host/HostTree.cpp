#include "host/HostTree.h"

#include <Host/HostText.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace {

constexpr size_t kMostNames = 8192; ///< of a folder; memory blocks are the most numerous
constexpr int64_t kLargestNumber = int64_t { 1 }
    << 48U; ///< a disk's sectors, with room to multiply by their size
constexpr std::string_view kBlanks(" \t\r\n\0", 5);

}

HostTree::HostTree(std::string root)
    : fRoot(std::move(root))
{
    if (!fRoot.ends_with('/'))
        fRoot += '/';
}

bool HostTree::has(const std::string& name) const { return access(path(name).c_str(), F_OK) == 0; }

std::string HostTree::bytes(const std::string& name, size_t limit) const
{
    return HostText(path(name), limit).value_or("");
}

std::string HostTree::text(const std::string& name) const { return Trimmed(bytes(name)); }

std::optional<int64_t> HostTree::number(const std::string& name) const { return NumberIn(text(name)); }

std::vector<std::string> HostTree::names(const std::string& folder) const
{
    std::vector<std::string> found;
    std::error_code error;
    std::filesystem::directory_iterator entry(path(folder), error);
    for (; !error && entry != std::filesystem::end(entry) && found.size() < kMostNames;
         entry.increment(error))
        found.push_back(entry->path().filename());
    std::sort(found.begin(), found.end(),
        [](const std::string& a, const std::string& b) { return strverscmp(a.c_str(), b.c_str()) < 0; });
    return found;
}

std::string HostTree::resolved(const std::string& name) const
{
    std::error_code error;
    const std::filesystem::path root = std::filesystem::canonical(fRoot, error);
    const std::filesystem::path whole = std::filesystem::canonical(path(name), error);
    const std::string inside = whole.lexically_relative(root);
    return error || inside.starts_with("..") ? "" : inside;
}

TextPairs HostTree::udev(const std::string& id) const
{
    TextPairs properties;
    for (auto& [name, value] : PairsOf(bytes("run/udev/data/" + id), '=')) {
        if (name.starts_with("E:"))
            properties.emplace(name.substr(2), value);
    }
    return properties;
}

TextPairs PairsOf(std::string_view text, char separator)
{
    TextPairs pairs;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (const size_t at = line.find(separator); at != std::string_view::npos)
            pairs[Trimmed(line.substr(0, at))] = Trimmed(line.substr(at + 1));
    }
    return pairs;
}

std::string ValueOf(const TextPairs& pairs, const std::string& name)
{
    const auto found = pairs.find(name);
    return found != pairs.end() ? found->second : "";
}

std::string Trimmed(std::string_view text)
{
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return "";
    return std::string(text.substr(first, text.find_last_not_of(kBlanks) + 1 - first));
}

std::string Unescaped(std::string_view text)
{
    std::string plain;
    while (!text.empty()) {
        const bool isHex = text.starts_with("\\x");
        const char* const code = text.data() + (isHex ? 2 : 1);
        unsigned char byte = 0;
        const bool isCode = text.size() > 3 && text[0] == '\\'
            && std::from_chars(code, text.data() + 4, byte, isHex ? 16 : 8).ptr == text.data() + 4;
        plain += isCode ? static_cast<char>(byte) : text[0];
        text.remove_prefix(isCode ? 4 : 1);
    }
    return plain;
}

std::optional<int64_t> NumberIn(std::string_view text)
{
    const bool isHex = text.starts_with("0x");
    text.remove_prefix(isHex ? 2 : 0);
    int64_t number = 0;
    const auto [end, error]
        = std::from_chars(text.data(), text.data() + text.size(), number, isHex ? 16 : 10);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && number >= -kLargestNumber && number <= kLargestNumber ? std::optional(number)
                                                                            : std::nullopt;
}
