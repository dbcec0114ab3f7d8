#include "registry/RegistryArchive.h"

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFPropertyList.h>
#include <IOKit/Properties.h>

#include <string_view>

namespace {

constexpr std::string_view kHead = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
)";

constexpr const char* kChildrenKey = "IORegistryEntryChildren";

/// The dictionary of an entry in XML, in two parts: the children come between them.
struct EntryText {
    std::string start;
    std::string end;
};

uint64_t StateBits(const iokit::ServiceState& state)
{
    constexpr uint64_t inactive = 1;
    constexpr uint64_t registered = 2 | 8; // now, and once before
    constexpr uint64_t matched = 4 | 0x10;
    return (state.active ? 0 : inactive) | (state.registered ? registered : 0)
        | (state.matched ? matched : 0);
}

cf::Owned<CFDictionaryRef> Facts(const iokit::Entry& entry, bool hasChildren)
{
    iokit::Properties facts;
    facts.text("IOObjectClass", entry.objectClass->name)
        .number("IOObjectRetainCount", entry.retainCount)
        .number("IORegistryEntryID", entry.id)
        .text("IORegistryEntryName", entry.name)
        .text("IORegistryEntryLocation", entry.location);
    if (entry.service) {
        facts.number("IOServiceBusyState", entry.service->busy)
            .number("IOServiceBusyTime", entry.service->busyTime)
            .number("IOServiceState", StateBits(*entry.service));
    }
    if (hasChildren)
        facts.plainText(kChildrenKey, ""); // keeps the place
    return facts.take();
}

void AddWritable(const void* key, const void* value, void* context)
{
    if (CFPropertyListIsValid(key, kCFPropertyListXMLFormat_v1_0)
        && CFPropertyListIsValid(value, kCFPropertyListXMLFormat_v1_0))
        CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(context), key, value);
}

/// @return the dictionary alone, from "<dict>" to "</dict>"; "" when memory is short.
std::string DictionaryText(CFDictionaryRef dictionary)
{
    const cf::Owned<CFDataRef> data(
        CFPropertyListCreateData(nullptr, dictionary, kCFPropertyListXMLFormat_v1_0, 0, nullptr));
    if (!data)
        return "";
    const std::string_view all(reinterpret_cast<const char*>(CFDataGetBytePtr(data.get())),
        static_cast<size_t>(CFDataGetLength(data.get())));
    const size_t start = all.find("<dict>");
    return std::string(all.substr(start, all.rfind("</dict>") + 7 - start)) + '\n';
}

/// @return no text when memory is short.
EntryText TextOf(const iokit::Entry& entry, bool withProperties, bool hasChildren)
{
    const cf::Owned<CFMutableDictionaryRef> all(CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    if (withProperties)
        CFDictionaryApplyFunction(entry.currentProperties().get(), AddWritable, all.get());
    CFDictionaryApplyFunction(Facts(entry, hasChildren).get(), AddWritable, all.get());
    const std::string text = DictionaryText(all.get());
    if (!hasChildren || text.empty())
        return { text, "" };
    // One tab: a key of the entry itself. In what values hold, such a line is indented further or has its "<" escaped.
    const std::string key = std::string("\n\t<key>") + kChildrenKey + "</key>\n";
    const size_t value = text.find(key) + key.size();
    return { text.substr(0, value) + "\t<array>\n",
        "\t</array>\n" + text.substr(text.find('\n', value) + 1) };
}

bool PrintTree(std::ostream& out, const iokit::Entry& top, const RegistryView& view)
{
    std::vector<std::string> ends;
    bool isComplete = true;
    const auto enter = [&](const iokit::Visit& visit) {
        const iokit::Entry& entry = visit.entry;
        const bool descends = !visit.isAgain && view.showsBelow(ends.size() + 1);
        EntryText text
            = TextOf(entry, view.showsProperties(entry), descends && !entry.children(view.plane).empty());
        isComplete = isComplete && !text.start.empty();
        out << text.start;
        ends.push_back(std::move(text.end));
        return descends;
    };
    const auto leave = [&](const iokit::Entry&) {
        out << ends.back();
        ends.pop_back();
    };
    iokit::Walk(top, enter, leave, view.plane);
    return isComplete;
}

}

bool PrintRegistryArchive(std::ostream& out, const iokit::Registry& registry, const RegistryView& view)
{
    const std::vector<const iokit::Entry*> tops = view.tops(registry);
    const bool isList = view.onlySubtrees && view.hasCriteria();
    if (tops.empty())
        return true;
    bool isComplete = true;
    out << kHead << (isList ? "<array>\n" : "");
    for (const iokit::Entry* top : tops)
        isComplete = PrintTree(out, *top, view) && isComplete;
    out << (isList ? "</array>\n" : "") << "</plist>\n";
    return isComplete;
}
