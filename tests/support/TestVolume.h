#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

/// A start-up volume with a home folder in a temporary folder of its own, named by the environment of this
/// process while the object lives; removed with everything in it at the end. In it lies an installer's bundle
/// that counts as this process's main bundle.
class TestVolume {
public:
    TestVolume();
    ~TestVolume();
    TestVolume(const TestVolume&) = delete;
    TestVolume& operator=(const TestVolume&) = delete;

    std::filesystem::path root() const; ///< the start-up volume's folder
    std::filesystem::path home() const;
    std::filesystem::path installer() const; ///< the installer's bundle
    std::filesystem::path resources() const; ///< of the installer
    std::filesystem::path support() const; ///< the agent's support folder
    std::filesystem::path agent() const; ///< the installed agent
    std::filesystem::path launchAgent() const; ///< the agent's property list
    std::filesystem::path extensions() const;
    std::filesystem::path trash() const; ///< where moved files lie, by name
    std::filesystem::path preferencesFile() const;

    /// Gives the installer this version and an agent of the same version to carry.
    TestVolume& makeInstaller(const std::string& version);
    /// Gives the installer a driver of this version to carry.
    TestVolume& carryDriver(const std::string& version);
    TestVolume& installAgent(const std::string& version);
    TestVolume& installDriver(
        const std::string& version, const std::string& name = "ZEKDockChargingSupport.kext");
    /// Makes moving anything to the Trash fail, for root as well.
    TestVolume& breakTrash();

    /// Puts a recorder into the place of a Mac's program or of the installer's privileged tool.
    TestVolume& recordTool(const std::string& macPath);
    TestVolume& recordDriverTool();
    /// How recorders were called so far: arguments one a line, each call ended by an empty line.
    std::string calls() const;
    /// The same, once as much has been recorded as is expected; callers start recorders without waiting for them.
    std::string callsOnce(const std::string& expected) const;

    /// The preferences domain as it is on the disk, each value in words; empty when there is no readable
    /// file.
    std::map<std::string, std::string> preferences() const;

    /// Whether a file holds a whole property list with a dictionary.
    static bool isPropertyList(const std::filesystem::path& file);
    static void write(const std::filesystem::path& file, const std::string& text);
    static std::string read(const std::filesystem::path& file);
    /// Writes a bundle with just these versions; "" leaves a version out.
    static void writeBundle(const std::filesystem::path& bundle, const std::string& shortVersion,
        const std::string& bundleVersion, const std::string& identifier = "com.zek.Velmora");

private:
    std::filesystem::path fFolder;
};

/// Runs `body` in a process of an ordinary user (65534) who owns nothing of the volume. Needs root.
/// @return what `body` answered; 255 when that user could not be become, -1 when the process crashed.
int AsStranger(const std::function<int()>& body);

/// Waits, at most ten seconds, until the condition holds. @return whether it does.
bool Eventually(const std::function<bool()>& condition);
