#include "ui/framework/rtf/Rtf.h"

#include <QColor>
#include <QGuiApplication>
#include <QTextDocument>
#include <benchmark/benchmark.h>
#include <string>

namespace {

/// An agreement as text editors write it: numbered clauses with their bold titles, accents, quotation marks and a
/// link now and then. @return about 200 KB.
std::string Agreement()
{
    std::string text = "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset0 Helvetica;}"
                       "{\\f1\\fswiss\\fcharset0 Helvetica-Bold;}}\n"
                       "{\\colortbl;\\red255\\green255\\blue255;\\red0\\green0\\blue0;}\n";
    for (int clause = 1; text.size() < size_t { 200 } * 1024; clause++) {
        text += "\\pard\\tx220\\tx720\\li720\\fi-720\\sa120\n\\f1\\b\\fs24 \\cf2 {\\listtext\t"
            + std::to_string(clause) + ".\t}Limits of liability.\n\\f0\\b0  ";
        for (int sentence = 0; sentence < 4; sentence++)
            text += "The maker\\'92s liability under this \\'93Agreement\\'94 ends where the law, wherever "
                    "it\n"
                    "applies, lets it end \\'97 nothing in it keeps anybody from rights that a \\i "
                    "caf\\'e9\\i0  owner has. ";
        if (clause % 10 == 0)
            text += "See {\\field{\\*\\fldinst{HYPERLINK \"https://www.example.com/terms\"}}{\\fldrslt our "
                    "terms}}.";
        text += "\\\n";
    }
    return text + "}";
}

QGuiApplication& Application()
{
    static int count = 1;
    static char name[] = "micro_bench";
    static char* arguments[] = { name, nullptr };
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication application(count, arguments);
    return application;
}

const std::string& Sample()
{
    static const std::string sample = Agreement();
    return sample;
}

// Neither document has a layout, as before it is shown.

void ReadOurs(benchmark::State& state)
{
    Application();
    QTextDocument document;
    for ([[maybe_unused]] auto tick : state)
        benchmark::DoNotOptimize(ReadRTF(Sample(), document, Qt::blue));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(Sample().size()));
}

void ReadPeer(benchmark::State& state)
{
    Application();
    QTextDocument document;
    ReadRTF(Sample(), document, Qt::blue);
    const QString text = document.toPlainText();
    document.setUndoRedoEnabled(false);
    for ([[maybe_unused]] auto tick : state)
        document.setPlainText(text);
}

}

BENCHMARK(ReadOurs)->Name("read a rich text of 200 KB/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(ReadPeer)->Name("read a rich text of 200 KB/setPlainText")->Unit(benchmark::kMillisecond);
