// Each test changes a whole system, so this program runs itself in one that is thrown away afterwards. ctest starts it
// anew for each test.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

int RunInPrivateSystem(char** argv)
{
    std::vector<char*> command { const_cast<char*>(PRIVATE_SYSTEM) };
    for (; *argv != nullptr; ++argv)
        command.push_back(*argv);
    command.push_back(nullptr);
    execv(PRIVATE_SYSTEM, command.data());
    std::perror(PRIVATE_SYSTEM);
    return 1;
}

}

int main(int argc, char** argv)
{
    const bool lists = std::find(argv, argv + argc, std::string_view("--gtest_list_tests")) != argv + argc;
    if (!lists && !std::filesystem::exists("/run/private-system"))
        return RunInPrivateSystem(argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
