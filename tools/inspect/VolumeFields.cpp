#include "tools/inspect/VolumeFields.h"

#include "util/SystemVersions.h"
#include "util/VolumeSpace.h"

#include <array>

void AddSystem(const char* path, bool isVolume, Record& record)
{
    std::array<char, 1024> version {};
    std::array<char, 1024> build {};
    if (isVolume)
        SystemVersionAndBuildNumber(path, version.data(), version.size(), build.data(), build.size());
    record.push_back({ "systemVersion", "System version", TextOrNone(version.data()) });
    record.push_back({ "systemBuild", "System build", TextOrNone(build.data()) });
}

void AddSpace(const char* path, bool isVolume, Record& record)
{
    uint64_t total = 0;
    uint64_t free = 0;
    uint64_t available = 0;
    const bool isKnown = isVolume && GetVolumeTotalAndFreeBytes(path, &total, &free, &available);
    const auto size = [isKnown](uint64_t bytes) { return isKnown ? Number(bytes) : Value(); };
    record.push_back(SizeField("volumeSize", "Volume size", size(total)));
    record.push_back(SizeField("volumeFree", "Volume free", size(free)));
    record.push_back(SizeField("volumeAvailable", "Volume available", size(available)));
}
