#include "AwkwardRegistry.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/Properties.h>
#include <registry/ValueText.h>

#include <map>
#include <utility>
#include <vector>

namespace {

using iokit::Entry;
using iokit::Properties;

cf::Owned<CFArrayRef> Array(std::initializer_list<CFTypeRef> items)
{
    std::vector<const void*> values(items.begin(), items.end());
    return cf::Owned<CFArrayRef>(
        CFArrayCreate(nullptr, values.data(), static_cast<CFIndex>(values.size()), &kCFTypeArrayCallBacks));
}

cf::Owned<CFDataRef> Data(std::string_view bytes)
{
    return cf::Owned<CFDataRef>(CFDataCreate(
        nullptr, reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size())));
}

std::string Described(const Entry& entry)
{
    std::string text = entry.fullName() + " <" + entry.objectClass->name + ' ' + std::to_string(entry.id);
    text += ' ' + std::to_string(entry.retainCount) + "> in";
    for (const Entry* parent : entry.in(iokit::Plane::Service).parents)
        text += ' ' + std::to_string(parent->id);
    if (entry.service)
        text += entry.service->registered ? " registered" : " not registered";
    return text;
}

}

iokit::Registry AwkwardRegistry()
{
    const cf::Owned<CFTypeRef> text(cf::MakeString("a, b\", {c} = (d)"));
    const cf::Owned<CFDataRef> texts = Data({ "pci8086,1\0PCI0\0", 15 });
    const cf::Owned<CFDataRef> quoted = Data({ "a\",\"b\">\0", 8 });
    const cf::Owned<CFDictionaryRef> nothing = Properties().take();
    const cf::Owned<CFArrayRef> inner = Array({ texts.get(), quoted.get(), nothing.get(), kCFBooleanFalse });
    const cf::Owned<CFArrayRef> empty = Array({});
    Properties texted;
    texted.text("quotes", "say \"a\" = \"b\", \"c\"")
        .text("lines", "first\n  +-x {second}\nthird")
        .text("bytes", "\u00fc\u4e16")
        .plainText("nothing", "")
        .text("number", "12");
    Properties numbers;
    numbers.number("negative", static_cast<uint64_t>(-100))
        .number("largest", UINT64_MAX / 2)
        .number("smallest", uint64_t { 1 } << 63U)
        .number("zero", 0)
        .flag("yes", true)
        .flag("no", false);
    Properties bytes;
    bytes.data("texts", { "pci8086,1\0PCI0\0", 15 })
        .data("unended", "en:0")
        .data("padded", { "t8\0\0", 4 })
        .data("quote", { "{\"a\":1,\"b\"}\0", 12 })
        .data("quoted", { "a\",\"b\">\0", 8 })
        .data("null", { "\0", 1 })
        .data("one", "7");
    Properties nested;
    nested.array("empty", empty.get()).array("mixed", inner.get()).array("text", Array({ text.get() }).get());

    iokit::Registry registry;
    Entry& top = registry.add(
        registry.root(), "IOPlatformExpertDevice", "Root, <class A, id 0x1>", "", texted.take());
    Entry& first = registry.add(top, "IOMedia", "a@b", "1,2", numbers.take());
    Entry& second = registry.add(top, "UnheardOf", "  +-o ", "", bytes.take());
    second.service->registered = false;
    Entry& shared = registry.add(first, "IOService", "{", "", nested.take());
    registry.link(second, shared);
    registry.add(shared, "IOMedia", "below", "0", nullptr);
    registry.completeDeviceTree();
    return registry;
}

std::string Differences(const iokit::Registry& expected, const iokit::Registry& found)
{
    std::map<uint64_t, const Entry*> missing;
    for (const Entry& entry : expected.entries())
        missing[entry.id] = &entry;
    std::string differences;
    for (const Entry& entry : found.entries()) {
        const Entry* const one = std::exchange(missing[entry.id], nullptr);
        if (one != nullptr && Described(*one) == Described(entry)
            && CFEqual(one->properties.get(), entry.properties.get()))
            continue;
        differences += Described(entry);
        AppendValue(differences, entry.properties.get(), false);
        differences += '\n';
    }
    for (const auto& [id, entry] : missing)
        differences += entry != nullptr ? "no " + entry->name + '\n' : "";
    return differences;
}
