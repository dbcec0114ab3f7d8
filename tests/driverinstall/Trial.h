#pragma once

#include <filesystem>
#include <gmock/gmock.h>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

/// How a program ended: its exit status, or 128 plus its signal, and what it wrote to standard error.
struct Ended {
    int status = -1;
    std::string errors;
};

/// A program that was started and not yet waited for.
class Child {
public:
    using Environment = std::map<std::string, std::string>;

    /// @param command path and arguments.
    /// @param errors the file that receives standard error.
    /// @param user to run as; 0 for the same.
    Child(const std::vector<std::string>& command, const Environment& added, std::filesystem::path errors,
        uid_t user = 0);

    pid_t pid() const { return fProcess; }
    bool isRunning() const;
    /// What it wrote to standard error so far.
    std::string errors() const;
    Ended wait() const;

private:
    std::filesystem::path fErrors;
    pid_t fProcess = -1;
};

constexpr uid_t nobody = 65534; ///< a user who owns nothing here

/// Makes the folders on the way, too.
void WriteText(const std::filesystem::path& file, const std::string& text);

/// A temporary start-up volume, a folder of bundles to install from, and the real tool.
class Trial : public testing::Test {
protected:
    Trial();
    ~Trial() override;

    /// The bundle that most tests install.
    static constexpr const char* name = "Dock.kext";

    std::filesystem::path root;
    std::filesystem::path source; ///< what "sourcedirectory" names
    std::filesystem::path extensions; ///< the volume's Library/Extensions
    std::filesystem::path bundle; ///< source / name, version 2
    std::filesystem::path installed; ///< extensions / name, nothing there yet

    /// Starts the tool. @param prefix a program and its arguments to run it under.
    Child start(const std::vector<std::string>& arguments, const std::vector<std::string>& prefix = {},
        uid_t user = 0);
    Ended run(const std::vector<std::string>& arguments, const std::vector<std::string>& prefix = {},
        uid_t user = 0);
    Ended install() { return run(installArguments()); }
    Ended uninstall() { return run({ "uninstall", "drivername", name }); }
    std::vector<std::string> installArguments() const;

    /// What the folder of extensions holds, hidden names included.
    std::vector<std::string> entries() const;

    /// Writes a bundle with the modes that an installed one has.
    static void makeBundle(const std::filesystem::path& folder, const std::string& version);
    /// Every entry of a bundle with its kind, mode and the hash of its contents; empty without such a folder.
    static std::vector<std::string> snapshot(const std::filesystem::path& folder);
    /// The snapshot of an installed bundle of that version.
    std::vector<std::string> whole(const std::string& version);

private:
    int fRuns = 0;
};
