#include "volume/HfsUtil.h"

#include "volume/HfsVolume.h"
#include "volume/TargetDevice.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <random>

namespace {

constexpr const char* kName = "hfs.util";
constexpr const char* kUsage = "usage: hfs.util -s device\n\n  -s  give the volume a new UUID\n";
constexpr int kDone = 253;
constexpr int kNotRecognized = 254;
constexpr int kFailed = 252;
constexpr int kInvalid = 250;

/// Of two words neither of which is 0: that would be none.
HfsUUID NewUUID()
{
    std::random_device source;
    HfsUUID uuid {};
    const auto isZero = [](uint8_t byte) { return byte == 0; };
    while (std::all_of(uuid.begin(), uuid.begin() + 4, isZero)
        || std::all_of(uuid.begin() + 4, uuid.end(), isZero)) {
        for (uint8_t& byte : uuid)
            byte = static_cast<uint8_t>(source());
    }
    return uuid;
}

}

int HfsUtil(const Arguments& arguments)
{
    if (AnswersHelp(arguments, kUsage))
        return 0;
    if (arguments.size() != 2 || arguments.front() != "-s") {
        std::cerr << kUsage;
        return kInvalid;
    }
    const std::string& name = arguments[1];
    const std::optional<TargetDevice> target = FindTarget(kName, name);
    const Descriptor file = target ? OpenUnused(kName, name, *target) : Descriptor();
    if (!file)
        return kInvalid;
    switch (SetHfsUUID(file.get(), NewUUID())) {
    case HfsResult::Done:
        return kDone;
    case HfsResult::NotHFS:
        return Complain(kName, name + ": not an HFS volume"), kNotRecognized;
    default:
        return Complain(kName, name + ": " + std::strerror(errno)), kFailed;
    }
}
