#include "HostApplications/DesktopEntry.h"

#include <HostApplications/HostApplication.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// Programs and menus in a folder of their own.
class ApplicationTest : public testing::Test {
protected:
    ApplicationTest()
    {
        std::string name = fs::temp_directory_path() / "zek-applications-XXXXXX";
        fFolder = mkdtemp(name.data());
        setenv("XDG_DATA_HOME", (fFolder / "data").c_str(), 1);
        setenv("XDG_DATA_DIRS", (fFolder / "none").c_str(), 1);
        setenv("LC_ALL", "de_DE.UTF-8", 1);
    }
    ~ApplicationTest() override
    {
        unsetenv("LC_ALL");
        fs::remove_all(fFolder);
    }

    void write(const std::string& file, const std::string& text) const
    {
        fs::create_directories((fFolder / file).parent_path());
        std::ofstream(fFolder / file) << text;
    }

    /// The name of an application whose program is a file that does nothing for long.
    std::string nameWhileRunning(const std::string& file) const
    {
        const fs::path program = fFolder / file;
        fs::create_directories(program.parent_path());
        fs::copy_file("/bin/sleep", program, fs::copy_options::overwrite_existing);
        const pid_t child = fork();
        if (child == 0) {
            execl(program.c_str(), "sleep", "600", nullptr);
            _exit(1);
        }
        std::error_code error;
        while (fs::read_symlink("/proc/" + std::to_string(child) + "/exe", error) != program && !error)
            std::this_thread::yield(); // it is still this program
        std::string text(256, '\0');
        const CFStringRef name = HostApplicationName(child);
        if (name == nullptr || !CFStringGetCString(name, text.data(), 256, kCFStringEncodingUTF8))
            text = "null";
        if (name != nullptr)
            CFRelease(name);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        return text.substr(0, text.find('\0'));
    }

    fs::path fFolder {};
};

std::string Program(const std::string& command)
{
    const auto entry = ReadDesktopEntry("[Desktop Entry]\nName=N\nExec=" + command + "\n");
    return entry ? entry->program : "none";
}

}

TEST_F(ApplicationTest, BundlesTellTheirNameInTheUsersLanguage)
{
    EXPECT_EQ(nameWhileRunning("Plain Name.app/Contents/MacOS/program"), "Plain Name");
    write("Named.app/Contents/Info.plist",
        "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Own</string></dict></plist>");
    EXPECT_EQ(nameWhileRunning("Named.app/Contents/MacOS/program"), "Own");
    write(
        "Named.app/Contents/Resources/de.lproj/InfoPlist.strings", "\"CFBundleDisplayName\" = \"Eigener\";");
    EXPECT_EQ(nameWhileRunning("Named.app/Contents/MacOS/program"), "Eigener");
}

TEST_F(ApplicationTest, MenusTellTheNamesOfOtherPrograms)
{
    write("data/applications/vendor/one.desktop",
        "[Desktop Entry]\nName=Tool\nName[de]=Werkzeug\nName[fr]=Outil\nExec=\""
            + (fFolder / "bin/one").string()
            + "\" --new %U\n[Desktop Action x]\nName=Other\nExec=/bin/true\n");
    EXPECT_EQ(nameWhileRunning("bin/one"), "Werkzeug");
    EXPECT_EQ(nameWhileRunning("bin/two"), "null");
    EXPECT_EQ(nameWhileRunning("Other.app/Contents/Resources/helper"), "null");
    EXPECT_EQ(HostApplicationName(0), nullptr);
}

TEST(DesktopEntryTest, OnlyProgramsThatAreTheApplicationCount)
{
    EXPECT_EQ(Program("tool %F"), "tool");
    EXPECT_EQ(Program("\"/opt/a b/tool\" -x"), "/opt/a b/tool");
    for (const char* command : { "python3 /usr/share/thing.py", "env A=b tool", "", "\"", "%U" })
        EXPECT_EQ(Program(command), *command == '%' ? "%U" : "none") << command;
    EXPECT_FALSE(ReadDesktopEntry("Name=N\nExec=tool\n")
        || ReadDesktopEntry("[Desktop Entry]\nExec=tool\n=x\n[") || ReadDesktopEntry(std::string("\0", 1)));
}
