// The package's own life: what it leaves as it is upgraded and goes.

#include "tests/integration/System.h"

#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace {

class PackageTest : public System {
protected:
    /// @return the names of all files where packages and users put theirs, but for the user's Trash, the package
    /// manager's own notes and what the test needs. The rest of the disk is everybody's.
    static std::string allFiles()
    {
        return asRoot(
            "find /etc /home /opt /srv /usr /var \\( -path /var/lib/dpkg -o -path /var/cache -o -path "
            "/var/log"
            " -o -path /etc/polkit-1/rules.d -o -path /home/tester/.local/share/Trash \\) -prune -o -print")
            .output;
    }

    static void expectSuccess(const std::string& command)
    {
        const CommandResult result = asRoot(command);
        EXPECT_EQ(result.status, 0) << command << '\n' << result.output;
    }

    /// The same package as of another version.
    static void makeUpgrade(const std::string& file)
    {
        expectSuccess("cd /tmp && dpkg-deb -R " PACKAGES_FOLDER "/zek-velmora-installer_*.deb new"
                      " && sed -i 's/^Version: .*/Version: 99/' new/DEBIAN/control && dpkg-deb -b new "
            + file);
    }
};

/// The lines that only the first text has.
std::vector<std::string> Difference(const std::string& one, const std::string& other)
{
    std::istringstream text(other);
    std::set<std::string> known;
    for (std::string line; std::getline(text, line);)
        known.insert(line);
    std::vector<std::string> lines;
    text = std::istringstream(one);
    for (std::string line; std::getline(text, line);) {
        if (!known.contains(line))
            lines.push_back(line);
    }
    return lines;
}

}

TEST_F(PackageTest, UpgradingKeepsTheDriverAndPurgingLeavesNothing)
{
    const std::string before = allFiles();
    expectSuccess("dpkg -i " PACKAGES_FOLDER "/zek-velmora-installer_*.deb");
    letPolkitAnswer("YES");
    startUserManager();
    EXPECT_EQ(asTester("zek-velmora-installer --unattended install --accept-license").status, 3);
    makeUpgrade("/tmp/upgrade.deb");
    expectSuccess("dpkg -i /tmp/upgrade.deb");
    EXPECT_TRUE(fs::exists(driver / "Contents/Info.plist"));
    EXPECT_EQ(asTester("zek-velmora-installer --unattended install").status, 6);

    EXPECT_EQ(asTester("zek-velmora-installer --unattended uninstall").status, 3);
    expectSuccess("'" + (bundle / "Contents/Resources/driverinstall").string()
        + "' install drivername ZEKDockChargingSupport.kext sourcedirectory '"
        + (bundle / "Contents/Resources").string() + "'");
    expectSuccess("dpkg --purge zek-velmora-installer");
    const std::string after = allFiles();
    EXPECT_THAT(Difference(after, before),
        testing::UnorderedElementsAre("/home/tester/.local", "/home/tester/.local/share"))
        << "where the Trash is";
    EXPECT_THAT(Difference(before, after), testing::IsEmpty()) << "taken away";
}
