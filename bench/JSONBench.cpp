#include "bench/AllocationCounter.h"
#include "util/CFRef.h"
#include "util/CFText.h"
#include "util/JSON.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <string>

namespace {

/// Rows as a list of processes or disks has them, about 900 KB of text.
constexpr int kRows = 6000;

nlohmann::json WideSample()
{
    nlohmann::json rows = nlohmann::json::array();
    for (int i = 0; i < kRows; ++i)
        rows.push_back({ { "pid", i }, { "name", "com.example.job" + std::to_string(i) }, { "user", "root" },
            { "isRunning", i % 2 == 0 }, { "load", 0.25 }, { "path", "/Library/Application Support/Job" },
            { "title", "zw\xC3\xB6lf" } });
    return rows;
}

nlohmann::json DeepSample(int levels)
{
    nlohmann::json value = nlohmann::json::array();
    for (int i = 1; i < levels; ++i)
        value = nlohmann::json::array({ std::move(value) });
    return value;
}

CFRef<CFTypeRef> ToCF(const nlohmann::json& value);

CFRef<CFTypeRef> ToArray(const nlohmann::json& values)
{
    const CFRef<CFMutableArrayRef> array(
        CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    for (const nlohmann::json& value : values)
        CFArrayAppendValue(array.get(), ToCF(value).get());
    return CFRef<CFTypeRef>::Retained(array.get());
}

CFRef<CFTypeRef> ToDictionary(const nlohmann::json& values)
{
    const CFRef<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    for (const auto& [key, value] : values.items())
        CFDictionarySetValue(dictionary.get(), CFText(key).get(), ToCF(value).get());
    return CFRef<CFTypeRef>::Retained(dictionary.get());
}

CFRef<CFTypeRef> ToCF(const nlohmann::json& value)
{
    if (value.is_array())
        return ToArray(value);
    if (value.is_object())
        return ToDictionary(value);
    if (value.is_string())
        return CFRef<CFTypeRef>(CFText(value.get_ref<const std::string&>()).release());
    if (value.is_boolean())
        return CFRef<CFTypeRef>::Retained(value.get<bool>() ? kCFBooleanTrue : kCFBooleanFalse);
    const auto whole = value.get<int64_t>();
    const auto real = value.get<double>();
    return CFRef<CFTypeRef>(value.is_number_float()
            ? CFNumberCreate(kCFAllocatorDefault, kCFNumberDoubleType, &real)
            : CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &whole));
}

void WriteOurs(benchmark::State& state, const nlohmann::json& sample)
{
    const CFRef<CFTypeRef> tree = ToCF(sample);
    const size_t before = AllocationCount();
    for ([[maybe_unused]] auto tick : state) {
        CFDataRef data = nullptr;
        if (!CreateJSON_DataFromArray(static_cast<CFArrayRef>(tree.get()), &data))
            state.SkipWithError("not written");
        CFRelease(data);
    }
    state.counters["allocations"]
        = static_cast<double>(AllocationCount() - before) / static_cast<double>(state.iterations());
}

void WritePeer(benchmark::State& state, const nlohmann::json& sample)
{
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(sample.dump().size());
}

}

#define DEEP(levels)                                                                                         \
    BENCHMARK_CAPTURE(WriteOurs, deep##levels, DeepSample(levels))                                           \
        ->Name("write JSON, " #levels " levels/ours")                                                        \
        ->Unit(benchmark::kMicrosecond);                                                                     \
    BENCHMARK_CAPTURE(WritePeer, deep##levels, DeepSample(levels))                                           \
        ->Name("write JSON, " #levels " levels/nlohmann-json")                                               \
        ->Unit(benchmark::kMicrosecond)

BENCHMARK_CAPTURE(WriteOurs, wide, WideSample())
    ->Name("write JSON, wide/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WritePeer, wide, WideSample())
    ->Name("write JSON, wide/nlohmann-json")
    ->Unit(benchmark::kMillisecond);
DEEP(10);
DEEP(100);
DEEP(1000);
DEEP(10000);
