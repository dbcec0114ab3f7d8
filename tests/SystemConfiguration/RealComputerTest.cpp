// This computer, as the host's own tools tell of it.

#include "util/Launch.h"

#include <CoreFoundation/Runtime.h>
#include <CoreServices/CoreServices.h>
#include <IOKit/HostRegistry.h>
#include <SystemConfiguration/SystemConfiguration.h>
#include <sys/sysctl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <unistd.h>

namespace {

/// @return the lines of what the tool prints; none where there is no such tool.
std::vector<std::string> LinesOf(const std::string& tool, const std::vector<std::string>& arguments)
{
    std::istringstream output(OutputOfProgram(tool, arguments).value_or(""));
    std::vector<std::string> lines;
    for (std::string line; std::getline(output, line);)
        lines.push_back(line);
    return lines;
}

/// The word behind another one; "" where there is none.
std::string WordAfter(const std::string& before, const std::string& line)
{
    std::istringstream words(line);
    std::string word;
    while (words >> word && word != before) { }
    std::string next;
    words >> next;
    return next;
}

uint64_t Number(const char* name)
{
    uint64_t number = 0;
    size_t size = sizeof number;
    return sysctlbyname(name, &number, &size, nullptr, 0) == 0 ? number : 0;
}

/// @param name is released.
std::string TextOf(CFStringRef name) { return cf::TextOf(cf::Owned<CFStringRef>(name).get()); }

}

TEST(RealComputerTest, ThePrimaryInterfaceHasTheAddressThatIpShows)
{
    const std::vector<std::string> links = LinesOf("/sbin/ip", { "-oneline", "link" });
    if (links.empty())
        GTEST_SKIP() << "no ip";
    const iokit::Registry registry = iokit::ReadHostRegistry();
    size_t primary = 0;
    for (const iokit::Entry& entry : registry.entries()) {
        if (!entry.conformsTo("IOEthernetInterface"))
            continue;
        const std::string name = entry.name + ':';
        const auto link = std::find_if(links.begin(), links.end(),
            [&](const std::string& line) { return !WordAfter(name, line).empty(); });
        ASSERT_NE(link, links.end()) << name;
        const std::string own = WordAfter("permaddr", *link);
        std::string address = own.empty() ? WordAfter("link/ether", *link) : own;
        std::erase(address, ':');
        const auto* const data = static_cast<CFDataRef>(entry.parent()->property("IOMACAddress"));
        ASSERT_NE(data, nullptr);
        std::string bytes;
        for (CFIndex i = 0; i < CFDataGetLength(data); ++i) {
            constexpr const char* digits = "0123456789abcdef";
            bytes += { digits[CFDataGetBytePtr(data)[i] >> 4U], digits[CFDataGetBytePtr(data)[i] & 0xFU] };
        }
        EXPECT_EQ(bytes, address) << *link;
        primary += entry.property("IOPrimaryInterface") == kCFBooleanTrue ? 1 : 0;
    }
    EXPECT_LE(primary, 1U);
}

TEST(RealComputerTest, NamesAreThoseThatTheHostTells)
{
    const std::vector<std::string> name = LinesOf("/bin/hostname", {});
    if (name.empty())
        GTEST_SKIP() << "no hostname";
    EXPECT_EQ(TextOf(SCDynamicStoreCopyLocalHostName(nullptr)), name[0].substr(0, name[0].find('.')));
    EXPECT_NE(TextOf(SCDynamicStoreCopyComputerName(nullptr, nullptr)), "");
    const std::vector<std::string> user = LinesOf("/usr/bin/getent", { "passwd", std::to_string(getuid()) });
    if (user.empty())
        GTEST_SKIP() << "no getent, or a user whom nobody knows";
    std::istringstream fields(user[0]);
    std::vector<std::string> values;
    for (std::string field; std::getline(fields, field, ':');)
        values.push_back(field);
    EXPECT_EQ(TextOf(CSCopyUserName(1)), values.at(0));
    const std::string full = values.at(4).substr(0, values.at(4).find(','));
    EXPECT_EQ(TextOf(CSCopyUserName(0)), full.empty() ? values[0] : full);
}

TEST(RealComputerTest, MemoryAndCachesHaveTheSizesThatToolsShow)
{
    const std::vector<std::string> memory = LinesOf("/usr/bin/free", { "-b" });
    const std::vector<std::string> caches = LinesOf("/usr/bin/lscpu", { "-B", "--caches=NAME,ONE-SIZE" });
    if (memory.size() < 2 || caches.empty())
        GTEST_SKIP() << "no free, or no lscpu";
    EXPECT_EQ(std::to_string(Number("hw.memsize")), WordAfter("Mem:", memory[1]));
    const std::pair<const char*, const char*> names[] { { "L1i", "hw.l1icachesize" },
        { "L1d", "hw.l1dcachesize" }, { "L2", "hw.l2cachesize" }, { "L3", "hw.l3cachesize" } };
    for (const auto& [name, key] : names) {
        const auto line = std::find_if(caches.begin(), caches.end(),
            [cache = std::string(name) + ' '](const std::string& one) { return one.starts_with(cache); });
        const std::string size = line != caches.end() ? WordAfter(name, *line) : "0";
        EXPECT_EQ(std::to_string(Number(key)), size) << key;
    }
}
