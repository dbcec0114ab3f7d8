#include "tools/inspect/Commands.h"
#include "util/CFText.h"
#include "util/RegistryProperties.h"

#include <IOKit/IOBSD.h>
#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <unordered_set>

namespace {

/// An entry as the walk meets it.
struct Visit {
    io_registry_entry_t entry;
    uint64_t id;
    size_t level; ///< 0 at the root
    bool isAgain; ///< it was met before, below another entry
};

/// Goes over the service plane, parents first. What lies below an entry that has several parents is visited once.
void WalkRegistry(const std::function<void(const Visit&)>& visit)
{
    std::unordered_set<uint64_t> known;
    std::vector<IORef> iterators; // over the children of each entry on the way down
    IORef entry(IORegistryGetRootEntry(kIOMasterPortDefault));
    while (entry) {
        uint64_t id = 0;
        IORegistryEntryGetRegistryEntryID(entry.get(), &id);
        const bool isAgain = !known.insert(id).second;
        visit({ entry.get(), id, iterators.size(), isAgain });
        IORef children;
        if (!isAgain)
            IORegistryEntryGetChildIterator(entry.get(), kIOServicePlane, children.receive());
        iterators.push_back(std::move(children));
        entry = IORef();
        while (!entry && !iterators.empty()) {
            entry = IORef(IOIteratorNext(iterators.back().get()));
            if (!entry)
                iterators.pop_back();
        }
    }
}

/// "name@location", or the name where there is no location.
std::string FullName(io_registry_entry_t entry)
{
    io_name_t name {};
    io_name_t location {};
    IORegistryEntryGetName(entry, name);
    const bool isPlaced
        = IORegistryEntryGetLocationInPlane(entry, kIOServicePlane, location) == kIOReturnSuccess;
    return isPlaced ? std::string(name) + '@' + location : name;
}

std::string ClassName(io_registry_entry_t entry)
{
    io_name_t name {};
    IOObjectGetClass(entry, name);
    return name;
}

std::string BSDName(io_registry_entry_t entry)
{
    const CFRef<CFTypeRef> name = OwnProperty(entry, CFSTR(kIOBSDNameKey));
    return StdString(CFDynamicCast<CFStringRef>(name.get(), CFStringGetTypeID()));
}

std::string Hexadecimal(uint64_t number)
{
    std::array<char, 24> text {};
    std::snprintf(text.data(), text.size(), "0x%llx", static_cast<unsigned long long>(number));
    return text.data();
}

/// The name as far to the right as the entry lies deep. From some depth on a number tells it.
std::string Indented(const std::string& name, const Visit& visit)
{
    constexpr size_t deepest = 32;
    std::string text(2 * std::min(visit.level, deepest), ' ');
    if (visit.level > deepest)
        text += '(' + std::to_string(visit.level) + ") ";
    return text + name + (visit.isAgain ? " (see above)" : "");
}

Record Row(const Visit& visit)
{
    const std::string name = FullName(visit.entry);
    return {
        { "name", "Name", name, Indented(name, visit) },
        { "class", "Class", ClassName(visit.entry) },
        { "id", "ID", Hexadecimal(visit.id) },
        { "bsdName", "BSD name", TextOrNone(BSDName(visit.entry)) },
    };
}

Record TreeObject(const Visit& visit)
{
    Record record = Row(visit);
    record.push_back({ "level", "Level", static_cast<int64_t>(visit.level) });
    record.push_back({ "isAgain", "Again", visit.isAgain });
    return record;
}

/// @return "" for one that the library has no room for.
std::string Path(const Visit& visit)
{
    io_string_t path {};
    if (visit.level >= sizeof(path)) // each level takes at least a character
        return "";
    IORegistryEntryGetPath(visit.entry, kIOServicePlane, path);
    return path;
}

void AddSorted(const void* key, const void* value, void* context)
{
    const std::string name = StdString(CFDynamicCast<CFStringRef>(key, CFStringGetTypeID()));
    (*static_cast<std::map<std::string, CFTypeRef>*>(context))[name] = value;
}

/// With all properties, by their names.
Record Description(const Visit& visit)
{
    Record record = Row(visit);
    record.front().shown.clear();
    record.insert(record.begin() + 1, { "path", "Path", TextOrNone(Path(visit)) });
    CFMutableDictionaryRef found = nullptr;
    IORegistryEntryCreateCFProperties(visit.entry, &found, kCFAllocatorDefault, 0);
    const CFRef<CFMutableDictionaryRef> all(found);
    std::map<std::string, CFTypeRef> sorted;
    if (all)
        CFDictionaryApplyFunction(all.get(), AddSorted, &sorted);
    Record properties;
    for (const auto& [name, value] : sorted)
        properties.push_back({ name, name, CFRef<CFTypeRef>::Retained(value) });
    record.push_back({ "properties", "Properties", std::move(properties) });
    return record;
}

/// The names that fit an entry.
std::vector<std::string> Fitting(const std::set<std::string>& wanted, io_registry_entry_t entry)
{
    io_name_t name {};
    IORegistryEntryGetName(entry, name);
    const std::array<std::string, 3> own { name, FullName(entry), BSDName(entry) };
    std::vector<std::string> fitting;
    std::copy_if(wanted.begin(), wanted.end(), std::back_inserter(fitting), [&](const std::string& one) {
        return std::find(own.begin(), own.end(), one) != own.end()
            || IOObjectConformsTo(entry, one.c_str()) != 0;
    });
    return fitting;
}

}

Findings FindRegistryEntries(const Request& request)
{
    Findings findings;
    findings.isTable = request.operands.empty();
    const std::set<std::string> wanted(request.operands.begin(), request.operands.end());
    std::set<std::string> missing = wanted;
    WalkRegistry([&](const Visit& visit) {
        if (wanted.empty()) {
            findings.records.push_back(request.asJSON ? TreeObject(visit) : Row(visit));
            return;
        }
        const std::vector<std::string> fitting
            = visit.isAgain ? std::vector<std::string>() : Fitting(wanted, visit.entry);
        if (!fitting.empty())
            findings.records.push_back(Description(visit));
        for (const std::string& name : fitting)
            missing.erase(name);
    });
    for (const std::string& name : missing)
        findings.problems.push_back("the registry has no entry of the class or the name " + name);
    return findings;
}
