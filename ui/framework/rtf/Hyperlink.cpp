#include "ui/framework/rtf/Hyperlink.h"

#include <algorithm>

namespace rtf {

namespace {

constexpr qsizetype kLongest = 4096; ///< longer addresses lead nowhere

/// Takes the next part off the front: a word, or what stands in quotation marks, where a backslash makes the next
/// character an ordinary one.
QString TakePart(QStringView& rest)
{
    rest = rest.trimmed();
    const bool quoted = rest.startsWith(u'"');
    qsizetype at = quoted ? 1 : 0;
    QString part;
    for (; at < rest.size(); at++) {
        if (quoted ? rest[at] == u'"' : rest[at].isSpace())
            break;
        if (quoted && rest[at] == u'\\' && at + 1 < rest.size())
            at++;
        part += rest[at];
    }
    rest = rest.sliced(std::min(at + (quoted ? 1 : 0), rest.size()));
    return part;
}

}

QString HyperlinkAddress(QStringView instruction)
{
    QStringView rest = instruction.left(kLongest);
    if (TakePart(rest).compare(u"HYPERLINK", Qt::CaseInsensitive) != 0)
        return {};
    QString address;
    for (rest = rest.trimmed(); !rest.isEmpty(); rest = rest.trimmed()) {
        const bool quoted = rest.startsWith(u'"');
        const QString part = TakePart(rest);
        if (quoted || !part.startsWith(u'\\'))
            address = part + address;
        else if (part == u"\\l")
            address += u'#' + TakePart(rest);
        else if (part == u"\\o" || part == u"\\t") // a help text; a frame
            TakePart(rest);
    }
    return address;
}

}
