#include "tests/support/HostFolder.h"

#include <CoreFoundation/Runtime.h>
#include <CoreServices/CoreServices.h>
#include <Host/UserRecord.h>
#include <SystemConfiguration/ComputerNames.h>
#include <SystemConfiguration/SystemConfiguration.h>

#include <gtest/gtest.h>

namespace {

class NamesTest : public testing::Test {
protected:
    NamesTest() { sc::UseHost(fHost.tree()); }
    ~NamesTest() override { sc::UseHost(HostTree()); }

    void setHostName(const std::string& name)
    {
        fHost.add("proc/sys/kernel/", { { "hostname", name + '\n' } });
    }
    void setMachineInfo(const std::string& text) { fHost.add("etc/", { { "machine-info", text } }); }

    static std::string computerName()
    {
        return cf::TextOf(cf::Owned<CFStringRef>(SCDynamicStoreCopyComputerName(nullptr, nullptr)).get());
    }
    static std::string localHostName()
    {
        return cf::TextOf(cf::Owned<CFStringRef>(SCDynamicStoreCopyLocalHostName(nullptr)).get());
    }

    HostFolder fHost;
};

}

TEST_F(NamesTest, AComputerWithoutANameSaysSo)
{
    for (const char* const none : { "(none)", "", ".example.org" }) {
        setHostName(none);
        EXPECT_EQ(SCDynamicStoreCopyComputerName(nullptr, nullptr), nullptr) << none;
        EXPECT_EQ(SCError(), kSCStatusNoKey);
        EXPECT_EQ(SCDynamicStoreCopyLocalHostName(nullptr), nullptr) << none;
    }
    setHostName("desk");
    CFStringEncoding encoding = kCFStringEncodingInvalidId;
    const cf::Owned<CFStringRef> name(SCDynamicStoreCopyComputerName(nullptr, &encoding));
    EXPECT_EQ(cf::TextOf(name.get()), "desk");
    EXPECT_EQ(encoding, CFStringEncoding { kCFStringEncodingUTF8 });
    EXPECT_EQ(SCError(), kSCStatusOK);
}

TEST_F(NamesTest, UsersNameTheComputerInAnyWords)
{
    setHostName("desk-3.example.org");
    EXPECT_EQ(computerName(), "desk-3");
    const std::pair<const char*, const char*> lines[] {
        { "# of this computer\nICON_NAME=computer\nPRETTY_HOSTNAME=\"Ada\xe2\x80\x99s Desk\"\n",
            "Ada\xe2\x80\x99s Desk" },
        { R"(PRETTY_HOSTNAME="a \"b\" \$c \d")", R"(a "b" $c \d)" },
        { R"(PRETTY_HOSTNAME='a \"b\' )", R"(a \"b\)" },
        { R"(PRETTY_HOSTNAME=Desk\ 3" of"' Ada')", "Desk 3 of Ada" },
        { "PRETTY_HOSTNAME=\"Desk", "Desk" },
        { "PRETTY_HOSTNAME=\\", "\\" },
        { "PRETTY_HOSTNAME=first\nPRETTY_HOSTNAME=second\n", "second" },
        { "PRETTY_HOSTNAME=\"  \"\n", "desk-3" },
        { "#PRETTY_HOSTNAME=old\n", "desk-3" },
        { "PRETTY_HOSTNAME=\"\xff\"\n", "\xef\xbf\xbd" },
    };
    for (const auto& [line, name] : lines) {
        setMachineInfo(line);
        EXPECT_EQ(computerName(), name) << line;
    }
}

TEST_F(NamesTest, TheNetworkKnowsTheComputerByAHostsName)
{
    setMachineInfo("PRETTY_HOSTNAME=Another\n");
    const std::pair<std::string, std::string> names[] {
        { "Desk-3.example.org", "Desk-3" },
        { "ada's_old  desk", "adas-old-desk" },
        { "-_desk--3-_", "desk--3" },
        { "m\xc3\xbcsli", "m-sli" },
        { std::string(62, 'a') + "_b", std::string(62, 'a') },
        { std::string(64, 'a'), std::string(63, 'a') },
        { "___", "" },
    };
    for (const auto& [host, local] : names) {
        setHostName(host);
        EXPECT_EQ(localHostName(), local) << host;
    }
}

TEST(UserNameTest, TheDatabasesRemarksBeginWithTheFullName)
{
    EXPECT_EQ(FullUserName("Ada Lovelace,Room 5,555-1234", "ada"), "Ada Lovelace");
    EXPECT_EQ(FullUserName("& Lovelace", "ada"), "Ada Lovelace");
    EXPECT_EQ(FullUserName("", "ada"), "ada");
    EXPECT_EQ(FullUserName(" ,Room 5", "ada"), "ada");
    EXPECT_EQ(FullUserName("&", ""), "");
    EXPECT_FALSE(RecordOfUser(0xFFFFFFFE));
}
