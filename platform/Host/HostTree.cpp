#include "HostTree.h"

#include "HostText.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

namespace {

constexpr size_t kMostNames = 8192; ///< of a folder; memory blocks are the most numerous

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

std::string HostTree::text(const std::string& name) const { return CleanLine(bytes(name)); }

std::optional<int64_t> HostTree::number(const std::string& name) const { return NumberIn(text(name)); }

std::vector<std::string> HostTree::names(const std::string& folder) const
{
    std::vector<std::string> found;
    std::error_code error;
    std::filesystem::directory_iterator entry(path(folder), error);
    for (; !error && entry != std::filesystem::end(entry) && found.size() < kMostNames;
         entry.increment(error))
        found.push_back(entry->path().filename());
    std::sort(found.begin(), found.end(), ComesBefore);
    return found;
}

std::string HostTree::resolved(const std::string& name) const
{
    std::error_code noRoot;
    std::error_code gone;
    const std::filesystem::path root = std::filesystem::canonical(fRoot, noRoot);
    const std::filesystem::path whole = std::filesystem::canonical(path(name), gone);
    const std::string inside = whole.lexically_relative(root);
    return noRoot || gone || inside.starts_with("..") ? "" : inside;
}

TextPairs HostTree::udev(const std::string& id) const { return UdevProperties(bytes("run/udev/data/" + id)); }

TextPairs UdevProperties(std::string_view record)
{
    TextPairs properties;
    for (const auto& [name, value] : PairsOf(record, '=')) {
        const bool isEncoded = name.ends_with("_ENC") || name.ends_with("_NAME");
        if (name.starts_with("E:"))
            properties.emplace(name.substr(2), isEncoded ? CleanLine(Unescaped(value)) : value);
    }
    return properties;
}
