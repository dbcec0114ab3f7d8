// What exactly the library asks of DiskArbitration, whose requests are these instead.

#include "tests/DiskArbitration/Disks.h"
#include "util/CFText.h"
#include "util/VolumeOperations.h"

#include <functional>

namespace {

std::string requests; ///< that were made, and what was told of them
std::vector<std::function<void()>> answers; ///< not given yet
CFDictionaryRef refusal; ///< of all requests; null for none

/// Answers in the order of the requests, while the run loop runs.
CFRunLoopSourceRef Answering()
{
    static const CFRef<CFRunLoopSourceRef> source([] {
        CFRunLoopSourceContext context {};
        context.perform = [](void*) {
            const auto answer = answers.front();
            answers.erase(answers.begin());
            answer();
        };
        return CFRunLoopSourceCreate(nullptr, 0, &context);
    }());
    return source.get();
}

void Ask(DADiskRef disk, const std::string& what, DADiskMountCallback callback, void* context)
{
    requests += std::string(DADiskGetBSDName(disk)) + ' ' + what + '\n';
    answers.emplace_back([=] {
        requests += "answered\n";
        callback(disk, reinterpret_cast<DADissenterRef>(refusal), context);
    });
    CFRunLoopAddSource(CFRunLoopGetCurrent(), Answering(), kCFRunLoopDefaultMode);
    CFRunLoopSourceSignal(Answering());
}

}

void DADiskMount(
    DADiskRef disk, CFURLRef path, DADiskMountOptions options, DADiskMountCallback callback, void* context)
{
    DADiskMountWithArguments(disk, path, options, callback, context, nullptr);
}

void DADiskMountWithArguments(DADiskRef disk, CFURLRef path, DADiskMountOptions options,
    DADiskMountCallback callback, void* context, CFStringRef arguments[])
{
    std::string text = "mount " + std::to_string(options) + (path != nullptr ? " path" : "");
    for (; arguments != nullptr && *arguments != nullptr; ++arguments)
        text += ' ' + StdString(*arguments);
    Ask(disk, text, callback, context);
}

void DADiskUnmount(
    DADiskRef disk, DADiskUnmountOptions options, DADiskUnmountCallback callback, void* context)
{
    Ask(disk, "unmount " + std::to_string(options), callback, context);
}

void DADiskEject(DADiskRef disk, DADiskEjectOptions options, DADiskEjectCallback callback, void* context)
{
    Ask(disk, "eject " + std::to_string(options), callback, context);
}

void DADiskRename(DADiskRef disk, CFStringRef name, DADiskRenameOptions options,
    DADiskRenameCallback callback, void* context)
{
    Ask(disk, "rename " + std::to_string(options) + ' ' + StdString(name), callback, context);
}

namespace {

class VolumeRequestTest : public Disks {
protected:
    VolumeRequestTest()
    {
        usePartitions();
        mount("");
        startAnew();
    }

    /// What a call asks for. @param isDone what it has to answer.
    static std::string askedBy(const std::function<bool()>& call, bool isDone = true)
    {
        requests.clear();
        ::answers.clear();
        EXPECT_EQ(call(), isDone);
        return requests;
    }
    static std::string askedBy(MountUnmountRec record)
    {
        return askedBy([&record] { return MountUnmountVolumeWithRec(&record); });
    }

