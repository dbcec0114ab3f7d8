#include "Tool.h"

#include "codesign/CodeSign.h"
#include "kext/KextCache.h"
#include "kext/KextStat.h"
#include "power/Pmset.h"
#include "profile/SystemProfiler.h"
#include "registry/Diskutil.h"
#include "registry/Ioreg.h"
#include "volume/Vsdbutil.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/Runtime.h>

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

bool AnswersHelp(const Arguments& arguments, const char* usage)
{
    const bool asks = arguments == Arguments { "--help" } || arguments == Arguments { "-help" }
        || arguments == Arguments { "-h" };
    if (asks)
        std::cout << usage;
    return asks;
}

int WritePropertyList(const char* tool, CFTypeRef list, std::ostream& out)
{
    const cf::Owned<CFDataRef> data(
        CFPropertyListCreateData(nullptr, list, kCFPropertyListXMLFormat_v1_0, 0, nullptr));
    if (!data)
        return Complain(tool, "the answer cannot be written as a property list");
    out.write(reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())), CFDataGetLength(data.get()));
    return 0;
}
