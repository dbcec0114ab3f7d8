#include "tools/inspect/CaptureFolder.h"
#include "tools/inspect/Commands.h"
#include "tools/inspect/VolumeFields.h"
#include "tools/inspect/Words.h"
#include "util/CFText.h"
#include "util/SystemInformation.h"

#include <array>
#include <cstdio>
#include <sys/sysctl.h>

namespace {

constexpr std::array kInstructionSets {
    Word { kPowerPCInstructionSet, "PowerPC" },
    Word { kPowerPC64InstructionSet, "PowerPC 64" },
    Word { kIntelInstructionSet, "i386" },
    Word { kIntel64InstructionSet, "x86-64" },
};

struct Name {
    const char* key;
    const char* title;
    CFStringRef (*create)();
};

constexpr std::array kInRegistry {
    Name { "serialNumber", "Serial number", CreateHWSerialNumberString },
    Name { "model", "Model", CreateMacTypeString },
};

constexpr std::array kOfSystem {
    Name { "computerName", "Computer name", CreateMacNameString },
    Name { "localHostName", "Local host name", CreateLocalHostNameString },
    Name { "userName", "User name", CreateUsernameString },
};

struct Cache {
    const char* key;
    const char* title;
    int32_t (*size)();
};

constexpr std::array kCaches {
    Cache { "l1InstructionCache", "L1 instruction cache", L1InstructionCacheSize },
    Cache { "l1DataCache", "L1 data cache", L1DataCacheSize },
    Cache { "l2Cache", "L2 cache", L2CacheSize },
    Cache { "l3Cache", "L3 cache", L3CacheSize },
};

template <size_t Count> void AddNames(const std::array<Name, Count>& names, Record& record)
{
    for (const Name& name : names) {
        const std::string text = StdString(CFRef<CFStringRef>(name.create()).get());
        // Macs end their model with a zero byte, which is no part of it.
        record.push_back({ name.key, name.title, TextOrNone(text.c_str()) });
    }
}

/// "02:fc:00:00:00:01"
Value PrimaryAddress()
{
    std::array<uint8_t, 6> bytes {};
    if (!GetPrimaryMAC_Address(bytes.data(), bytes.size()))
        return {};
    std::string text;
    for (const uint8_t byte : bytes) {
        std::array<char, 4> digits {};
        std::snprintf(digits.data(), digits.size(), "%s%02x", text.empty() ? "" : ":", byte);
        text += digits.data();
    }
    return text;
}

/// What the machine calls it, where the library has no code for it.
Value InstructionSet()
{
    const Value word = Worded(kInstructionSets, KernelISA());
    std::array<char, 64> machine {};
    size_t size = machine.size() - 1;
    const bool isTold = sysctlbyname("hw.machine", machine.data(), &size, nullptr, 0) == 0;
    return std::holds_alternative<std::string>(word) || !isTold ? word : TextOrNone(machine.data());
}

Value SizeOrNone(int64_t bytes) { return bytes > 0 ? Value(bytes) : Value(); }

/// What only the computer itself can tell.
void AddOwnFacts(Record& record)
{
    AddNames(kOfSystem, record);
    const uint64_t memory = BytesOfRAM();
    record.push_back(SizeField("memory", "Memory", memory > 0 ? Number(memory) : Value()));
    for (const Cache& cache : kCaches)
        record.push_back(SizeField(cache.key, cache.title, SizeOrNone(cache.size())));
    record.push_back({ "instructionSet", "Instruction set", InstructionSet() });
    AddSystem("/", true, record);
}

}

Findings DescribeComputer(const Request& request)
{
    Findings findings;
    Record record;
    AddNames(kInRegistry, record);
    record.push_back({ "primaryAddress", "Primary interface", PrimaryAddress() });
    if (!request.capture)
        AddOwnFacts(record);
    else if (!AddRecordedProfile(*request.capture, record))
        findings.problems.push_back(*request.capture + ": " + kProfileFile + " cannot be read");
    findings.records.push_back(std::move(record));
    return findings;
}
