#include <IOKit/Recording.h>

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <plist/plist.h>
#include <registry/RegistryArchive.h>
#include <sstream>
#include <string>

namespace {

/// The recording that is read: what REGISTRY_CAPTURE names, else the largest of those beside the project. @return "" for none.
std::string CaptureText()
{
    const char* const named = std::getenv("REGISTRY_CAPTURE");
    const std::string file = named != nullptr ? named : CAPTURES "/macbookair-apfs.ioreg.txt";
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}

std::string ArchiveOf(const std::string& text)
{
    const std::optional<iokit::Recording> recording = iokit::ReadRecording(text);
    RegistryView view;
    view.allProperties = true;
    std::ostringstream archive;
    if (recording)
        PrintRegistryArchive(archive, recording->registry, view);
    return archive.str();
}

const std::string& Capture(bool isArchive)
{
    static const std::string text = CaptureText();
    static const std::string archive = ArchiveOf(text);
    return isArchive ? archive : text;
}

bool HasCapture(benchmark::State& state)
{
    if (Capture(true).empty())
        state.SkipWithError("no recording: REGISTRY_CAPTURE is to name one");
    return !Capture(true).empty();
}

size_t UsedMemory() { return mallinfo2().uordblks; }

void ReadCapture(benchmark::State& state, bool isArchive)
{
    if (!HasCapture(state))
        return;
    const std::string& text = Capture(isArchive);
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(iokit::ReadRecording(text));
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
    const size_t before = UsedMemory();
    const std::optional<iokit::Recording> recording = iokit::ReadRecording(text);
    const size_t used = UsedMemory() - before;
    state.counters["bytes_per_entry"]
        = static_cast<double>(used) / static_cast<double>(recording->registry.entries().size());
}

void ReadPeer(benchmark::State& state)
{
    if (!HasCapture(state))
        return;
    const std::string& text = Capture(true);
    for ([[maybe_unused]] auto tick : state) {
        plist_t list = nullptr;
        plist_from_memory(text.data(), static_cast<uint32_t>(text.size()), &list);
        benchmark::DoNotOptimize(list);
        plist_free(list);
    }
}

/// Disks below each other and side by side, with the properties that they have. @return about 350 KB for each time.
std::string Disks(int times)
{
    std::ostringstream text;
    text << "+-o Root  <class IORegistryEntry, id 0x100000100, retain 2>\n";
    for (int i = 0; i < 1000 * times; ++i) {
        const std::string bars(static_cast<size_t>(2 + 2 * (i % 8)), ' ');
        text << bars << "+-o Disk@" << i << "  <class IOMedia, id 0x2" << i
             << ", registered, matched, active, busy 0 (12 ms), retain 7>\n"
             << bars << "    {\n"
             << bars << "      \"BSD Name\" = \"disk" << i << "\"\n"
             << bars << "      \"Size\" = 251000193024\n"
             << bars << "      \"Ejectable\" = No\n"
             << bars << "      \"Statistics\" = {\"Bytes\"=4096,\"Errors\"=0,\"Name\"=\"disk" << i
             << "\",\"Parts\"=(1,2,3,<0a0b0c0d>)}\n"
             << bars << "    }\n"
             << bars << "    \n";
    }
    return text.str();
}

void ReadAtOnce(benchmark::State& state, int times)
{
    const std::string text = Disks(times);
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(iokit::ReadRecording(text));
}

void ReadInParts(benchmark::State& state, int times)
{
    const std::string text = Disks(1);
    for ([[maybe_unused]] auto tick : state) {
        for (int i = 0; i < times; ++i)
            benchmark::DoNotOptimize(iokit::ReadRecording(text));
    }
}

}

BENCHMARK_CAPTURE(ReadCapture, text, false)->Name("read registry text/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(ReadPeer)->Name("read registry text/libplist, as XML")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadCapture, archive, true)->Name("read registry XML/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(ReadPeer)->Name("read registry XML/libplist")->Unit(benchmark::kMillisecond);

// As long as it takes as much time as there is to read, both take the same.
BENCHMARK_CAPTURE(ReadAtOnce, twice, 2)->Name("read 2,000 disks/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadInParts, twice, 2)
    ->Name("read 2,000 disks/1,000 at a time")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadAtOnce, four, 4)->Name("read 4,000 disks/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadInParts, four, 4)
    ->Name("read 4,000 disks/1,000 at a time")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadAtOnce, eight, 8)->Name("read 8,000 disks/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadInParts, eight, 8)
    ->Name("read 8,000 disks/1,000 at a time")
    ->Unit(benchmark::kMillisecond);
