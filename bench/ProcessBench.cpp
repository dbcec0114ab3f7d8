#include "util/Launch.h"
#include "util/Processes.h"

#include <benchmark/benchmark.h>
#include <string>

// The peer is what a program does that has not this library: it runs the system's tool and reads what that says.

namespace {

/// Nobody has it, so that all have to be looked at.
constexpr const char* kName = "nonesuch";

void CountOurs(benchmark::State& state)
{
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(NumberOfProcessesWithName(kName));
}

void CountPeer(benchmark::State& state)
{
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(OutputOfProgram("/usr/bin/pgrep", { "-c", "-x", kName }));
}

void SearchOurs(benchmark::State& state)
{
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(Get_ProcessID(kName));
}

void SearchPeer(benchmark::State& state)
{
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(OutputOfProgram(
            "/bin/sh", { "-c", std::string("ps acxww | awk '$5 == \"") + kName + "\" { print $1; exit }'" }));
}

}

BENCHMARK(CountOurs)->Name("count processes by name/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(CountPeer)
    ->Name("count processes by name/pgrep -c -x")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(SearchOurs)->Name("find a process by name/ours")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(SearchPeer)
    ->Name("find a process by name/ps acxww | awk")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
