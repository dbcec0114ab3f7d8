#pragma once

#include "HelpBook.h"

#include <QTextBrowser>

/// Shows the pages of one help book, well typeset in the colours and the font of the widget. Nothing outside
/// the book is ever loaded, neither as a page nor as a part of one. A web address goes to the desktop's
/// browser; any other link leads nowhere.
class HelpBrowser : public QTextBrowser {
public:
    explicit HelpBrowser(HelpBook book, QWidget* parent = nullptr);

    QVariant loadResource(int type, const QUrl& name) override;

    /// Searches the page from the present match, or what is in sight, on, and around its end; upper and lower
    /// case are the same. An empty text is never found.
    /// @param again looks for the next match, or with `backward` the one before; otherwise the present one
    /// may be found again, longer or shorter. @return whether the text was found; then it is selected and in
    /// sight, else nothing is selected.
    bool findText(const QString& text, bool again, bool backward);

protected:
    void doSetSource(const QUrl& url, QTextDocument::ResourceType type) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void follow(const QUrl& link);
    /// What stands at the top, however the lines break.
    struct Place {
        int position = 0; ///< in the text; 0 for the page's start
        int top = 0; ///< its distance from the top, in pixels
    };
    Place placeInSight() const;
    void returnTo(const Place& place);
    void leaveMargin();
    void applyStyle();
    void applyColumn();

    const HelpBook fBook;
};
