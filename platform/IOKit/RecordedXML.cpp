#include <IOKit/RecordedXML.h>

#include <IOKit/RecordedValue.h>

#include <expat.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <memory>
#include <type_traits>

namespace iokit {

namespace {

bool IsXMLCharacter(int32_t character)
{
    return (character >= 0x20 && character != 0xfffe && character != 0xffff) || character == '\t'
        || character == '\n' || character == '\r';
}

/// Whether it could be a byte that has to be looked at closer.
bool IsSuspect(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r');
}

/// References by number to characters that XML does not allow become one to U+FFFD.
/// @return the text without them, or "" where it has none.
std::string WithoutBadReferences(std::string_view text)
{
    std::string plain;
    size_t done = 0;
    for (size_t start = text.find("&#"); start != std::string_view::npos;
         start = text.find("&#", start + 2)) {
        const bool isHexadecimal = text.substr(start + 2).starts_with('x');
        const char* const digits = text.data() + start + (isHexadecimal ? 3 : 2);
        int32_t character = 0;
        const auto [end, error]
            = std::from_chars(digits, text.data() + text.size(), character, isHexadecimal ? 16 : 10);
        if (error == std::errc() && IsXMLCharacter(character) && character <= 0x10ffff
            && !(character >= 0xd800 && character <= 0xdfff))
            continue;
        plain.append(text, done, start - done).append("&#xFFFD;");
        done = static_cast<size_t>(end - text.data());
        done += text.substr(done).starts_with(';') ? 1 : 0;
    }
    return done == 0 ? plain : plain.append(text, done);
}

struct ParserFreer {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserFreer>;

// All are called with the parser.

XMLHandler& HandlerOf(void* parser)
{
    return *static_cast<XMLHandler*>(XML_GetUserData(static_cast<XML_Parser>(parser)));
}

void XMLCALL Start(void* parser, const XML_Char* element, const XML_Char**)
{
    HandlerOf(parser).start(element);
}

void XMLCALL End(void* parser, const XML_Char* element) { HandlerOf(parser).end(element); }

void XMLCALL Characters(void* parser, const XML_Char* characters, int length)
{
    HandlerOf(parser).text({ characters, static_cast<size_t>(length) });
}

void XMLCALL Skipped(void* parser, const XML_Char*, int) { HandlerOf(parser).skipped(); }

/// Entities could make a short document an endless one.
void XMLCALL EntityDeclaration(void* parser, const XML_Char*, int, const XML_Char*, int, const XML_Char*,
    const XML_Char*, const XML_Char*, const XML_Char*)
{
    XML_StopParser(static_cast<XML_Parser>(parser), XML_FALSE);
}

}

bool ReadXML(std::string_view bytes, XMLHandler& handler)
{
    std::string repaired;
    if (std::any_of(bytes.begin(), bytes.end(), IsSuspect)) {
        repaired = Repaired(bytes, IsXMLCharacter);
        bytes = repaired;
    }
    const std::string referenced = WithoutBadReferences(bytes);
    if (!referenced.empty())
        bytes = referenced;
    const Parser parser(XML_ParserCreate("UTF-8"));
    if (!parser || bytes.size() > INT_MAX)
        return false;
    XML_SetUserData(parser.get(), &handler);
    XML_UseParserAsHandlerArg(parser.get());
    XML_SetElementHandler(parser.get(), Start, End);
    XML_SetCharacterDataHandler(parser.get(), Characters);
    XML_SetSkippedEntityHandler(parser.get(), Skipped);
    XML_SetEntityDeclHandler(parser.get(), EntityDeclaration);
    return XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE) == XML_STATUS_OK;
}

}
