#include "tools/inspect/Columns.h"
#include "tools/inspect/Commands.h"
#include "tools/inspect/Media.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

namespace {

constexpr std::array kColumns {
    Column { "name", "Name", 0 },
    Column { "size", "Size", 1 },
    Column { "bus", "Bus", 4 },
    Column { "mediaType", "Type", 3 },
    Column { "make", "Make", 8 },
    Column { "model", "Model", 2 },
    Column { "firmware", "Firmware", 11 },
    Column { "serialNumber", "Serial", 9 },
    Column { "location", "Location", 12 },
    Column { "partitionType", "Partitions", 5 },
    Column { "isTRIMSupported", "TRIM", 10 },
    Column { "volumePath", "Volume", 6 },
    Column { "label", "Label", 7 },
};

/// What partitions share with their drive.
constexpr std::array<std::string_view, 8> kOfDrive { "bus", "mediaType", "make", "model", "firmware",
    "serialNumber", "location", "isTRIMSupported" };

/// Whether the drive's own row tells it, or a label only repeats the model.
bool IsRepeated(const Field& cell, bool isPartition)
{
    return (isPartition && std::find(kOfDrive.begin(), kOfDrive.end(), cell.key) != kOfDrive.end())
        || (cell.key == "label" && IsLabelOfModel(cell.value));
}

Record RowOf(const Record& facts, bool isPartition)
{
    Record row = Row(facts, kColumns);
    for (Field& cell : row) {
        if (IsRepeated(cell, isPartition))
            cell = { cell.key, cell.title, std::string() };
    }
    return row;
}

}

Findings FindDisks(const Request& request)
{
    Findings findings;
    findings.isTable = request.operands.empty() && !request.asJSON;
    const std::set<std::string> wanted(request.operands.begin(), request.operands.end());
    std::set<std::string> missing = wanted;
    MediaFacts facts;
    for (const Medium& medium : AllMedia()) {
        missing.erase(medium.name);
        if (!wanted.empty() && !wanted.contains(medium.name))
            continue;
        const Record record = facts.describe(medium);
        findings.records.push_back(findings.isTable ? RowOf(record, medium.isPartition) : record);
    }
    if (findings.isTable)
        FitTerminal(findings.records, kColumns);
    for (const std::string& name : missing)
        findings.problems.push_back("no disk or partition has the name " + name);
    return findings;
}
