#include "MacTool.h"

#include "tests/support/HostFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory/VmStat.h>
#include <sysexits.h>

#include <sstream>

namespace {

TEST(VmStat, TellsWhatTheHostCountsInItsPages)
{
    HostFolder host;
    std::ostringstream out;
    EXPECT_EQ(WriteMemoryStatistics(host.tree(), 4096, out), 1);
    EXPECT_EQ(out.str(), "");
    host.add("proc/",
        { { "vmstat",
              "nr_free_pages 1000000\nnr_inactive_anon 3\nnr_active_anon 40\nnr_inactive_file 500\n"
              "nr_active_file 6000\npgpgin 81\npswpin 7\npgfault damaged\n" },
            { "meminfo",
                "MemTotal:       24684084 kB\nUnevictable:  400 kB\nSUnreclaim: 40 kB\nKernelStack:   16 kB\n"
                "PageTables: 8 kB\nZswap: 4 kB\n" } });
    EXPECT_EQ(WriteMemoryStatistics(host.tree(), 4096, out), 0);
    EXPECT_EQ(out.str(),
        "Mach Virtual Memory Statistics: (page size of 4096 bytes)\n"
        "Pages free:                             1000000.\n"
        "Pages active:                              6040.\n"
        "Pages inactive:                             503.\n"
        "Pages wired down:                           116.\n"
        "File-backed pages:                         6500.\n"
        "Anonymous pages:                             43.\n"
        "Pages occupied by compressor:                 1.\n"
        "Pageins:                                     20.\n"
        "Swapins:                                      7.\n");
}

TEST(VmStat, AnswersOnThisMachineOnce)
{
    EXPECT_THAT(RunMacTool("/usr/bin/vm_stat", {}).out, testing::HasSubstr("\nPages wired down: "));
    EXPECT_EQ(RunMacTool("/usr/bin/vm_stat", { "5" }).status, EX_USAGE);
}

}
