#include "bench/AllocationCounter.h"
#include "util/StringConversions.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <ctime>

namespace {

using Buffer = std::array<char, 64>;

template <class Write> void Measure(benchmark::State& state, const Write& write)
{
    Buffer buffer {};
    uint32_t value = 700000000;
    const size_t before = AllocationCount();
    for ([[maybe_unused]] auto tick : state) {
        write(value += 1001, buffer);
        benchmark::DoNotOptimize(buffer.data());
    }
    state.counters["allocations"]
        = static_cast<double>(AllocationCount() - before) / static_cast<double>(state.iterations());
}

void SizeOurs(benchmark::State& state)
{
    Measure(state, [](uint32_t value, Buffer& buffer) {
        ConvertUInt64ToSizeString(uint64_t { value } * 50, buffer.data(), buffer.size());
    });
}

void SizePeer(benchmark::State& state)
{
    Measure(state, [](uint32_t value, Buffer& buffer) {
        std::snprintf(
            buffer.data(), buffer.size(), "%#4.1f %s", static_cast<double>(value) * 50 / (1 << 30), "GB");
    });
}

void SizeRead(benchmark::State& state)
{
    uint64_t bytes = 0;
    Measure(state, [&bytes](uint32_t, Buffer&) { ConvertSizeStringToUInt64("512GB", &bytes); });
}

void SizeReadPeer(benchmark::State& state)
{
    unsigned long long bytes = 0;
    Measure(state, [&bytes](uint32_t, Buffer&) {
        char unit = 0;
        // NOLINTNEXTLINE(cert-err34-c): the peer is what is in use elsewhere
        std::sscanf("512GB", "%llu%cB", &bytes, &unit);
    });
}

template <void (*Convert)(uint32_t, char*, size_t)> void DateOurs(benchmark::State& state)
{
    Measure(state, [](uint32_t value, Buffer& buffer) { Convert(value, buffer.data(), buffer.size()); });
}

void DatePeer(benchmark::State& state)
{
    Measure(state, [](uint32_t value, Buffer& buffer) {
        const time_t at = time_t { value } + 978307200;
        tm local {};
        localtime_r(&at, &local);
        std::strftime(buffer.data(), buffer.size(), "%x, %X", &local);
    });
}

}

BENCHMARK(SizeOurs)->Name("size as text/ours");
BENCHMARK(SizePeer)->Name("size as text/snprintf");
BENCHMARK(SizeRead)->Name("text as size/ours");
BENCHMARK(SizeReadPeer)->Name("text as size/sscanf");
BENCHMARK(DateOurs<ConvertAbsoluteSecondsToMediumDateString>)->Name("date as text, medium/ours");
BENCHMARK(DatePeer)->Name("date as text, medium/strftime");
BENCHMARK(DateOurs<ConvertAbsoluteSecondsToShortDateString>)->Name("date as text, short/ours");
BENCHMARK(DatePeer)->Name("date as text, short/strftime");
