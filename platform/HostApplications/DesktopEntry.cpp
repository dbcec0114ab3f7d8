#include "DesktopEntry.h"

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/Runtime.h>
#include <algorithm>
#include <sstream>

namespace {

constexpr const char* kGroup = "[Desktop Entry]";

/// The keys and values of the entry itself, without those of its actions.
std::map<std::string, std::string> ReadKeys(const std::string& text)
{
    std::map<std::string, std::string> keys;
    std::istringstream lines(text);
    bool isInGroup = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('['))
            isInGroup = line == kGroup;
        const size_t equals = line.find('=');
        if (!isInGroup || line.starts_with('#') || equals == std::string::npos || equals == 0)
            continue;
        const size_t keyEnd = line.find_last_not_of(" \t", equals - 1) + 1;
        const size_t value = std::min(line.find_first_not_of(" \t", equals + 1), line.size());
        keys.emplace(line.substr(0, keyEnd), line.substr(value));
    }
    return keys;
}

/// The program of a command whose other words are options and places for what the user opens; else "".
std::string ProgramOfCommand(const std::string& command)
{
    std::istringstream words(command);
    std::string program;
    if (command.starts_with('"')) {
        const size_t end = command.find('"', 1);
        program = command.substr(1, end == std::string::npos ? end : end - 1);
        words.str(end == std::string::npos ? "" : command.substr(end + 1));
    } else {
        words >> program;
    }
    for (std::string word; words >> word;) {
        if (!word.starts_with('%') && !word.starts_with('-'))
            return {};
    }
    return program;
}

}

std::string DesktopEntry::nameForUser() const
{
    const cf::Owned<CFMutableArrayRef> languages(
        CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (const auto& [language, name] : names) {
        // The name for any language is in English as a rule.
        const cf::Owned<CFStringRef> text(cf::MakeString(language.empty() ? "en" : language));
        if (text)
            CFArrayAppendValue(languages.get(), text.get());
    }
    const cf::Owned<CFArrayRef> fitting(CFBundleCopyPreferredLocalizationsFromArray(languages.get()));
    const std::string best = cf::Utf8(static_cast<CFStringRef>(CFArrayGetValueAtIndex(fitting.get(), 0)));
    const auto found = names.find(best);
    return found != names.end() ? found->second : names.begin()->second;
}

std::optional<DesktopEntry> ReadDesktopEntry(const std::string& text)
{
    const std::map<std::string, std::string> keys = ReadKeys(text);
    const auto command = keys.find("Exec");
    DesktopEntry entry;
    for (const auto& [key, value] : keys) {
        if (key == "Name")
            entry.names[""] = value;
        else if (key.starts_with("Name[") && key.ends_with(']'))
            entry.names[key.substr(5, key.size() - 6)] = value;
    }
    if (command != keys.end())
        entry.program = ProgramOfCommand(command->second);
    const auto name = entry.names.find("");
    if (entry.program.empty() || name == entry.names.end() || name->second.empty())
        return {};
    return entry;
}