    ~VolumeRequestTest() override { refusal = nullptr; }
};

TEST_F(VolumeRequestTest, MountingIsAskedForTwiceAndTheFirstAnswerCounts)
{
    EXPECT_EQ(
        askedBy([] { return MountVolume("disk0s1", true); }), "disk0s1 mount 0\ndisk0s1 mount 0\nanswered\n");
    EXPECT_EQ(askedBy([] { return MountVolume("disk0s1", false); }),
        "disk0s1 mount 0\ndisk0s1 mount 0 perm nobrowse\nanswered\n");
    EXPECT_EQ(askedBy({ "disk0", 0, true, true, true, true }),
        "disk0 mount 0\ndisk0 mount 1 perm nobrowse\nanswered\n");
}

TEST_F(VolumeRequestTest, TheOthersAreAskedForOnce)
{
    EXPECT_EQ(
        askedBy([] { return UnmountVolume("disk0s1", false, nullptr); }), "disk0s1 unmount 0\nanswered\n");
    EXPECT_EQ(askedBy([] { return UnmountVolume("disk0s1", true, nullptr); }),
        "disk0s1 unmount 524288\nanswered\n");
    EXPECT_EQ(askedBy({ "disk0s2", 0, false, true, false, true }), "disk0s2 unmount 1\nanswered\n");
    EXPECT_EQ(askedBy({ "disk0s2", 0, false, false, true, true }), "disk0s2 unmount 524289\nanswered\n");
    EXPECT_EQ(askedBy([] { return EjectDisk("disk0", nullptr); }), "disk0 eject 0\nanswered\n");
    EXPECT_EQ(askedBy([] { return RenameVolume("disk0s1", "Näme"); }), "disk0s1 rename 0 Näme\nanswered\n");
}

TEST_F(VolumeRequestTest, OnlyAProcessIsARefusalThatCounts)
{
    const auto refuse = [](CFStringRef key, CFTypeRef value) {
        return CFRef<CFDictionaryRef>(CFDictionaryCreate(nullptr, reinterpret_cast<const void**>(&key),
            &value, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    };
    const int holder = 4711;
    const CFRef<CFNumberRef> number(CFNumberCreate(nullptr, kCFNumberIntType, &holder));
    const auto rename = [] { return RenameVolume("disk0s1", "x"); };
    const auto unmount = [] { return UnmountVolume("disk0s1", false, nullptr); };
    mount("21 1 8:1 / /volume rw - ext4 /dev/sda1 rw\n");
    const auto named = refuse(CFSTR("DAProcessID"), number.get());
    refusal = named.get();
    askedBy(rename, false);
    askedBy(unmount, false);
    askedBy([] { return MountVolume("disk0s1", true); }); // it is mounted
    askedBy([] { return MountVolume("disk0s2", true); }, false);
    askedBy([] { return UnmountVolume("disk0s2", true, nullptr); }); // it is not
    uint32_t process = 7;
    askedBy([&process] { return EjectDisk("disk0s2", &process); });
    EXPECT_EQ(process, 0U);
    MountUnmountRec whole { "disk0s2", 0, false, false, false, true };
    askedBy([&whole] { return MountUnmountVolumeWithRec(&whole); }, false); // nobody looks
    EXPECT_EQ(whole.dissenterProcessID, 4711U);
    MountUnmountRec mounting { "disk0s2", 7, true, false, false, false };
    askedBy([&mounting] { return MountUnmountVolumeWithRec(&mounting); }, false);
    EXPECT_EQ(mounting.dissenterProcessID, 0U) << "only who keeps a volume from going is told";

    const auto status = refuse(CFSTR("DAStatus"), number.get());
    refusal = status.get();
    askedBy(unmount);
    const auto text = refuse(CFSTR("DAProcessID"), CFSTR("4711"));
    refusal = text.get();
    askedBy(unmount);
}

TEST_F(VolumeRequestTest, NothingIsAskedForWhatIsNoDisk)
{
    uint32_t process = 7;
    for (const char* name : { "", "disk7", "../../x", static_cast<const char*>(nullptr) }) {
        EXPECT_EQ(askedBy([name] { return MountVolume(name, true); }, false)
                + askedBy([name, &process] { return UnmountVolume(name, true, &process); }, false)
                + askedBy([name, &process] { return EjectDisk(name, &process); }, false)
                + askedBy([name] { return RenameVolume(name, "x"); }, false),
            "");
    }
    EXPECT_EQ(process, 0U);
    EXPECT_EQ(askedBy([] { return RenameVolume("disk0s1", nullptr); }, false), "");
    EXPECT_FALSE(MountUnmountVolumeWithRec(nullptr));
}

}
