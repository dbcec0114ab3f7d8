#include "MacTool.h"

#include "tests/support/TestVolume.h"

#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

constexpr const char* kTool = "/usr/bin/codesign";
constexpr const char* kApp = "/Applications/Sample.app";
constexpr const char* kSeal = "Contents/_CodeSignature/CodeResources";
constexpr const char* kInner = "Contents/PlugIns/Inner.bundle";
constexpr const char* kKit = "Contents/Frameworks/Kit.framework";
const std::string kBad = std::string(kApp) + ": a sealed resource is missing or invalid\n";
const std::string kUnsigned = std::string(kApp) + ": code object is not signed at all\n";

std::string InfoList(const std::string& name)
{
    return R"(<plist version="1.0"><dict><key>CFBundleIdentifier</key><string>org.example.)" + name
        + "</string><key>CFBundleExecutable</key><string>" + name + "</string></dict></plist>";
}

/// An app with a nested bundle and a framework, not signed yet.
class CodeSignTest : public testing::Test {
protected:
    CodeSignTest()
    {
        write("Contents/Info.plist", InfoList("Sample"));
        write("Contents/MacOS/Sample", "program");
        write("Contents/Resources/data.txt", "data");
        write("Contents/Resources/de.lproj/Localizable.strings", "texts");
        fs::create_symlink("data.txt", app / "Contents/Resources/link");
        write(std::string(kInner) + "/Contents/Info.plist", InfoList("Inner"));
        write(std::string(kInner) + "/Contents/MacOS/Inner", "program");
        write(std::string(kInner) + "/Contents/Resources/inner.txt", "inner");
        write(std::string(kKit) + "/Versions/A/Kit", "library");
        write(std::string(kKit) + "/Versions/A/Resources/Info.plist", InfoList("Kit"));
        write(std::string(kKit) + "/Versions/A/Resources/kit.txt", "kit");
        fs::create_symlink("A", app / kKit / "Versions/Current");
    }

    void write(const fs::path& relative, const std::string& text) const
    {
        TestVolume::write(app / relative, text);
    }

    void sign(const std::string& versions = "") const
    {
        const std::string command = SIGN_BUNDLE " '" + app.string() + "' " + versions;
        ASSERT_EQ(std::system(command.c_str()), 0);
    }

    /// Replaces text in the app's seal.
    void alterSeal(const std::string& from, const std::string& to) const
    {
        std::string seal = TestVolume::read(app / kSeal);
        const size_t place = seal.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        write(kSeal, seal.replace(place, from.size(), to));
    }

    static ToolRun verify(const std::string& option = "--verbose")
    {
        return RunMacTool(kTool, { "--verify", option, kApp });
    }

    const TestVolume volume;
    const fs::path app = volume.root() / (kApp + 1);
};

TEST_F(CodeSignTest, SignedBundleIsValid)
{
    sign();
    const ToolRun quiet = RunMacTool(kTool, { "--verify", kApp });
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(quiet.error, "");
    const std::string valid = std::string(kApp) + ": valid on disk\n";
    EXPECT_EQ(RunMacTool(kTool, { "-vv", "--deep", "--strict", std::string(kApp) + '/' }).error,
        std::string(kApp) + "/: valid on disk\n");
    EXPECT_EQ(verify("--verbose=2").error, valid);
    EXPECT_EQ(RunMacTool(kTool, { "-v", std::string(kApp) + "/Contents/MacOS/Sample" }).status, 0);
    // These are not the seal's, or need not be there.
    write("Contents/MacOS/Sample", "another program");
    write("Contents/Info.plist", InfoList("Sample") + " ");
    write("Contents/Resources/.DS_Store", "view");
    fs::remove_all(app / "Contents/Resources/de.lproj");
    EXPECT_EQ(verify().error, valid);
}

