#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

/// What the command line asks for.
struct Options {
    enum class Command { windows, install, update, uninstall, status, help, version };

    Command command = Command::windows; ///< without arguments a person is to be asked
    bool acceptLicense = false; ///< stands for the Agree button
    bool driver = false; ///< accepts the offer to install or update the driver alone
    bool noUsageData = false; ///< stands for unticking the usage-data box
    std::chrono::seconds wait { 30 }; ///< how long the result may take to be seen on the disk
    bool json = false; ///< the report is JSON on standard output, and progress goes to standard error
};

/// Reads the arguments after the program's name.
/// @param error set to one line for the user when there is no result.
/// @return nothing for a command line that is not understood, or whose options do not go together.
std::optional<Options> ParseOptions(const std::vector<std::string>& arguments, std::string& error);

/// The text of --help.
std::string UsageText();
