#include "util/CFRef.h"
#include "util/PropertyLists.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <plist/plist.h>
#include <string>
#include <unistd.h>

namespace {

/// A list as launch agents and preferences are: many small dictionaries with the same keys. @return the XML.
std::string SampleXML()
{
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<array>\n";
    for (int i = 0; i < 2000; ++i) {
        const std::string number = std::to_string(i);
        xml += "<dict><key>Label</key><string>com.example.job" + number;
        xml += "</string><key>Program</key><string>/Users/someone/Library/Application Support/Job " + number;
        xml += "/job</string><key>KeepAlive</key><true/><key>Interval</key><integer>" + number;
        xml += "</integer><key>Load</key><real>0.25</real><key>When</key><date>2024-05-06T07:08:09Z</date>"
               "<key>Arguments</key><array><string>one</string><string>zw\xC3\xB6lf</string></array>"
               "<key>Blob</key><data>AAECAwQFBgcICQ==</data></dict>\n";
    }
    return xml + "</array>\n</plist>\n";
}

struct PlistFree {
    void operator()(plist_t list) const { plist_free(list); }
};
using Plist = std::unique_ptr<void, PlistFree>;

Plist ReadWithPlist(const std::string& bytes)
{
    plist_t list = nullptr;
    plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &list);
    return Plist(list);
}

std::string WriteWithPlist(plist_t list, bool xml)
{
    char* bytes = nullptr;
    uint32_t size = 0;
    (xml ? plist_to_xml : plist_to_bin)(list, &bytes, &size);
    std::string text(bytes, size);
    (xml ? plist_to_xml_free : plist_to_bin_free)(bytes);
    return text;
}

const std::string& Sample(bool xml)
{
    static const std::string xmlText = SampleXML();
    static const std::string binary = WriteWithPlist(ReadWithPlist(xmlText).get(), false);
    return xml ? xmlText : binary;
}

CFRef<CFPropertyListRef> ReadWithCF(const std::string& bytes)
{
    const CFRef<CFDataRef> data(CFDataCreate(kCFAllocatorDefault,
        reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size())));
    return CFRef<CFPropertyListRef>(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
}

void ReadOurs(benchmark::State& state, bool xml)
{
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(ReadWithCF(Sample(xml)).get());
}

void ReadPeer(benchmark::State& state, bool xml)
{
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(ReadWithPlist(Sample(xml)).get());
}

void WriteOurs(benchmark::State& state, bool xml)
{
    const CFRef<CFPropertyListRef> list = ReadWithCF(Sample(xml));
    const CFPropertyListFormat format
        = xml ? kCFPropertyListXMLFormat_v1_0 : kCFPropertyListBinaryFormat_v1_0;
    for ([[maybe_unused]] auto tick : state) {
        const CFRef<CFDataRef> data(
            CFPropertyListCreateData(kCFAllocatorDefault, list.get(), format, 0, nullptr));
        benchmark::DoNotOptimize(data.get());
    }
}

/// A program that keeps its settings in structures of its own has to make the nodes before it can write them,
/// and so does ours; reading them is what makes them here.
void WritePeer(benchmark::State& state, bool xml)
{
    const Plist list = ReadWithPlist(Sample(xml));
    for ([[maybe_unused]] auto tick : state) {
        const Plist made(plist_copy(list.get()));
        benchmark::DoNotOptimize(WriteWithPlist(made.get(), xml).size());
    }
}

/// A file with the sample, removed at the end of the program.
class SampleFile {
public:
    explicit SampleFile(bool xml)
    {
        const int file = mkstemp(fName);
        const std::string& bytes = Sample(xml);
        if (write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            std::abort();
        close(file);
    }
    ~SampleFile() { unlink(fName); }
    const char* name() const { return fName; }

private:
    char fName[32] = "/tmp/zek-bench-list-XXXXXX";
};

void ReadFileOurs(benchmark::State& state, bool xml)
{
    const SampleFile file(xml);
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(CFRef(CreateCFArrayWithContentsOfFile(file.name())).get());
}

void ReadFilePeer(benchmark::State& state, bool xml)
{
    const SampleFile file(xml);
    for ([[maybe_unused]] auto tick : state) {
        std::ifstream stream(file.name(), std::ios::binary);
        const std::string bytes { std::istreambuf_iterator<char>(stream), {} };
        benchmark::DoNotOptimize(ReadWithPlist(bytes).get());
    }
}

}

BENCHMARK_CAPTURE(ReadFileOurs, xml, true)->Name("read XML file/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadFilePeer, xml, true)->Name("read XML file/libplist")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadFileOurs, binary, false)->Name("read binary file/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadFilePeer, binary, false)
    ->Name("read binary file/libplist")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadOurs, xml, true)->Name("read XML list/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadPeer, xml, true)->Name("read XML list/libplist")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadOurs, binary, false)->Name("read binary list/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadPeer, binary, false)->Name("read binary list/libplist")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WriteOurs, xml, true)->Name("write XML list/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WritePeer, xml, true)->Name("write XML list/libplist")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WriteOurs, binary, false)->Name("write binary list/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WritePeer, binary, false)
    ->Name("write binary list/libplist")
    ->Unit(benchmark::kMillisecond);
