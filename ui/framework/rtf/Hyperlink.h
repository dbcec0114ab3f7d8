#pragma once

#include <QString>
#include <QStringView>

namespace rtf {

/// @param instruction of a field, such as: HYPERLINK "https://example.com/" \l "place" \o "help".
/// @return the address, "https://example.com/#place"; empty for other fields.
QString HyperlinkAddress(QStringView instruction);

}
