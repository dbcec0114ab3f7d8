#include "ui/framework/rtf/Rtf.h"
#include "ui/framework/rtf/Reader.h"

#include <QTextDocument>
#include <climits>

bool ReadRTF(std::string_view bytes, QTextDocument& document, const QColor& linkColor)
{
    document.clear();
    if (!bytes.starts_with("{\\rtf"))
        return false;
    const bool keepsHistory = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    // A document counts its characters in ints; none of them comes from less than a byte.
    rtf::Reader(bytes.substr(0, INT_MAX / 2), document, linkColor).read();
    document.setUndoRedoEnabled(keepsHistory);
    document.setModified(false);
    return true;
}
