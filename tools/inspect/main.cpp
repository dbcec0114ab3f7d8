// velmora-inspect: shows what the utility library finds out. See UsageText().

#include "tools/inspect/CaptureFolder.h"
#include "tools/inspect/CommandLine.h"
#include "tools/inspect/Output.h"
#include "util/Launch.h"

#include <HostRecordings/RecordedRegistry.h>
#include <algorithm>
#include <cstdio>
#include <iostream>

namespace {

void Complain(const std::string& problem) { std::cerr << "velmora-inspect: " << Printable(problem) << '\n'; }

ExitStatus WrongUse(const std::string& problem)
{
    Complain(problem);
    std::cerr << '\n' << UsageText();
    return kUsage;
}

/// @return false where it cannot be used.
bool UseCapture(const std::string& path)
{
    size_t unreadable = 0;
    const std::string problem = HostUseRecordedRegistry(path, &unreadable);
    if (!problem.empty())
        Complain(path + ": " + problem);
    else if (unreadable > 0)
        Complain(path + ": " + std::to_string(unreadable)
            + (unreadable == 1 ? " place could not be read" : " places could not be read"));
    return problem.empty();
}

ExitStatus Show(const Command& command, const Request& request)
{
    Findings findings = command.find(request);
    if (!request.asJSON)
        (findings.isTable ? WriteTable : WriteParagraphs)(std::cout, findings.records);
    else if (!WriteJSON(std::cout, findings.records))
        findings.problems.emplace_back("what is too long for JSON is left out");
    std::for_each(findings.problems.begin(), findings.problems.end(), Complain);
    std::cout.flush();
    if (!std::cout)
        std::perror("velmora-inspect: standard output");
    return std::cout && findings.problems.empty() ? kFound : kNotFound;
}

}

int main(int count, char** values)
{
    PutProcessInOrder();
    const CommandLine line = ParseCommandLine({ values + std::min(count, 1), values + count });
    if (line.wantsHelp)
        return std::cout << UsageText() << std::flush ? kFound : kNotFound;
    if (!line.problem.empty())
        return WrongUse(line.problem);
    if (line.request.capture && !UseCapture(RecordedRegistryAt(*line.request.capture)))
        return kNotFound;
    return line.request.interval ? line.command->watch(line.request) : Show(*line.command, line.request);
}
