#pragma once

#include <QLocalServer>
#include <QString>
#include <functional>

/// Sees to it that a user has one viewer for a book on a display. The first one listens on a socket in a
/// folder that nobody else may enter: "HelpViewer" in the user's runtime folder, XDG_RUNTIME_DIR, else
/// "HelpViewer.<user id>" in the folder for temporary files. Without such a folder every viewer is on its
/// own.
class SingleViewer {
public:
    /// @param book the book's folder. @param show called from the main loop, with the anchor, when another
    /// viewer of the book has started and ended again.
    SingleViewer(const QString& book, std::function<void(const QString& anchor)> show);

    /// Asks the viewer that runs already to show the page, and waits a few seconds for its answer. Where none
    /// runs or answers, this one takes its place.
    /// @return whether another viewer shows the page.
    bool handOver(const QString& anchor);

private:
    void answer(QLocalSocket* peer);

    QString fSocket; ///< path; "" when there is no folder for it
    std::function<void(const QString&)> fShow;
    QLocalServer fServer;
};
