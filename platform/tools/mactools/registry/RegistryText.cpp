#include "registry/RegistryText.h"

#include "registry/ValueText.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr uint64_t kNanosecondsPerMillisecond = 1000000;

std::string Hexadecimal(uint64_t number)
{
    char digits[16];
    return { std::begin(digits), std::to_chars(std::begin(digits), std::end(digits), number, 16).ptr };
}

std::string ClassText(const iokit::Entry& entry, bool withInheritance)
{
    std::string text = entry.objectClass->name;
    const iokit::Class* super = withInheritance ? entry.objectClass->super : nullptr;
    for (; super != nullptr; super = super->super)
        text += ':' + super->name;
    return text;
}

std::string StateText(const iokit::ServiceState& state)
{
    std::string text = state.registered ? ", registered" : ", !registered";
    text += state.matched ? ", matched" : ", !matched";
    text += state.active ? ", active" : ", inactive";
    text += ", busy " + std::to_string(state.busy);
    if (state.busyTime)
        text += " (" + std::to_string(*state.busyTime / kNanosecondsPerMillisecond) + " ms)";
    return text;
}

/// @return how many bytes the first characters take.
size_t BytesOf(const std::string& text, size_t characters)
{
    if (characters == 0 || text.size() <= characters)
        return text.size();
    const auto isLater = [&characters](char c) {
        const bool isFirstByte = (static_cast<unsigned char>(c) & 0xc0U) != 0x80;
        return isFirstByte && characters-- == 0;
    };
    return static_cast<size_t>(std::find_if(text.begin(), text.end(), isLater) - text.begin());
}

class Printer {
public:
    Printer(std::ostream& out, const RegistryView& view)
        : fOut(out)
        , fView(view)
    {
    }

    void print(const iokit::Entry& top)
    {
        iokit::Walk(
            top, [this](const iokit::Visit& visit) { return enter(visit); },
            [this](const iokit::Entry&) { fBars.resize(fBars.size() - 2); }, fView.plane);
    }

private:
    bool enter(const iokit::Visit& visit)
    {
        const iokit::Entry& entry = visit.entry;
        printName(entry);
        fBars += visit.isLast ? "  " : "| ";
        const bool descends = !visit.isAgain && fView.showsBelow(fBars.size() / 2);
        if (fView.showsProperties(entry))
            printProperties(entry, fBars + (descends && !entry.children(fView.plane).empty() ? "| " : "  "));
        return descends;
    }

    void printName(const iokit::Entry& entry)
    {
        const std::string name = entry.fullName();
        std::string line = fBars + "+-o " + name + "  <class " + ClassText(entry, fView.inheritance);
        line += ", id 0x" + Hexadecimal(entry.id);
        line += entry.service ? StateText(*entry.service) : "";
        line += ", retain " + std::to_string(entry.retainCount) + '>';
        cut(line);
        if (fView.boldNames)
            makeBold(line, fBars.size() + 4, name.size());
        fOut << line << '\n';
    }

    static void makeBold(std::string& line, size_t start, size_t length)
    {
        if (start >= line.size())
            return;
        line.insert(std::min(start + length, line.size()), "\033[0m");
        line.insert(start, "\033[1m");
    }

    void printProperties(const iokit::Entry& entry, const std::string& bars)
    {
        const cf::Owned<CFDictionaryRef> properties = entry.currentProperties();
        const auto count = static_cast<size_t>(CFDictionaryGetCount(properties.get()));
        std::vector<const void*> keys(count);
        std::vector<const void*> values(count);
        CFDictionaryGetKeysAndValues(properties.get(), keys.data(), values.data());
        printLine(bars + '{');
        for (size_t i = 0; i < count; ++i) {
            std::string line = bars + "  ";
            AppendValue(line, keys[i], fView.hexadecimal);
            line += " = ";
            AppendValue(line, values[i], fView.hexadecimal);
            printLine(std::move(line));
        }
        printLine(bars + '}');
        printLine(bars);
    }

    void printLine(std::string line)
    {
        cut(line);
        fOut << line << '\n';
    }

    void cut(std::string& line) const { line.resize(BytesOf(line, fView.width)); }

    std::ostream& fOut;
    const RegistryView& fView;
    std::string fBars; ///< two characters for each level: a bar where another entry follows on it
};

}

void PrintRegistry(std::ostream& out, const iokit::Registry& registry, const RegistryView& view)
{
    const bool isWhole = !view.onlySubtrees || !view.hasCriteria();
    for (const iokit::Entry* top : view.tops(registry)) {
        Printer(out, view).print(*top);
        out << (isWhole ? "" : "\n");
    }
}
