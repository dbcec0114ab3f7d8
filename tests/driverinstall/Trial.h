#pragma once

#include <filesystem>
#include <gmock/gmock.h>
#include <string>
#include <sys/types.h>
#include <vector>

using Texts = std::vector<std::string>;

/// How a program ended: its exit status, or 128 plus its signal, and what it wrote to standard error.
struct Ended {
    int status = -1;
    std::string errors;
};

/// A program that was started and not yet waited for.
class Child {
public:
    /// @param command path and arguments. @param errors the file that receives standard error.
    Child(const Texts& command, std::filesystem::path errors);

    pid_t pid() const { return fProcess; }
    bool isRunning() const;
    /// What it wrote to standard error so far.
    std::string errors() const;
    Ended wait() const;

private:
    std::filesystem::path fErrors;
    pid_t fProcess = -1;
};

std::string ReadText(const std::filesystem::path& file);

/// Makes the folders on the way, too.
void WriteText(const std::filesystem::path& file, const std::string& text);

/// A temporary start-up volume, a folder of bundles to install from, and the real tool.
class Trial : public testing::Test {
protected:
    Trial();
    ~Trial() override;

    /// The bundle that most tests install.
    static constexpr const char* name = "Dock.kext";
    static constexpr uid_t nobody = 65534; ///< a user who owns nothing here

    std::filesystem::path root;
    std::filesystem::path source; ///< what "sourcedirectory" names
    std::filesystem::path extensions; ///< the volume's Library/Extensions
    std::filesystem::path bundle; ///< source / name, version 2
    std::filesystem::path installed; ///< extensions / name, nothing there yet

    /// Starts the tool. @param prefix a program and its arguments to run it under.
    Child start(const Texts& arguments, const Texts& prefix = {});
    Ended run(const Texts& arguments, const Texts& prefix = {}) { return start(arguments, prefix).wait(); }
    Ended install() { return run(installArguments); }
    Ended uninstall(const std::string& what = name) { return run({ "uninstall", "drivername", what }); }
    Texts installArguments;

    /// What the folder of extensions holds, hidden names included.
    Texts entries() const;

    /// Writes a bundle with the modes that an installed one has.
    static void makeBundle(const std::filesystem::path& folder, const std::string& version);
    /// A bundle and every entry in it with kind, mode, owner and the hash of its contents; empty without such
    /// a folder.
    static Texts snapshot(const std::filesystem::path& folder);
    /// The snapshot of an installed bundle of that version.
    Texts whole(const std::string& version);

private:
    int fRuns = 0;
};
