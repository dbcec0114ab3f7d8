#include "tests/util/RecordedMac.h"
#include "tests/util/UtilityTest.h"
#include "util/VolumeOperations.h"

#include <cstring>
#include <sys/resource.h>

namespace {

/// Two disks' worth of names that the registry knows; recorders in the tools' places.
class VolumeToolTest : public UtilityTest, protected MacRecorder {
protected:
    VolumeToolTest()
    {
        record({ { "IOMedia", { R"("BSD Name" = "disk2")" } }, { "IOMedia", { R"("BSD Name" = "disk2s1")" } },
            { "IOMedia", { R"("BSD Name" = "disk2s11111111111111111111111")" } },
            { "IOEthernetInterface", { R"("BSD Name" = "en0")" }, 1 },
            { "IOMedia", { R"("BSD Name" = "../../x")" }, 1 },
            { "IOMedia", { R"("BSD Name" = "disk 2")" }, 1 } });
        for (const char* tool : kTools)
            fVolume.recordTool(tool);
    }

    static CreateFileSystemRec fileSystem(uint32_t type, const char* bsdName = "disk2s1")
    {
        CreateFileSystemRec made {};
        std::strncpy(made.bsdName, bsdName, sizeof made.bsdName - 1);
        std::strcpy(made.volumeName, "My Volume");
        made.fileSystemType = type;
        return made;
    }

    /// The calls of a function; "none" where nothing was run. @param answer what it has to answer.
    std::string callsOf(bool answer, const std::function<bool()>& function) const
    {
        std::filesystem::remove(fVolume.root() / "calls");
        EXPECT_EQ(function(), answer);
        const std::string calls = fVolume.calls();
        return calls.empty() ? "none" : calls.substr(0, calls.find("\n\n"));
    }
    std::string callsToCreate(bool answer, const CreateFileSystemRec& made) const
    {
        return callsOf(answer, [&made] { return CreateFileSystem(&made); });
    }

    static constexpr const char* kDiskutil = "/usr/sbin/diskutil";
    static constexpr const char* kMdutil = "/usr/bin/mdutil";
    static constexpr const char* kNewfsApfs = "/sbin/newfs_apfs";
    static constexpr const char* kTools[]
        = { kDiskutil, kMdutil, kNewfsApfs, "/sbin/newfs_hfs", "/sbin/newfs_msdos", "/sbin/newfs_exfat" };
};

TEST_F(VolumeToolTest, EachFileSystemHasItsToolAndItsWords)
{
    EXPECT_EQ(
        callsToCreate(true, fileSystem(kHFSPlusFileSystem)), "newfs_hfs\n-J\n-v\nMy Volume\n/dev/rdisk2s1");
    EXPECT_EQ(callsToCreate(true, fileSystem(kFAT32FileSystem)),
        "newfs_msdos\n-F\n32\n-v\nMy Volume\n/dev/rdisk2s1");
    EXPECT_EQ(callsToCreate(true, fileSystem(kExFATFileSystem)), "newfs_exfat\n-v\nMy Volume\ndisk2s1");
    EXPECT_EQ(callsToCreate(false, fileSystem(0)), "none");
    EXPECT_EQ(callsToCreate(false, fileSystem(5)), "none");
    EXPECT_EQ(callsOf(true, [] { return CreateAPFS_Container("disk2"); }), "newfs_apfs\n-C\ndisk2");

    CreateFileSystemRec made = fileSystem(kFAT32FileSystem, "disk2s11111111111111111111111");
    EXPECT_TRUE(callsToCreate(true, made).ends_with("\n/dev/rdisk2s1111111111111111111")) << "cut";
    std::memset(made.volumeName, 'x', sizeof made.volumeName); // without an end
    EXPECT_NE(callsToCreate(true, made).find('\n' + std::string(512, 'x') + '\n'), std::string::npos);
}

TEST_F(VolumeToolTest, AnAPFSVolumeGetsItsPassphraseAndAHintOnlyWithOne)
{
    const std::string plain = "diskutil\napfs\naddvolume\ndisk2s1\napfs\nMy Volume";
    CreateFileSystemRec made = fileSystem(kAPFSFileSystem);
    made.passphraseHint = "the usual";
    made.encrypt = true;
    EXPECT_EQ(callsToCreate(true, made), plain);
    std::strcpy(made.passphrase, "secret");
    EXPECT_EQ(callsToCreate(true, made), plain + "\n-passphrase\nsecret\n-passphraseHint\nthe usual");
    for (const char* none : { "", static_cast<const char*>(nullptr) }) {
        made.passphraseHint = none;
        EXPECT_EQ(callsToCreate(true, made), plain + "\n-passphrase\nsecret");
    }
    made.encrypt = false;
    EXPECT_EQ(callsToCreate(true, made), plain);
}

TEST_F(VolumeToolTest, NothingIsRunOnWhatIsNoDisk)
{
    for (const char* name : { "", "disk7", "en0", "../../x", "disk 2", "/dev/disk2", "disk2s1 " }) {
        EXPECT_EQ(callsToCreate(false, fileSystem(kExFATFileSystem, name)), "none") << name;
        EXPECT_EQ(callsOf(false, [name] { return CreateAPFS_Container(name); }), "none") << name;
    }
    CreateFileSystemRec made = fileSystem(kExFATFileSystem);
    std::memset(made.bsdName, '1', sizeof made.bsdName);
    EXPECT_EQ(callsToCreate(false, made), "none");
    EXPECT_FALSE(CreateFileSystem(nullptr) || CreateAPFS_Container(nullptr));
}

TEST_F(VolumeToolTest, WhatComesOfAFileSystemIsNotLookedAtButOfAContainer)
{
    const CreateFileSystemRec made = fileSystem(kExFATFileSystem);
    const std::string muchAndFailure = "yes | head -c 200000 || exit 3; exit 1";
    plant("/sbin/newfs_exfat", muchAndFailure);
    EXPECT_TRUE(CreateFileSystem(&made));
    spoil("/sbin/newfs_exfat");
    const pid_t self = getpid();
    EXPECT_TRUE(CreateFileSystem(&made));
    if (getpid() != self)
        _exit((TestVolume::write(path("copy"), ""), 0));
    EXPECT_FALSE(std::filesystem::exists(path("copy"))) << "no copy of this process comes back";

    plant(kNewfsApfs, "yes | head -c 200000 && exit 0");
    EXPECT_TRUE(CreateAPFS_Container("disk2"));
    for (const std::string& script : { muchAndFailure, std::string("kill -9 $$") }) {
        plant(kNewfsApfs, script);
        EXPECT_FALSE(CreateAPFS_Container("disk2"));
    }
    spoil(kNewfsApfs);
    EXPECT_EQ(answerOfCopy([] { return CreateAPFS_Container("disk2") ? 1 : 0; }), 1);
}

TEST_F(VolumeToolTest, AProcessThatCannotBeForkedEndsWhereItWouldHaveToWriteOnADisk)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to become a user with no processes to spare";
    const auto withoutProcesses = [](const std::function<bool()>& function) {
        return AsStranger([&function] {
            const rlimit none {};
            return setrlimit(RLIMIT_NPROC, &none) == 0 ? (function() ? 8 : 7) : 255;
        });
    };
    EXPECT_EQ(withoutProcesses([] {
        const CreateFileSystemRec made = fileSystem(kExFATFileSystem);
        return CreateFileSystem(&made);
    }),
        1);
    EXPECT_EQ(withoutProcesses([] { return CreateAPFS_Container("disk2"); }), 1);
    EXPECT_EQ(withoutProcesses([] { return EnableJournaling("disk2"); }), 7);
    EXPECT_EQ(withoutProcesses([] { return EnableIndexing("/"); }), 7);
}

