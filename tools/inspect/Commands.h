#pragma once

#include "tools/inspect/Record.h"
#include <chrono>
#include <optional>
#include <string>
#include <vector>

using Seconds = std::chrono::duration<double>;

/// What is asked of a command.
struct Request {
    std::vector<std::string> operands {};
    bool asJSON = false;
    std::optional<std::string>
        capture {}; ///< path of the recorded device registry that takes this computer's place, or of a folder with one
    std::optional<Seconds> interval {}; ///< to be watched: between two readings
};

/// What a command found.
struct Findings {
    std::vector<Record> records {};
    std::vector<std::string> problems {}; ///< a line each: what was asked for and is not there
    bool isTable = false; ///< for people: a table, else paragraphs
};

enum ExitStatus { kFound, kNotFound, kUsage };

struct Command {
    const char* name;
    const char* usage; ///< options and operands
    const char* help; ///< lines for --help, without a line end after the last
    size_t fewestOperands;
    size_t mostOperands;
    bool readsRegistry; ///< a recorded one can take this computer's place
    Findings (*find)(const Request& request);
    ExitStatus (*watch)(const Request& request); ///< null for what is not to be watched
};

/// @return null for an unknown name.
const Command* CommandNamed(const std::string& name);

/// The text of --help.
std::string UsageText();

/// The running processes, or those of these names.
Findings FindProcesses(const Request& request);

/// Files, folders, bundles and volumes by their paths; without any, the folders that every Mac has.
Findings FindFiles(const Request& request);

/// Disks and partitions, all of them in a table or those of these BSD names.
Findings FindDisks(const Request& request);

/// Writes what the whole disks, or those of these BSD names, do from reading to reading, until somebody ends it or nobody
/// reads the output any more.
ExitStatus WatchDisks(const Request& request);

/// The volumes that are mounted or could be, all of them in a table or those of these BSD names or paths.
Findings FindVolumes(const Request& request);

/// What the computer is: its names, memory, processor, primary network interface and system.
Findings DescribeComputer(const Request& request);

/// What the computer starts from.
Findings FindBootDevice(const Request& request);

/// Has the system's diagnostic tools write what they say into a folder, which becomes the current one. How it goes is told on
/// standard error, and nothing but JSON afterwards.
Findings CaptureComputer(const Request& request);

/// The entries of the device registry: the tree in a table, or those of these classes, BSD names or names with all of their
/// properties.
Findings FindRegistryEntries(const Request& request);
