#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace iokit {

/// A line of the registry's text, without its end.
struct RecordedLine {
    std::string_view text;
    size_t indent; ///< where the bars and spaces at its start end
    bool isCut; ///< it may go on in what is not there

    std::string_view content() const { return text.substr(indent); }
    bool isHeading() const { return content().starts_with("+-o "); }
};

/// Goes over lines. Copies go on for themselves.
class RecordedLines {
public:
    /// @param text has to outlive this. @param width in characters at which all lines were cut; 0 for none.
    explicit RecordedLines(std::string_view text, size_t width = 0)
        : fRest(text)
        , fWidth(width)
    {
    }

    /// @return none at the end.
    std::optional<RecordedLine> next();

private:
    std::string_view fRest;
    size_t fWidth;
};

/// The text from its first heading on as "ioreg" printed it, without the escapes that pages of a web and bold names have.
/// @param copy receives the text where it had to be changed. @return the text, "" where there is no heading.
std::string_view PlainRegistryText(std::string_view text, std::string& copy);

/// @return the width at which all lines were cut, in characters; 0 where they were not.
size_t WidthOf(std::string_view text);

}
