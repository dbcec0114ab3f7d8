#include "app/unattended/Options.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace {

using Command = Options::Command;

struct CommandName {
    const char* name;
    Command command;
};
constexpr CommandName kUnattendedCommands[]
    = { { "install", Command::install }, { "update", Command::update }, { "uninstall", Command::uninstall } };
constexpr CommandName kPlainCommands[]
    = { { "--status", Command::status }, { "--help", Command::help }, { "--version", Command::version } };

struct Flag {
    const char* name;
    bool Options::*field;
};
constexpr Flag kFlags[] = {
    { "--accept-license", &Options::acceptLicense },
    { "--driver", &Options::driver },
    { "--no-usage-data", &Options::noUsageData },
    { "--json", &Options::json },
};

template <class Table> auto Find(const Table& table, const std::string& name)
{
    return std::find_if(
        std::begin(table), std::end(table), [&name](const auto& row) { return row.name == name; });
}

/// Every option goes with every operation, so that one set serves a script for all of them. What changes
/// nothing only reports.
bool GoesWith(const std::string& option, Command command)
{
    const bool operation
        = command == Command::install || command == Command::update || command == Command::uninstall;
    return operation || (command == Command::status && option == "--json");
}

using Argument = std::vector<std::string>::const_iterator;

/// Reads the command at the front of the arguments and steps over it.
std::optional<Command> ParseCommand(Argument& next, Argument end, std::string& error)
{
    if (next == end)
        return Command::windows;
    if (const auto* const plain = Find(kPlainCommands, *next); plain != std::end(kPlainCommands)) {
        ++next;
        return plain->command;
    }
    if (*next != "--unattended") {
        error = "unknown argument: " + *next;
        return std::nullopt;
    }
    if (++next == end) {
        error = "--unattended needs install, update or uninstall";
        return std::nullopt;
    }
    const auto* const named = Find(kUnattendedCommands, *next);
    if (named == std::end(kUnattendedCommands)) {
        error = "--unattended cannot do this: " + *next;
        return std::nullopt;
    }
    ++next;
    return named->command;
}

/// Reads the seconds after --wait and steps over them.
bool ParseWait(Argument& next, Argument end, Options& options, std::string& error)
{
    constexpr int kLongest = 3600;
    int seconds = -1;
    if (next != end) {
        const char* const last = next->data() + next->size();
        const auto [rest, problem] = std::from_chars(next->data(), last, seconds);
        if (problem != std::errc() || rest != last)
            seconds = -1;
        ++next;
    }
    if (seconds < 0 || seconds > kLongest) {
        error = "--wait needs a number of seconds, at most " + std::to_string(kLongest);
        return false;
    }
    options.wait = std::chrono::seconds(seconds);
    return true;
}

/// Reads one option, with its value where it has one, and steps over it.
bool ParseOption(Argument& next, Argument end, Options& options, std::string& error)
{
    const std::string& name = *next++;
    const bool isWait = name == "--wait";
    const auto* const flag = Find(kFlags, name);
    if (!isWait && flag == std::end(kFlags)) {
        error = "unknown argument: " + name;
        return false;
    }
    if (!GoesWith(name, options.command)) {
        error = name + " does not go with what was asked for";
        return false;
    }
    if (isWait)
        return ParseWait(next, end, options, error);
    options.*flag->field = true;
    return true;
}

}

std::optional<Options> ParseOptions(const std::vector<std::string>& arguments, std::string& error)
{
    auto next = arguments.begin();
    const std::optional<Command> command = ParseCommand(next, arguments.end(), error);
    if (!command)
        return std::nullopt;
    Options options;
    options.command = *command;
    while (next != arguments.end()) {
        if (!ParseOption(next, arguments.end(), options, error))
            return std::nullopt;
    }
    return options;
}

std::string UsageText()
{
    return R"(usage: zek-velmora-installer
       zek-velmora-installer --unattended install|update|uninstall [--accept-license] [--driver]
                             [--no-usage-data] [--wait SECONDS] [--json]
       zek-velmora-installer --status [--json]
       zek-velmora-installer --help | --version

Without arguments it opens its windows.

install          bring the agent, and with it the driver, to the version that this installer carries
update           the same, but only where an agent is installed
uninstall        move the agent to the Trash, remove the driver and the settings
--accept-license accept the license agreement
--driver         install or update the driver also when the agent is current
--no-usage-data  never send usage data
--wait SECONDS   how long the result may take to be seen on the disk, 30 unless told
--json           report as JSON on standard output, progress on standard error
--status         tell what is installed

exit status: 0 done, 1 failed, 2 usage, 3 done and a restart is needed, 4 license not accepted,
             5 administrator rights refused, 6 nothing to do, 7 done but the result is not seen on disk
)";
}
