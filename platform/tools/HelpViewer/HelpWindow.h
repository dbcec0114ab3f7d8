#pragma once

#include "HelpBook.h"

#include <QWidget>

class HelpBrowser;
class QLabel;
class QLineEdit;
class QToolButton;
struct HelpWords;

/// A window with a help book: the page, Back, Forward and Contents, and a field to search the page with.
/// Escape, Ctrl+W and Ctrl+Q close it; in the field, Escape first empties it. Words are in the user's
/// language as it is when the window is made.
class HelpWindow : public QWidget {
public:
    /// @param book kept as a copy. No page is shown yet.
    explicit HelpWindow(const HelpBook& book, QWidget* parent = nullptr);

    /// Shows the page with the anchor, scrolled to it; the start page for an unknown or an empty one.
    void showPage(const QString& anchor);

    /// Makes the window visible and the one that keys go to, as far as the desktop lets it.
    void bringToFront();

private:
    enum class Match { thisOne, next, previous };

    QWidget* makeBar(const HelpWords& words);
    QToolButton* makeButton(const char* name, const char* word, const QKeySequence& key);
    void connectHistory();
    void connectSearch();
    void addKeys();
    void search(Match wanted);
    void tellFound(bool isFound);
    void leave();

    const HelpBook fBook;
    QToolButton* fBack = nullptr;
    QToolButton* fForward = nullptr;
    QToolButton* fContents = nullptr;
    QLabel* fNotFound = nullptr;
    QLineEdit* fSearch = nullptr;
    HelpBrowser* fPage = nullptr;
};
