#include <sys/sysctl.h>

#include "HardwareFacts.h"
#include "ProcessTable.h"
#include "SystemVersion.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <string>

namespace {

using Number = std::optional<uint64_t>;
using Text = std::optional<std::string>;

/// One fact under its name and, where it has them, its two numbers. Exactly one of the functions is there.
struct Fact {
    const char* name;
    int top;
    int second;
    Number (*number)();
    Text (*text)();
};

constexpr Fact kFacts[] = {
    { "kern.osproductversion", 0, 0, nullptr, [] { return SystemVersionText("ProductVersion"); } },
    { "hw.machine", CTL_HW, HW_MACHINE, nullptr, MachineName },
    { "hw.model", CTL_HW, HW_MODEL, nullptr, ModelName },
    { "hw.ncpu", CTL_HW, HW_NCPU, ProcessorCount, nullptr },
    { "hw.memsize", CTL_HW, HW_MEMSIZE, MemorySize, nullptr },
    { "hw.l1icachesize", CTL_HW, HW_L1ICACHESIZE, [] { return CacheSize(HostTree(), 1, "Instruction"); },
        nullptr },
    { "hw.l1dcachesize", CTL_HW, HW_L1DCACHESIZE, [] { return CacheSize(HostTree(), 1, "Data"); }, nullptr },
    { "hw.l2cachesize", CTL_HW, HW_L2CACHESIZE, [] { return CacheSize(HostTree(), 2, "Data"); }, nullptr },
    { "hw.l3cachesize", CTL_HW, HW_L3CACHESIZE, [] { return CacheSize(HostTree(), 3, "Data"); }, nullptr },
};

/// Where an answer goes, and how much room there is.
struct Room {
    void* bytes;
    size_t* size;
};

/// @param unit what may not be cut apart, in bytes.
int Answer(const void* value, size_t size, size_t unit, Room room)
{
    const size_t available = *room.size;
    *room.size = std::min(available - available % unit, size);
    if (*room.size > 0)
        std::memcpy(room.bytes, value, *room.size);
    return available < size ? ENOMEM : 0;
}

int AnswerSize(size_t size, Room room)
{
    if (room.size != nullptr)
        *room.size = size;
    return 0;
}

int AnswerNumber(const Number& number, Room room)
{
    if (!number)
        return ENOENT;
    if (room.bytes == nullptr)
        return AnswerSize(sizeof *number, room);
    const auto shortNumber = static_cast<int32_t>(*number);
    if (*room.size != sizeof shortNumber)
        return Answer(&*number, sizeof *number, sizeof *number, room);
    return *number <= INT32_MAX ? Answer(&shortNumber, sizeof shortNumber, sizeof shortNumber, room) : ERANGE;
}

int AnswerText(const Text& text, Room room)
{
    if (!text)
        return ENOENT;
    const size_t size = text->size() + 1;
    return room.bytes == nullptr ? AnswerSize(size, room) : Answer(text->c_str(), size, 1, room);
}

int AnswerProcesses(const int* name, u_int count, Room room)
{
    const bool isAll = name[2] == KERN_PROC_ALL && (count == 3 || count == 4);
    if (!isAll && !(name[2] == KERN_PROC_PID && count == 4))
        return ENOENT;
    if (room.bytes == nullptr)
        return AnswerSize((isAll ? EstimateProcessCount() : 1) * sizeof(kinfo_proc), room);
    const std::vector<kinfo_proc> table = isAll ? ReadProcessTable() : ReadProcess(name[3]);
    return Answer(table.data(), table.size() * sizeof(kinfo_proc), sizeof(kinfo_proc), room);
}

template <class Is> int AnswerFact(const Is& is, Room room)
{
    const auto* const fact = std::find_if(std::begin(kFacts), std::end(kFacts), is);
    if (fact == std::end(kFacts))
        return ENOENT;
    return fact->text != nullptr ? AnswerText(fact->text(), room) : AnswerNumber(fact->number(), room);
}

/// What both functions have in common: refusals, and the error's way to the caller.
template <class Look> int Ask(const void* name, Room room, const void* newp, size_t newlen, const Look& look)
{
    int error = ENOMEM;
    try {
        if (name == nullptr || (room.size == nullptr && room.bytes != nullptr))
            error = EFAULT;
        else if (newp != nullptr || newlen != 0)
            error = EPERM;
        else
            error = look();
    } catch (const std::bad_alloc&) { // said already
    }
    if (error == 0)
        return 0;
    errno = error;
    return -1;
}

} // namespace

// NOLINTBEGIN(readability-non-const-parameter): as a Mac declares them, and the sizes are written to
int sysctl(int* name, u_int namelen, void* oldp, size_t* oldlenp, void* newp, size_t newlen)
{
    const Room room { oldp, oldlenp };
    return Ask(name, room, newp, newlen, [&] {
        if (namelen >= 3 && name[0] == CTL_KERN && name[1] == KERN_PROC)
            return AnswerProcesses(name, namelen, room);
        if (namelen != 2)
            return ENOENT;
        return AnswerFact(
            [name](const Fact& one) { return one.top != 0 && one.top == name[0] && one.second == name[1]; },
            room);
    });
}

int sysctlbyname(const char* name, void* oldp, size_t* oldlenp, void* newp, size_t newlen)
{
    const Room room { oldp, oldlenp };
    return Ask(name, room, newp, newlen, [&] {
        return AnswerFact([name](const Fact& one) { return std::strcmp(one.name, name) == 0; }, room);
    });
}
// NOLINTEND(readability-non-const-parameter)
