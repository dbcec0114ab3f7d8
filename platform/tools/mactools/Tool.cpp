#include "Tool.h"

#include <algorithm>
#include <array>
#include <iostream>

namespace {

/// By name. CMakeLists.txt makes the links.
constexpr std::array<Tool, 0> kTools {};

}

const Tool* ToolNamed(const std::string& name)
{
    const auto* const tool
        = std::find_if(kTools.begin(), kTools.end(), [&name](const Tool& one) { return one.name == name; });
    return tool != kTools.end() ? tool : nullptr;
}

int Complain(const char* tool, const std::string& text)
{
    std::cerr << tool << ": " << text << '\n';
    return 1;
}
