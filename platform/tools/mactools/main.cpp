// Does what the Mac's tool does whose name it is called by, or which is its first argument.

#include "Tool.h"

#include <iostream>

namespace {

std::string LastComponent(const std::string& path) { return path.substr(path.rfind('/') + 1); }

int Run(const Tool& tool, const Arguments& arguments)
{
    const int status = tool.run(arguments);
    std::cout.flush();
    return std::cout || status != 0 ? status : Complain(tool.name, "the answer could not be written");
}

}

int main(int count, char** values)
{
    Arguments arguments(values, values + count);
    for (int attempt = 0; attempt < 2 && !arguments.empty(); ++attempt) {
        const Tool* const tool = ToolNamed(LastComponent(arguments.front()));
        arguments.erase(arguments.begin());
        if (tool == nullptr)
            continue;
        try {
            return Run(*tool, arguments);
        } catch (const std::exception& error) {
            return Complain(tool->name, error.what());
        }
    }
    return Complain("mactools", "call it by the name of one of the Mac's tools");
}
