#include "Tool.h"

#include "boot/Bless.h"
#include "boot/Nvram.h"
#include "codesign/CodeSign.h"
#include "kext/KextCache.h"
#include "kext/KextStat.h"
#include "memory/VmStat.h"
#include "power/Pmset.h"
#include "profile/SystemProfiler.h"
#include "registry/Diskutil.h"
#include "registry/Ioreg.h"
#include "volume/HfsUtil.h"
#include "volume/Mdutil.h"
#include "volume/Newfs.h"
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
    { "bless", Bless },
    { "codesign", CodeSign },
    { "diskutil", Diskutil },
    { "hfs.util", HfsUtil },
    { "ioreg", Ioreg },
    { "kextcache", KextCache },
    { "kextstat", KextStat },
    { "mdutil", Mdutil },
    { "newfs_apfs", NewfsApfs },
    { "newfs_exfat", NewfsExfat },
    { "newfs_hfs", NewfsHfs },
    { "newfs_msdos", NewfsMsdos },
    { "nvram", Nvram },
    { "pmset", Pmset },
    { "system_profiler", SystemProfiler },
    { "vm_stat", VmStat },
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
