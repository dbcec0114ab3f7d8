#include "tests/inspect/Inspection.h"

#include "util/Launch.h"

#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* kRegistry
    = "+-o Root  <class IORegistryEntry, id 0x100000100, retain 4>\n"
      "  +-o Mac1,1  <class IOPlatformExpertDevice, id 0x100000101, retain 4>\n"
      "    | {\n"
      "    |   \"IOPlatformSerialNumber\" = \"C02\x1b[31m\"\n"
      "    |   \"model\" = <\"Mac1,1\">\n"
      "    | }\n"
      "    +-o options  <class IODTNVRAM, id 0x100000102, retain 4>\n"
      "    |   {\n"
      "    |     \"boot-device\" = \"/pci@1f/disk@0,0\"\n"
      "    |   }\n"
      "    +-o Controller  <class IOEthernetController, id 0x100000103, retain 4>\n"
      "      | {\n"
      "      |   \"IOMACAddress\" = <02fc00a0000b>\n"
      "      | }\n"
      "      +-o en0  <class IOEthernetInterface, id 0x100000104, retain 4>\n"
      "          {\n"
      "            \"IOPrimaryInterface\" = Yes\n"
      "          }\n";

std::string Profile(const std::string& hardware, const std::string& software)
{
    const auto part = [](const std::string& name, const std::string& item) {
        return "<dict><key>_dataType</key><string>" + name + "</string><key>_items</key><array><dict>" + item
            + "</dict></array></dict>";
    };
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><array><string>odd</string>"
        + part("SPHardwareDataType", hardware) + part("SPSoftwareDataType", software) + "</array></plist>";
}

class ComputerTest : public InspectTest {
protected:
    ComputerTest() { TestVolume::write(fFolder / "ioreg.txt", kRegistry); }

    std::string recorded(
        const std::string& command, const std::string& path, const std::string& question) const
    {
        return ask({ command, "--json", "--registry", path }, question);
    }

    const fs::path fFolder = fVolume.root() / "capture";
};

}

TEST_F(ComputerTest, OfARecordingIsNotMixedWithThisOne)
{
    EXPECT_EQ(recorded("system", fFolder / "ioreg.txt", "found"),
        "[{'serialNumber': 'C02\\x1b[31m', 'model': 'Mac1,1', 'primaryAddress': '02:fc:00:a0:00:0b'}]\n");
    EXPECT_EQ(recorded("boot", fFolder, "found"), "[{'bootPath': '/pci@1f/disk@0,0'}]\n");
    EXPECT_EQ(inspect({ "system", "--registry", fFolder }),
        "Serial number      C02?[31m\nModel              Mac1,1\nPrimary interface  02:fc:00:a0:00:0b\n");
}

TEST_F(ComputerTest, OfACapturedFolderIsAlsoWhatItsProfileTells)
{
    const fs::path profile = fFolder / "system_profiler.xml";
    const std::string question = "[v for k, v in found[0].items() if k not in ('serialNumber', 'model', "
                                 "'primaryAddress')]";
    TestVolume::write(profile,
        Profile("<key>physical_memory</key><string>16 GB</string>",
            "<key>os_version</key><string>Mac OS X 10.6.8 (10K549)</string><key>local_host_name</key>"
            "<string>Jane\u2019s</string><key>user_name</key><string>Jane (J) Doe (jane)</string>"));
    EXPECT_EQ(recorded("system", fFolder, question),
        "['Jane\u2019s', 'Jane (J) Doe', '16 GB', '10.6.8', '10K549']\n");
    TestVolume::write(profile,
        Profile("<key>physical_memory</key><array/>",
            "<key>os_version</key><string>)</string><key>user_name</key><dict/>"));
    EXPECT_EQ(recorded("system", fFolder, question), "[')']\n");

    fs::remove(profile);
    ASSERT_EQ(mkfifo(profile.c_str(), 0600), 0);
    const Run odd = run({ "system", "--registry", fFolder });
    EXPECT_EQ(odd.status, 1);
    EXPECT_EQ(odd.error, "velmora-inspect: " + fFolder.string() + ": system_profiler.xml cannot be read\n");
    EXPECT_NE(odd.out.find("Mac1,1"), std::string::npos) << "what the registry tells is shown";
}

TEST_F(ComputerTest, IsWhatOtherToolsSeeInThisOne)
{
    struct Peer {
        const char* key;
        const char* script;
    };
    for (const Peer& peer :
        { Peer { "l1InstructionCache", "lscpu -B -C=NAME,ONE-SIZE | awk '$1 == \"L1i\" { print $2 }'" },
            Peer { "l1DataCache", "lscpu -B -C=NAME,ONE-SIZE | awk '$1 == \"L1d\" { print $2 }'" },
            Peer { "l2Cache", "lscpu -B -C=NAME,ONE-SIZE | awk '$1 == \"L2\" { print $2 }'" },
            Peer { "l3Cache", "lscpu -B -C=NAME,ONE-SIZE | awk '$1 == \"L3\" { print $2 }'" },
            Peer { "memory", "free -b | awk '$1 == \"Mem:\" { print $2 }'" },
            Peer { "localHostName", "hostname -s | tr _ -" },
            Peer { "userName", "getent passwd $(id -u) | cut -d: -f5 | cut -d, -f1 | grep ." },
            Peer { "systemVersion", "echo 10.15.7" } }) {
        const std::string told = OutputOfProgram("/bin/sh", { "-c", peer.script }).value_or("");
        if (!told.empty()) {
            EXPECT_EQ(ask({ "system", "--json" }, "found[0].get('" + std::string(peer.key) + "')"), told)
                << peer.key;
        }
    }
    const std::string links = OutputOfProgram("/bin/sh", { "-c", "ip -o link" }).value_or("");
    const std::string address = ask({ "system", "--json" }, "found[0].get('primaryAddress', '')");
    EXPECT_TRUE(links.empty() || links.find(address.substr(0, address.size() - 1)) != std::string::npos)
        << address;
}

TEST_F(ComputerTest, StartsFromTheVolumeThatWasChosen)
{
    const fs::path bless = fVolume.root() / "usr/sbin/bless";
    fs::create_directories(bless.parent_path());
    TestVolume::write(bless,
        "#!/bin/sh\necho '<plist><dict><key>Boot "
        "Volume</key><string>/dev/disk99s2</string></dict></plist>'\n");
    fs::permissions(bless, fs::perms::owner_all);
    EXPECT_EQ(ask({ "boot", "--json" }, "found[0]['chosenName']"), "disk99s2\n");
    fs::permissions(bless, fs::perms::none);
    EXPECT_EQ(ask({ "boot", "--json" }, "[len(found), found[0].get('chosenName')]"), "[1, None]\n");
}
