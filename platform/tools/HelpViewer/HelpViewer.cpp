// HelpViewer: shows a help book in a window.

#include "HelpBook.h"
#include "HelpWindow.h"
#include "SingleViewer.h"

#include <Host/HostDisplay.h>
#include <HostWindows/AppearanceFollower.h>
#include <QApplication>
#include <iostream>
#include <optional>
#include <string>

namespace {

constexpr int kWrongUse = 64;

}

int main(int argc, char** argv)
{
    // Before the toolkit, which ends the program where there is no display.
    if (argc < 2 || argc > 3) {
        std::cerr << "usage: HelpViewer BOOK-FOLDER [ANCHOR]\n";
        return kWrongUse;
    }
    std::string problem;
    const std::optional<HelpBook> book = HelpBook::open(argv[1], problem);
    if (!book) {
        std::cerr << "HelpViewer: " << problem << '\n';
        return 1;
    }
    const QString anchor = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString();

    HostPrepareForWindows();
    const QApplication application(argc, argv);
    QApplication::setApplicationDisplayName(book->title());
    std::optional<HelpWindow> window;
    SingleViewer viewer(book->folder(), [&window](const QString& asked) {
        window->showPage(asked);
        window->bringToFront();
    });
    if (viewer.handOver(anchor))
        return 0;
    const AppearanceFollower appearance;
    window.emplace(*book);
    window->showPage(anchor);
    window->bringToFront();
    return QApplication::exec();
}
