// velmora-inspect: shows what the utility library finds out. See UsageText().

#include "tools/inspect/Commands.h"
#include "tools/inspect/Output.h"
#include "util/Launch.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <iterator>

namespace {

enum ExitStatus { kFound, kNotFound, kUsage };

int WrongUse(const std::string& problem)
{
    std::cerr << "velmora-inspect: " << problem << "\n\n" << UsageText();
    return kUsage;
}

int Show(const Command& command, const std::vector<std::string>& operands, bool asJSON)
{
    const Findings findings = command.find(operands);
    if (asJSON && !WriteJSON(std::cout, findings.records)) {
        std::cerr << "velmora-inspect: a record is too long for JSON\n";
        return kNotFound;
    }
    if (!asJSON)
        (command.isTable ? WriteTable : WriteParagraphs)(std::cout, findings.records);
    for (const std::string& problem : findings.problems)
        std::cerr << "velmora-inspect: " << problem << '\n';
    std::cout.flush();
    if (!std::cout)
        std::perror("velmora-inspect: standard output");
    return std::cout && findings.problems.empty() ? kFound : kNotFound;
}

}

int main(int count, char** values)
{
    PutProcessInOrder();
    const std::vector<std::string> arguments(values + std::min(count, 1), values + count);
    const auto optionsEnd = std::find(arguments.begin(), arguments.end(), "--");
    const auto isOption
        = [](const std::string& argument) { return argument.size() > 1 && argument.front() == '-'; };
    std::vector<std::string> operands;
    std::remove_copy_if(arguments.begin(), optionsEnd, std::back_inserter(operands), isOption);
    operands.insert(
        operands.end(), optionsEnd != arguments.end() ? optionsEnd + 1 : optionsEnd, arguments.end());

    bool asJSON = false;
    for (auto option = std::find_if(arguments.begin(), optionsEnd, isOption); option != optionsEnd;
         option = std::find_if(option + 1, optionsEnd, isOption)) {
        if (*option == "--help")
            return std::cout << UsageText() << std::flush ? kFound : kNotFound;
        if (*option != "--json")
            return WrongUse("unknown option " + *option);
        asJSON = true;
    }
    if (operands.empty())
        return WrongUse("no command");
    const Command* const command = CommandNamed(operands.front());
    if (command == nullptr)
        return WrongUse("unknown command " + operands.front());
    operands.erase(operands.begin());
    return Show(*command, operands, asJSON);
}