TEST_F(CodeSignTest, WhatWasChangedIsNamed)
{
    struct Change {
        std::function<void()> make;
        std::string detail; ///< below the contents folder
        std::string subcomponent;
    };
    const fs::path resources = app / "Contents/Resources";
    const std::string inner = std::string("PlugIns/Inner.bundle/Contents");
    const Change changes[] = {
        { [&] { write("Contents/Resources/data.txt", "dato"); }, "file modified: Resources/data.txt", "" },
        { [&] { write("Contents/Resources/new.txt", ""); }, "file added: Resources/new.txt", "" },
        { [&] { write("Contents/MacOS/helper", ""); }, "file added: MacOS/helper", "" },
        { [&] { write("Contents/Info.plist\n", ""); }, "file added: Info.plist\n", "" },
        { [&] { write("Contents/PlugIns/Other.bundle/Contents/Info.plist", ""); },
            "file added: PlugIns/Other.bundle", "" },
        { [&] { fs::remove(resources / "data.txt"); }, "file missing: Resources/data.txt", "" },
        { [&] { fs::remove_all(app / kInner); }, "file missing: PlugIns/Inner.bundle", "" },
        { [&] {
             fs::remove(resources / "link");
             fs::create_symlink("de.lproj", resources / "link");
         },
            "file modified: Resources/link", "" },
        { [&] {
             fs::rename(resources / "data.txt", volume.root() / "data.txt");
             fs::create_symlink(volume.root() / "data.txt", resources / "data.txt");
         },
            "file modified: Resources/data.txt", "" },
        { [&] {
             fs::rename(resources, volume.root() / "Resources");
             fs::create_directory_symlink(volume.root() / "Resources", resources);
         },
            "file added: Resources", "" },
        { [&] {
             fs::remove(resources / "data.txt");
             ASSERT_EQ(mkfifo((resources / "data.txt").c_str(), 0600), 0);
         },
            "file modified: Resources/data.txt", "" },
        { [&] { write(kInner + std::string("/Contents/Resources/inner.txt"), "outer"); },
            "file modified: " + inner + "/Resources/inner.txt", "PlugIns/Inner.bundle" },
        { [&] { write(kKit + std::string("/Versions/A/Resources/kit.txt"), "kid"); },
            "file modified: Frameworks/Kit.framework/Versions/A/Resources/kit.txt",
            "Frameworks/Kit.framework" },
    };
    const std::string contents = std::string(kApp) + "/Contents/";
    const fs::path original = volume.root() / "original";
    sign();
    fs::copy(app, original, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    for (const Change& change : changes) {
        change.make();
        std::string detail = change.detail;
        detail.insert(detail.find(": ") + 2, contents);
        const std::string subcomponent
            = change.subcomponent.empty() ? "" : "In subcomponent: " + contents + change.subcomponent + '\n';
        const ToolRun run = verify();
        EXPECT_EQ(run.status, 1) << detail;
        EXPECT_THAT(run.error, testing::StartsWith(kBad + subcomponent));
        EXPECT_THAT(run.error, HasSubstr(detail + '\n'));
        fs::remove_all(app);
        fs::copy(original, app, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    }
    EXPECT_EQ(verify().status, 0);
}

TEST_F(CodeSignTest, UnsignedNestedBundleMakesTheWholeInvalid)
{
    sign();
    fs::remove_all(app / kInner / "Contents/_CodeSignature");
    EXPECT_EQ(verify().error, kUnsigned + "In subcomponent: " + kApp + "/" + kInner + '\n');
}

TEST_F(CodeSignTest, OldSealsAndFlatBundlesAreReadAsWell)
{
    sign("1");
    EXPECT_EQ(verify().status, 0);
    write("Contents/Resources/data.txt", "dato");
    EXPECT_EQ(verify().status, 1);

    fs::remove_all(app);
    write("Info.plist", InfoList("Sample"));
    write("Sample", "program");
    write("data.txt", "data");
    sign();
    EXPECT_EQ(verify().error, std::string(kApp) + ": valid on disk\n");
    write("data.txt", "dato");
    EXPECT_EQ(verify().error, kBad + "file modified: " + kApp + "/data.txt\n");
}

TEST_F(CodeSignTest, StrictlyNothingLeadsOutOrLiesBesideTheContents)
{
    fs::create_symlink("../../../outside", app / "Contents/Resources/out");
    sign();
    EXPECT_EQ(verify().status, 0);
    EXPECT_EQ(
        verify("--strict").error, std::string(kApp) + ": invalid destination for symbolic link in bundle\n");
    fs::remove(app / "Contents/Resources/out");
    sign();
    EXPECT_EQ(verify("--strict").status, 0);
    write("beside", "");
    EXPECT_EQ(
        verify("--strict").error, std::string(kApp) + ": unsealed contents present in the bundle root\n");
}

TEST_F(CodeSignTest, WhatHasNoSealIsNotSigned)
{
    EXPECT_EQ(verify().error, kUnsigned);
    EXPECT_EQ(verify().status, 1);
    const std::string file = std::string(kApp) + "/Contents/Resources/data.txt";
    const ToolRun both = RunMacTool(kTool, { "-v", file, "/Applications/None.app" });
    EXPECT_EQ(both.status, 1);
    EXPECT_EQ(both.error,
        file + ": code object is not signed at all\n/Applications/None.app: No such file or directory\n");
}

TEST_F(CodeSignTest, DamagedSealsAreRefused)
{
    const std::string damaged
        = std::string(kApp) + ": invalid resource directory (directory or signature have been modified)\n";
    const fs::path seal = app / kSeal;
    sign();

    alterSeal("<key>rules2</key>", "<key>rules3</key>"); // falls back to those of version 1
    EXPECT_EQ(verify().status, 0);
    sign();
    alterSeal("<key>hash2</key>", "<key>hash3</key>"); // leaves SHA-1
    EXPECT_EQ(verify().status, 0);
    sign();
    alterSeal("<key>hash2</key>", "<key>hash2</key><data>AAAA</data><key>hash3</key>"); // is too short
    EXPECT_EQ(verify().error, damaged);
    sign();
    alterSeal("<string>data.txt</string>", "<integer>7</integer>");
    EXPECT_EQ(verify().error, damaged);
    sign();
    alterSeal("^(.*/)?", "^(.*/");
    EXPECT_EQ(verify().error, damaged);
    sign();
    alterSeal("^PkgInfo$", "^(([a-z]+)+)+:$"); // would try for ages
    const std::string slow = "Contents/" + std::string(60, 'a');
    write(slow, "");
    EXPECT_EQ(verify().error, damaged);

    fs::remove(app / slow);
    sign();
    const std::string whole = TestVolume::read(seal);
    for (const std::string& text : { std::string(), whole.substr(0, whole.size() / 2),
             std::string("<plist><array/></plist>"), std::string("<plist><dict/></plist>") }) {
        write(kSeal, text);
        EXPECT_EQ(verify().error, damaged);
    }
    fs::resize_file(seal, uintmax_t { 1 } << 40);
    EXPECT_EQ(verify().error, damaged);
    fs::remove(seal);
    ASSERT_EQ(mkfifo(seal.c_str(), 0600), 0);
    EXPECT_EQ(verify().error, damaged);
    fs::remove(seal);
    TestVolume::write(volume.root() / "seal", whole);
    fs::create_symlink(volume.root() / "seal", seal);
    EXPECT_EQ(verify().error, damaged);
}

TEST_F(CodeSignTest, NamesInASealLeadNowhere)
{
    TestVolume::write(volume.root() / "data.txt", "data");
    const std::string files = "<key>files2</key>\n\t<dict>";
    const std::string key = files + "<key>";
    const std::string item = "</key><dict><key>hash</key><data>oXyaqmHoChv3HQ2FCvTluqmAC70=</data></dict>";
    const std::string missing = kBad + "file missing: " + kApp + "/Contents/";
    for (const std::string name :
        { "../../../data.txt", "Resources/../Resources/data.txt", "/Resources/data.txt", "" }) {
        sign();
        alterSeal(files, std::string(key).append(name).append(item));
        EXPECT_EQ(verify().error, missing + name + "\n");
    }
}

TEST_F(CodeSignTest, BottomlessFoldersAreGivenUp)
{
    sign();
    fs::path deep = app / "Contents/Resources";
    for (int i = 0; i < 300; ++i)
        deep /= "d";
    fs::create_directories(deep);
    EXPECT_THAT(verify().error, HasSubstr("file unreadable: "));
}

TEST_F(CodeSignTest, DisplayTellsOfTheBundleAndItsSeal)
{
    EXPECT_EQ(RunMacTool(kTool, { "-d", kApp }).error, kUnsigned);
    sign();
    const ToolRun run = RunMacTool(kTool, { "-dvv", kApp });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.error,
        std::string("Executable=") + kApp
            + "/Contents/MacOS/Sample\nIdentifier=org.example.Sample\nFormat=app bundle\n"
            + "Info.plist=not bound\nSealed Resources version=2 rules=9 files=5\n");
}

TEST_F(CodeSignTest, WrongUseIsAnsweredWithUsage)
{
    const std::vector<std::string> wrong[] = { {}, { "--verify" }, { kApp }, { "-s", "-", kApp },
        { "--verify", "-d", kApp }, { "--verify", "--verbose=x", kApp }, { "--verify", "-R", "x", kApp } };
    for (const std::vector<std::string>& arguments : wrong) {
        const ToolRun run = RunMacTool(kTool, arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_THAT(run.error, testing::StartsWith("usage: codesign"));
    }
    EXPECT_EQ(RunMacTool(kTool, { "--help" }).status, 0);
}

}
