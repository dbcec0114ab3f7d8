#include "tests/inspect/Inspection.h"
#include "tools/inspect/Commands.h"
#include "tools/inspect/Output.h"

#include <IOKit/CurrentRegistry.h>
#include <gmock/gmock.h>

#include <sstream>

using testing::HasSubstr;

namespace {

const std::string kCapture = R"text(+-o Root  <class IORegistryEntry, id 0x100000100, retain 4>
  +-o Mac1,1  <class IOPlatformExpertDevice, id 0x100000101, registered, matched, active, busy 0 (0 ms), retain 4>
    +-o One  <class IOMedia, id 0x100000102, registered, matched, active, busy 0 (0 ms), retain 4>
    | | {
    | |   "BSD Name" = "disk0"
    | |   "zebra" = "a "quoted"\ text"
    | |   "array" = (1,<"b">,{"k"v"=No})
    | |   "firm" = <"pci1","pci2">
    | |   "bytes" = <00ff>
    | |   "none" = <>
    | |   "negative" = 18446744073709551615
    | | }
    | +-o Shared@1,2  <class Strange, id 0x100000103, registered, matched, active, busy 0 (0 ms), retain 4>
    |   +-o Below  <class Strange, id 0x100000104, registered, matched, active, busy 0 (0 ms), retain 4>
    +-o Two  <class IOCDMedia, id 0x100000105, registered, matched, active, busy 0 (0 ms), retain 4>
      +-o Shared@1,2  <class Strange, id 0x100000103, registered, matched, active, busy 0 (0 ms), retain 4>
)text";

class RegistryCommandTest : public InspectTest {
protected:
    RegistryCommandTest() { TestVolume::write(fCapture, kCapture); }

    std::vector<std::string> registry(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), { "registry", "--registry", fCapture });
        return arguments;
    }

    const std::string fCapture = fVolume.root() / "capture.txt";
};

}

TEST_F(RegistryCommandTest, IsATreeInATable)
{
    EXPECT_EQ(inspect(registry({})),
        "NAME                          CLASS                   ID           BSD NAME\n"
        "Root                          IORegistryEntry         0x100000100  -\n"
        "  Mac1,1                      IOPlatformExpertDevice  0x100000101  -\n"
        "    One                       IOMedia                 0x100000102  disk0\n"
        "      Shared@1,2              Strange                 0x100000103  -\n"
        "        Below                 Strange                 0x100000104  -\n"
        "    Two                       IOCDMedia               0x100000105  -\n"
        "      Shared@1,2 (see above)  Strange                 0x100000103  -\n");
    EXPECT_EQ(ask(registry({ "--json" }), "[(e['name'], e['level'], e['isAgain']) for e in found[4:]]"),
        "[('Below', 4, False), ('Two', 2, False), ('Shared@1,2', 3, True)]\n");
}

TEST_F(RegistryCommandTest, DescribesEntriesByClassAndName)
{
    EXPECT_EQ(inspect(registry({ "disk0" })),
        "Name      One\n"
        "Path      IOService:/One\n"
        "Class     IOMedia\n"
        "ID        0x100000102\n"
        "BSD name  disk0\n"
        "BSD Name  disk0\n"
        "array     [1,\"b\",{\"k\\\"v\":false}]\n"
        "bytes     00ff\n"
        "firm      pci1, pci2\n"
        "negative  -1\n"
        "none      \n"
        "zebra     a \"quoted\"\\ text\n");
    EXPECT_EQ(ask(registry({ "--json", "IOMedia", "Shared" }), "[(e['name'], e['path']) for e in found]"),
        "[('One', 'IOService:/One'), ('Shared@1,2', 'IOService:/One/Shared@1,2'), ('Two', "
        "'IOService:/Two')]\n")
        << "derived classes as well, and each entry once";
    EXPECT_EQ(ask(registry({ "--json", "One" }), "list(found[0]['properties'].items())"),
        "[('BSD Name', 'disk0'), ('array', [1, 'b', {'k\"v': False}]), ('bytes', '00ff'), ('firm', 'pci1, "
        "pci2'), "
        "('negative', -1), ('none', ''), ('zebra', 'a \"quoted\"\\\\ text')]\n");
    const Run missing = run(registry({ "Shared@1,2", "IOUSBDevice" }));
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.out, HasSubstr("Shared@1,2"));
    EXPECT_EQ(
        missing.error, "velmora-inspect: the registry has no entry of the class or the name IOUSBDevice\n");
}

TEST(RegistryCommand, IsShownHoweverDeepItIs)
{
    constexpr size_t depth = 100000;
    iokit::Registry registry;
    iokit::Entry* entry = &registry.root();
    for (size_t i = 0; i < depth; ++i)
        entry = &registry.add(*entry, "IOService", "Deep", "", nullptr);
    iokit::UseSource(std::make_unique<iokit::FixedSource>(std::move(registry)));
    const Findings tree = FindRegistryEntries({});
    ASSERT_EQ(tree.records.size(), depth + 1);
    EXPECT_EQ(Shown(tree.records.back().front()), std::string(64, ' ') + "(100000) Deep");
    const Findings found = FindRegistryEntries({ { "Deep" } });
    EXPECT_EQ(found.records.size(), depth);
    iokit::UseSource(std::make_unique<iokit::HostSource>());
}
