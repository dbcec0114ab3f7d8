#include "ui/framework/rtf/Rtf.h"

#include <QColor>
#include <QGuiApplication>
#include <QTextDocument>
#include <cstdint>
#include <cstdlib>

namespace {

/// Whether a document may hold the text: no characters that mean something else there, no halves of pairs.
bool IsSound(const QString& text)
{
    for (const QChar character : text)
        if (character == QChar::ObjectReplacementCharacter || character.isNonCharacter())
            return false;
    return text.isValidUtf16();
}

}

// NOLINTNEXTLINE(readability-non-const-parameter): the fuzzer prescribes it, and the toolkit changes the count
extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication application(*count, *arguments);
    return 0;
}

/// Any bytes that begin as rich text give a document of sound text, no longer than the bytes; others an empty one.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    QTextDocument document("before");
    const bool isRead = ReadRTF(text, document, Qt::blue);
    if (isRead != text.starts_with("{\\rtf") || (!isRead && !document.isEmpty()))
        std::abort();
    if (static_cast<size_t>(document.characterCount()) > size + 1 || !IsSound(document.toPlainText()))
        std::abort();
    return 0;
}
