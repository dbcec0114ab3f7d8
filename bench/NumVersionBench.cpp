#include "bench/AllocationCounter.h"
#include "settings/NumVersion.h"

#include <benchmark/benchmark.h>
#include <cstdio>

namespace {

constexpr const char* kTexts[] = { "1.0", "2.1.3", "10.15.2", "1.2b3", "1.2 d12", "99.15.15 b255" };

/// Counts what one round allocates; the frame around it may allocate what it likes.
template <class Round> void RunCounting(benchmark::State& state, Round round)
{
    const size_t before = AllocationCount();
    round();
    const size_t perRound = AllocationCount() - before;
    for ([[maybe_unused]] auto tick : state)
        round();
    state.counters["allocations"] = static_cast<double>(perRound);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(std::size(kTexts)));
}

void ParseOurs(benchmark::State& state)
{
    RunCounting(state, [] {
        uint32_t version = 0;
        for (const char* const text : kTexts)
            benchmark::DoNotOptimize(ConvertStringToNumVersion(text, &version));
    });
}

void ParsePeer(benchmark::State& state)
{
    RunCounting(state, [] {
        for (const char* const text : kTexts) {
            int major = 0, minor = 0, bugFix = 0, number = 0;
            char stage = 0;
            benchmark::DoNotOptimize( // NOLINTNEXTLINE(cert-err34-c): the peer is what is in use elsewhere
                std::sscanf(text, "%2d.%2d.%2d %c%3d", &major, &minor, &bugFix, &stage, &number));
        }
    });
}

constexpr uint32_t kWholes[] = { 0x01008000, 0x02138000, 0x10F28000, 0x01206003, 0x0120200C, 0x99FF60FF };

void FormatOurs(benchmark::State& state)
{
    RunCounting(state, [] {
        char text[16];
        for (const uint32_t whole : kWholes) {
            ConvertNumVersionToString(whole, text, sizeof text, true);
            benchmark::DoNotOptimize(text);
        }
    });
}

void FormatPeer(benchmark::State& state)
{
    RunCounting(state, [] {
        char text[16];
        for (const uint32_t whole : kWholes) {
            benchmark::DoNotOptimize(std::snprintf(text, sizeof text, "%x.%u.%u b%u", whole >> 24,
                whole >> 20 & 0xF, whole >> 16 & 0xF, whole & 0xFF));
        }
    });
}

}

BENCHMARK(ParseOurs)->Name("version text to number, 6 texts/ours");
BENCHMARK(ParsePeer)->Name("version text to number, 6 texts/sscanf");
BENCHMARK(FormatOurs)->Name("version number to text, 6 numbers/ours");
BENCHMARK(FormatPeer)->Name("version number to text, 6 numbers/snprintf");
