#include "Tool.h"

#include "codesign/CodeSign.h"
#include "kext/KextCache.h"
#include "kext/KextStat.h"
#include "kext/Vsdbutil.h"
#include "power/Pmset.h"
#include "profile/SystemProfiler.h"
#include "registry/Diskutil.h"
#include "registry/Ioreg.h"

#include <algorithm>
#include <array>
#include <iostream>

namespace {

/// By name. CMakeLists.txt makes the links.
constexpr auto kTools = std::to_array<Tool>({
    { "codesign", CodeSign },
    { "diskutil", Diskutil },
    { "ioreg", Ioreg },
    { "kextcache", KextCache },
    { "kextstat", KextStat },
    { "pmset", Pmset },
    { "system_profiler", SystemProfiler },
    { "vsdbutil", Vsdbutil },
});

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
