#include "tools/inspect/CommandLine.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace {

using Argument = std::vector<std::string>::const_iterator;

struct Option {
    enum Operand { None, Optional, Required };

    const char* name;
    Operand operand; ///< an optional one is given with "=" only
    bool (*isOf)(const Command& command);
    bool (*store)(const std::string& operand, Request& request); ///< false for one that does not fit
};

/// @param text digits with or without a fraction; "" for a second.
bool StoreInterval(const std::string& text, Request& request)
{
    constexpr double shortest = 0.01;
    constexpr double longest = 86400;
    if (text.find_first_not_of("0123456789.") != std::string::npos)
        return false;
    char* end = nullptr;
    const double seconds = text.empty() ? 1 : std::strtod(text.c_str(), &end);
    request.interval = Seconds(seconds);
    return (end == nullptr || *end == 0) && seconds >= shortest && seconds <= longest;
}

constexpr Option kOptions[] = {
    { "--json", Option::None, [](const Command&) { return true; },
        [](const std::string&, Request& request) { return request.asJSON = true; } },
    { "--registry", Option::Required, [](const Command& command) { return command.readsRegistry; },
        [](const std::string& path, Request& request) {
            request.capture = path;
            return !path.empty();
        } },
    { "--watch", Option::Optional, [](const Command& command) { return command.watch != nullptr; },
        StoreInterval },
};

bool IsOption(const std::string& argument) { return argument.size() > 1 && argument.front() == '-'; }

class Parser {
public:
    explicit Parser(const std::vector<std::string>& arguments)
        : fNext(arguments.begin())
        , fEnd(arguments.end())
    {
    }

    CommandLine parse()
    {
        while (fNext != fEnd && fLine.problem.empty() && !fLine.wantsHelp)
            parseArgument(*fNext++);
        if (fLine.problem.empty() && !fLine.wantsHelp)
            chooseCommand();
        return std::move(fLine);
    }

private:
    void parseArgument(const std::string& argument);
    void parseOption(const std::string& argument);
    void chooseCommand();

    Argument fNext;
    Argument fEnd;
    CommandLine fLine {};
    std::vector<const Option*> fUsed {};
};

void Parser::parseArgument(const std::string& argument)
{
    std::vector<std::string>& operands = fLine.request.operands;
    if (argument == "--help")
        fLine.wantsHelp = true;
    else if (argument == "--")
        operands.insert(operands.end(), std::exchange(fNext, fEnd), fEnd);
    else if (IsOption(argument))
        parseOption(argument);
    else
        operands.push_back(argument);
}

void Parser::parseOption(const std::string& argument)
{
    const size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const auto* const option = std::find_if(
        std::begin(kOptions), std::end(kOptions), [&name](const Option& one) { return one.name == name; });
    const bool hasOperand = equals != std::string::npos;
    if (option == std::end(kOptions) || (hasOperand && option->operand == Option::None)) {
        fLine.problem = "unknown option " + argument;
        return;
    }
    std::string operand = hasOperand ? argument.substr(equals + 1) : "";
    if (option->operand == Option::Required && !hasOperand && fNext != fEnd)
        operand = *fNext++;
    const bool isEmpty = hasOperand && operand.empty();
    if (isEmpty || !option->store(operand, fLine.request))
        fLine.problem = operand.empty() ? name + " needs a value" : name + " cannot be " + operand;
    fUsed.push_back(option);
}

void Parser::chooseCommand()
{
    std::vector<std::string>& operands = fLine.request.operands;
    const Command* const command = operands.empty() ? nullptr : CommandNamed(operands.front());
    if (command == nullptr) {
        fLine.problem = operands.empty() ? "no command" : "unknown command " + operands.front();
        return;
    }
    const auto foreign = std::find_if(
        fUsed.begin(), fUsed.end(), [command](const Option* one) { return !one->isOf(*command); });
    if (foreign != fUsed.end())
        fLine.problem = std::string(command->name) + " has no option " + (*foreign)->name;
    else if (fLine.request.capture && fLine.request.interval)
        fLine.problem = "there is nothing to watch in a recording, which does not change";
    operands.erase(operands.begin());
    if (operands.size() < command->fewestOperands)
        fLine.problem = std::string(command->name) + " needs an operand";
    else if (operands.size() > command->mostOperands)
        fLine.problem = std::string(command->name) + " has no use for " + operands[command->mostOperands];
    fLine.command = command;
}

}

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) { return Parser(arguments).parse(); }
