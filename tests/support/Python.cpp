#include "tests/support/Python.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

std::string PythonOfPropertyList(const std::string& list, const std::string& script)
{
    const TemporaryFolder folder;
    WriteText(folder / "list", list);
    WriteText(folder / "script", "import plistlib\np = plistlib.load(open('list', 'rb'))\n" + script);
    const std::string command = "cd '" + folder.path() + "' && /usr/bin/python3 script > answer 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return ReadText(folder / "answer");
}
