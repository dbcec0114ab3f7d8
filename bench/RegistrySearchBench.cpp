#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/Runtime.h>
#include <IOKit/CurrentRegistry.h>
#include <IOKit/IOKitLib.h>
#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>

namespace {

constexpr int kLevels = 20;
constexpr int kOtherProperties = 15; // as a Mac's drivers have

/// Twenty entries below each other, of which the first alone has what is looked for.
void UseChain()
{
    iokit::Registry registry;
    iokit::Entry* entry = &registry.root();
    for (int level = 0; level < kLevels; ++level) {
        cf::Owned<CFMutableDictionaryRef> properties(CFDictionaryCreateMutable(
            nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
        for (int i = 0; i < kOtherProperties; ++i) {
            const cf::Owned<CFStringRef> key(cf::MakeString("Property " + std::to_string(i)));
            CFDictionarySetValue(properties.get(), key.get(), kCFBooleanTrue);
        }
        if (level == 0)
            CFDictionarySetValue(properties.get(), CFSTR("Serial Number"), CFSTR("S1"));
        if (level + 1 == kLevels)
            CFDictionarySetValue(properties.get(), CFSTR("BSD Name"), CFSTR("disk0"));
        entry
            = &registry.add(*entry, "IOMedia", "Entry", "", cf::Owned<CFDictionaryRef>(properties.release()));
    }
    iokit::UseSource(std::make_unique<iokit::FixedSource>(std::move(registry)));
}

void Ours(benchmark::State& state)
{
    UseChain();
    const io_service_t media = IOServiceGetMatchingService(
        kIOMasterPortDefault, IOBSDNameMatching(kIOMasterPortDefault, 0, "disk0"));
    for (auto _ : state) {
        const cf::Owned<CFTypeRef> found(IORegistryEntrySearchCFProperty(media, kIOServicePlane,
            CFSTR("Serial Number"), nullptr, kIORegistryIterateRecursively | kIORegistryIterateParents));
        benchmark::DoNotOptimize(found.get());
    }
    IOObjectRelease(media);
}

/// The least that such a search can be: maps that know the map above.
void Peer(benchmark::State& state)
{
    struct Level {
        std::unordered_map<std::string, int> properties;
        const Level* above;
    };
    std::vector<Level> levels(kLevels);
    for (size_t level = 0; level < levels.size(); ++level) {
        levels[level].above = level > 0 ? &levels[level - 1] : nullptr;
        for (int i = 0; i < kOtherProperties; ++i)
            levels[level].properties["Property " + std::to_string(i)] = 1;
    }
    levels[0].properties["Serial Number"] = 1;
    const std::string key = "Serial Number";
    for (auto _ : state) {
        const Level* level = &levels.back();
        while (level != nullptr && level->properties.find(key) == level->properties.end())
            level = level->above;
        benchmark::DoNotOptimize(level);
    }
}

}

BENCHMARK(Ours)->Name("search a property up 20 levels/ours");
BENCHMARK(Peer)->Name("search a property up 20 levels/std::unordered_map");