TEST_F(VolumeToolTest, JournalsAndIndexesAreSwitchedByTheirTools)
{
    EXPECT_EQ(callsOf(true, [] { return EnableJournaling("/Volumes/My Disk"); }),
        "diskutil\nenableJournal\n/Volumes/My Disk");
    EXPECT_EQ(
        callsOf(true, [] { return DisableJournaling("disk2s1"); }), "diskutil\ndisableJournal\ndisk2s1");
    EXPECT_EQ(callsOf(true, [] { return EnableIndexing("/"); }), "mdutil\n-i\non\n/");
    EXPECT_EQ(callsOf(true, [] { return DisableIndexing("/"); }), "mdutil\n-i\noff\n/");
    EXPECT_EQ(callsOf(false, [] { return ReturnIndexingState("/"); }), "mdutil\n-s\n/");

    // What the tool still has to say when it was heard does not keep it.
    plant(kDiskutil, "echo first; sleep 0.1; echo second; yes | head -c 200000; touch " + path("done"));
    EXPECT_TRUE(EnableJournaling("disk2s1"));
    EXPECT_TRUE(std::filesystem::exists(path("done"))) << "the tool came to its end";
    plant(kDiskutil, "exit 2");
    EXPECT_FALSE(DisableJournaling("disk2s1"));
    spoil(kDiskutil);
    EXPECT_FALSE(EnableJournaling("disk2s1"));
    EXPECT_FALSE(EnableJournaling(nullptr) || DisableIndexing(nullptr) || ReturnIndexingState(nullptr));
}

TEST_F(VolumeToolTest, AnIndexIsThereWhereTheToolSaysSoAtOnceAndSucceeds)
{
    struct Answer {
        const char* script;
        bool isEnabled;
    };
    for (const Answer& answer :
        { Answer { "echo 'Indexing Enabled.'", true }, Answer { "echo 'Indexing enabled.'", false },
            Answer { "echo 'Indexing Enabled.'; exit 1", false }, Answer { "printf '%249sEnabled' x", true },
            Answer { "printf '%250sEnabled' x", false }, Answer { "kill -9 $$", false } }) {
        plant(kMdutil, answer.script);
        EXPECT_EQ(ReturnIndexingState("/"), answer.isEnabled) << answer.script;
    }
    if (geteuid() == 0) {
        plant(kMdutil, "test $(id -u) = 0");
        EXPECT_EQ(inChild([] { return seteuid(65534) == 0 && EnableIndexing("/") ? 7 : 0; }), 7) << "as root";
    }
    setenv("HOST_TOOLS_FOLDER", folder().c_str(), 1); // which has no such tool
    std::filesystem::remove(fVolume.root() / &kMdutil[1]);
    if (std::filesystem::exists(kMdutil))
        GTEST_SKIP() << "this system has the tool";
    EXPECT_FALSE(EnableIndexing("/") || ReturnIndexingState("/"));
}

}
