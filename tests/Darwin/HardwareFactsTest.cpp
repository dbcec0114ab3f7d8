#include "HardwareFacts.h"

#include "tests/support/HostFolder.h"

#include <sys/sysctl.h>

#include <gtest/gtest.h>

#include <array>
#include <cerrno>

namespace {

const std::string kProcessors = "sys/devices/system/cpu/";

void AddCache(
    HostFolder& host, const std::string& name, const char* level, const char* type, const char* size)
{
    host.add(kProcessors + name + '/', { { "level", level }, { "type", type }, { "size", size } });
}

TEST(HardwareFactsTest, CachesAreTheFirstProcessors)
{
    HostFolder host;
    EXPECT_FALSE(CacheSize(host.tree(), 1, "Data")) << "nobody tells";
    host.add(
        kProcessors, { { "cpu0/online", "0\n" }, { "cpufreq/policy0", "" } }); // no caches while it is off
    AddCache(host, "cpu10/cache/index0", "1\n", "Data\n", "128K\n");
    AddCache(host, "cpu4/cache/index0", "1\n", "Data\n", "48K\n");
    AddCache(host, "cpu4/cache/index1", "1\n", "Instruction\n", "64K\n");
    AddCache(host, "cpu4/cache/index2", "2\n", "Unified\n", "\n");
    AddCache(host, "cpu4/cache/index3", "3\n", "Unified\n", "491520K\n");
    EXPECT_EQ(CacheSize(host.tree(), 1, "Data"), 49152U);
    EXPECT_EQ(CacheSize(host.tree(), 1, "Instruction"), 65536U);
    EXPECT_FALSE(CacheSize(host.tree(), 2, "Data")) << "there, but of no size that anybody knows";
    EXPECT_EQ(CacheSize(host.tree(), 3, "Data"), 503316480U);
    AddCache(host, "cpu1/cache/index0", "1\n", "Unified\n", "2M\n");
    EXPECT_EQ(CacheSize(host.tree(), 1, "Data"), 2097152U);
    EXPECT_EQ(CacheSize(host.tree(), 1, "Instruction"), 2097152U);
}

TEST(HardwareFactsTest, WhatDoesNotFitIsRefused)
{
    std::array<char, 16> machine {};
    machine.fill('-');
    size_t size = 2;
    EXPECT_EQ(sysctlbyname("hw.machine", machine.data(), &size, nullptr, 0), -1);
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(machine[2], '-');
    uint64_t memory = 0;
    size = sizeof memory;
    ASSERT_EQ(sysctlbyname("hw.memsize", &memory, &size, nullptr, 0), 0);
    if (memory <= INT32_MAX)
        GTEST_SKIP() << "fits all rooms";
    int32_t number = 0;
    size = sizeof number;
    EXPECT_EQ(sysctlbyname("hw.memsize", &number, &size, nullptr, 0), -1);
    EXPECT_EQ(errno, ERANGE);
}

}
