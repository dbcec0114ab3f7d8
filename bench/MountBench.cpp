// Mounting and unmounting a volume, beside the disk service's own tool; and what waiting for a slow disk costs. Takes the
// superuser and loop devices; without them nothing is measured.

#include "tests/DiskArbitration/DiskSystem.h"
#include "tests/DiskArbitration/Requests.h"
#include "util/VolumeOperations.h"

#include <IOKit/CurrentRegistry.h>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <sys/resource.h>

namespace {

double ProcessorMilliseconds()
{
    rusage usage {};
    getrusage(RUSAGE_THREAD, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3
        + static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

/// A mount that is answered after two seconds, by a service in place of the host's.
class SlowMount : public Requests {
public:
    void TestBody() override
    {
        const MessageBus bus(socket);
        DiskService service(bus.address(), objects());
        mountDisk("disk0s1");
        service.take(std::chrono::seconds(2));
        const double before = ProcessorMilliseconds();
        mountDisk("disk0s1");
        std::fprintf(stderr, "a mount that takes 2 s: %.2f ms of the processor's time\n",
            ProcessorMilliseconds() - before);
    }
};

void Ours(benchmark::State& state, const std::string& name)
{
    for (auto _ : state) {
        if (!MountVolume(name.c_str(), true) || !UnmountVolume(name.c_str(), false, nullptr))
            state.SkipWithError("the volume was not mounted or unmounted");
    }
}

void Tool(benchmark::State& state, const std::string& device)
{
    const std::string command = "udisksctl mount -b " + device + " && udisksctl unmount -b " + device;
    for (auto _ : state) {
        if (RunCommand(command) != 0)
            state.SkipWithError("the volume was not mounted or unmounted");
    }
}

}

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    SlowMount().TestBody();
    iokit::UseSource(std::make_unique<iokit::HostSource>());
    da::UseHost(HostTree());
    DiskSystem system;
    const std::string device = system.problem().empty() ? system.attach("mkfs.ext4 -q $image") : "";
    const std::string name = DiskSystem::bsdName(device);
    if (name.empty()) {
        std::fprintf(stderr, "Mounting is not measured. %s\n", system.problem().c_str());
        std::puts("{\"benchmarks\": []}");
        return 0;
    }
    benchmark::RegisterBenchmark("mount and unmount/ours", Ours, name)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("mount and unmount/udisksctl", Tool, device)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
