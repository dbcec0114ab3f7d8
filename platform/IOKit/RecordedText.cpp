#include <IOKit/RecordedText.h>

#include <CoreFoundation/CFDictionary.h>
#include <IOKit/RecordedEntry.h>
#include <IOKit/RecordedHeading.h>
#include <IOKit/RecordedLines.h>
#include <IOKit/RecordedTextValue.h>

namespace iokit {

namespace {

constexpr size_t kLevelWidth = 2; ///< characters of a heading's indent for each level
constexpr size_t kListIndent = 4; ///< of an entry's list, from its heading's on
constexpr size_t kKeyIndent = 6;
constexpr std::string_view kSeparator = "\" = ";

class TextReader {
public:
    explicit TextReader(std::string_view text)
        : fLines(text, WidthOf(text))
    {
    }

    std::optional<Recording> read()
    {
        for (std::optional<RecordedLine> line = fLines.next(); line; line = fLines.next())
            read(*line);
        if (fList == List::Open)
            noteDamage();
        return MakeRecording(std::move(fEntries), fUnreadable);
    }

private:
    /// What is known of the list of the entry whose heading was met last.
    enum class List { Expected, Started, Open, Ended, Unknown };

    struct Step {
        size_t indent;
        size_t entry; ///< its place among the entries
    };

    void read(const RecordedLine& line)
    {
        const std::string_view content = line.content();
        if (fList == List::Started)
            followList(line);
        if (line.isHeading())
            readHeading(line, line.indent);
        else if (content.empty())
            fUnreadable += line.isCut && line.text.size() > fIndent + kListIndent ? 1 : 0;
        else if (fList == List::Expected && (content == "{" || isAt(line, kListIndent, '{')))
            startList(line);
        else if (isAt(line, kListIndent, '}') && (fList == List::Open || fList == List::Started))
            setList(List::Ended);
        else if (isInList() && isProperty(line))
            readProperty(line);
        else
            readStrange(line);
    }

    bool isInList() const { return fList == List::Expected || fList == List::Started || fList == List::Open; }

    /// Whether it is nothing but that brace at its place.
    bool isAt(const RecordedLine& line, size_t indent, char brace) const
    {
        return line.text.size() == fIndent + indent + 1 && line.text.back() == brace;
    }

    bool isProperty(const RecordedLine& line) const
    {
        const size_t indent = fIndent + kKeyIndent;
        return line.text.size() > indent && line.text[indent] == '"'
            && line.text.find(kSeparator, indent + 1) != std::string_view::npos;
    }

    /// A byte before the mark is enough to move a heading. Where its list stands elsewhere in two lines, those are right.
    void followList(const RecordedLine& line)
    {
        const bool isMoved = fBrace >= kListIndent && fBrace != fIndent + kListIndent;
        if (!isMoved || line.indent != fBrace + kKeyIndent - kListIndent || !line.content().starts_with('"'))
            return;
        noteDamage();
        fIndent = fWay.back().indent = fBrace - kListIndent;
    }

    void startList(const RecordedLine& line)
    {
        fBrace = line.indent;
        setList(List::Started);
    }

    void setList(List list)
    {
        fList = list;
        fIsDamaged = false;
    }

    /// Lines one after another that cannot be read are one place.
    void noteDamage()
    {
        fUnreadable += fIsDamaged ? 0 : 1;
        fIsDamaged = true;
    }

    /// @param indent of the mark before the name.
    void readHeading(const RecordedLine& line, size_t indent)
    {
        if (fList == List::Started || fList == List::Open)
            noteDamage();
        while (!fWay.empty() && fWay.back().indent >= indent)
            fWay.pop_back();
        RecordedEntry entry;
        bool isWhole = iokit::ReadHeading(line.text.substr(indent + 4), entry);
        if (!fWay.empty()) {
            entry.parent = fWay.back().entry;
            isWhole = isWhole && indent == fWay.back().indent + kLevelWidth;
        }
        fUnreadable += isWhole ? 0 : 1;
        fWay.push_back({ indent, fEntries.size() });
        fEntries.push_back(std::move(entry));
        fIndent = indent;
        setList(List::Expected);
    }

    void readProperty(const RecordedLine& line)
    {
        setList(List::Open);
        const std::string_view text = line.text.substr(fIndent + kKeyIndent + 1);
        const size_t end = text.find(kSeparator);
        const std::string_view value = text.substr(end + kSeparator.size());
        TextValueReader::Result result = fValues.read(value, line.isCut);
        if (result.isOpen && !line.isCut)
            result = readOn(value, std::move(result));
        fUnreadable += result.unreadable;
        if (result.value)
            CFDictionarySetValue(properties(), fKeys.key(text.substr(0, end)), result.value.get());
    }

    CFMutableDictionaryRef properties()
    {
        RecordedEntry& entry = fEntries.back();
        if (!entry.properties)
            entry.properties.reset(CFDictionaryCreateMutable(
                nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
        return entry.properties.get();
    }

    /// Reads a value with the lines that it goes on in.
    /// @param first what the value's first line gave. @return that where they do not end it.
    TextValueReader::Result readOn(std::string_view value, TextValueReader::Result first)
    {
        const bool isText = value.starts_with('"');
        fLonger = value;
        RecordedLines lines = fLines;
        RecordedLines after = fLines;
        for (std::optional<RecordedLine> line = lines.next(); line && !isOfTree(*line); line = lines.next()) {
            if (line->isCut)
                return first;
            fLonger.append(1, '\n').append(line->text);
            after = lines;
            if (isText && line->text.ends_with('"'))
                break;
        }
        TextValueReader::Result result = fValues.read(fLonger, false);
        if (result.isOpen)
            return first;
        fLines = after;
        return result;
    }

    /// Whether a line does not belong to the value before it.
    bool isOfTree(const RecordedLine& line) const
    {
        return line.isHeading() || isAt(line, kListIndent, '}') || isProperty(line);
    }

    /// A heading whose start is damaged can still be read; of anything else the entry is not known.
    void readStrange(const RecordedLine& line)
    {
        noteDamage();
        const size_t found = line.text.find("+-o ");
        const size_t mark = found != std::string_view::npos ? found : line.indent;
        const size_t facts = line.text.find("  <class ");
        if (facts != std::string_view::npos && facts > mark + 4)
            readHeading(line, mark);
        else if (fList == List::Ended || (fList == List::Expected && !mayStartList(line)))
            fList = List::Unknown;
    }

    /// Whether it could be a list's start, or the end of the heading before.
    bool mayStartList(const RecordedLine& line) const
    {
        const size_t brace = fIndent + kListIndent;
        return !fEntries.back().isWhole
            || (line.text.size() > brace && (line.text[brace] == '{' || line.text.size() == brace + 1));
    }

    RecordedLines fLines;
    Keys fKeys;
    TextValueReader fValues { fKeys };
    std::vector<RecordedEntry> fEntries;
    std::vector<Step> fWay; ///< to the entry whose heading was met last
    size_t fIndent = 0; ///< of that heading
    size_t fBrace = 0; ///< where its list started
    List fList = List::Unknown;
    bool fIsDamaged = false; ///< the line before could not be read
    size_t fUnreadable = 0;
    std::string fLonger;
};

}

std::optional<Recording> ReadRegistryText(std::string_view bytes)
{
    std::string copy;
    return TextReader(PlainRegistryText(bytes, copy)).read();
}

}
