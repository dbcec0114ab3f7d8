#pragma once

#include <string_view>

namespace iokit {

/// Told what is in an XML document, in its order. No text lasts longer than the call.
class XMLHandler {
public:
    virtual ~XMLHandler() = default;

    virtual void start(std::string_view element) = 0;
    /// A piece of an element's text, which may come in several.
    virtual void text(std::string_view characters) = 0;
    virtual void end(std::string_view element) = 0;
    /// A reference to something that the document does not have.
    virtual void skipped() = 0;
};

/// Reads a document in UTF-8. Bytes and characters that XML does not allow come as U+FFFD. Documents that define entities of
/// their own are not read further.
/// @return false where it is no XML from some place on; all before was told.
bool ReadXML(std::string_view bytes, XMLHandler& handler);

}
