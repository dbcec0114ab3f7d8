#include "HelpBrowser.h"

#include "HelpStyle.h"

#include <QDesktopServices>
#include <QEvent>
#include <QImage>
#include <QScrollBar>
#include <QTextDocument>
#include <QTextFrame>
#include <QToolTip>
#include <algorithm>
#include <utility>

namespace {

/// What is shown in place of a picture that is missing.
QImage NoPicture()
{
    QImage picture(1, 1, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    return picture;
}

}

HelpBrowser::HelpBrowser(HelpBook book, QWidget* parent)
    : QTextBrowser(parent)
    , fBook(std::move(book))
{
    setOpenLinks(false);
    setFrameShape(QFrame::NoFrame);
    setAccessibleName(fBook.title());
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    connect(this, &QTextBrowser::anchorClicked, this, &HelpBrowser::follow);
    // With every page the column's margins are gone, also when it comes out of the history.
    connect(this, &QTextEdit::textChanged, this, &HelpBrowser::applyColumn);
    applyStyle();
}

QVariant HelpBrowser::loadResource(int type, const QUrl& name)
{
    // Always a value: for none, the toolkit would read the file by itself, wherever it lies.
    const QByteArray bytes = fBook.read(source().resolved(name)).value_or(QByteArray(""));
    if (type != QTextDocument::ImageResource)
        return bytes;
    const QImage picture = QImage::fromData(bytes);
    return picture.isNull() ? NoPicture() : picture;
}

bool HelpBrowser::findText(const QString& text, bool again, bool backward)
{
    const QTextDocument::FindFlags flags
        = backward ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    QTextCursor start = textCursor().hasSelection() ? textCursor() : cursorForPosition({});
    if (!again)
        start.setPosition(start.selectionStart());
    QTextCursor match = document()->find(text, start, flags);
    if (match.isNull()) {
        start.movePosition(backward ? QTextCursor::End : QTextCursor::Start);
        match = document()->find(text, start, flags);
    }
    if (!match.isNull()) {
        setTextCursor(match);
    } else if (textCursor().hasSelection()) {
        start.setPosition(textCursor().selectionStart());
        setTextCursor(start);
    }
    return !match.isNull();
}

void HelpBrowser::doSetSource(const QUrl& url, QTextDocument::ResourceType type)
{
    if (!fBook.contains(url))
        return;
    QTextBrowser::doSetSource(url, type);
    if (url.hasFragment() && isVisible())
        leaveMargin();
}

void HelpBrowser::showEvent(QShowEvent* event)
{
    const int place = verticalScrollBar()->value();
    QTextBrowser::showEvent(event);
    if (verticalScrollBar()->value() != place)
        leaveMargin(); // an anchor that was asked for before has only now been scrolled to
}

void HelpBrowser::changeEvent(QEvent* event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)
        applyStyle();
}

void HelpBrowser::resizeEvent(QResizeEvent* event)
{
    const Place place = placeInSight();
    QTextBrowser::resizeEvent(event);
    applyColumn();
    returnTo(place);
}

void HelpBrowser::follow(const QUrl& link)
{
    if (link.scheme() != "https" && link.scheme() != "http")
        setSource(link);
    else if (!QDesktopServices::openUrl(link))
        QToolTip::showText(QCursor::pos(), link.toDisplayString(), this); // to be typed elsewhere
}

/// Moves an anchor that has been scrolled to away from the edge, or to the page's start where that is near.
void HelpBrowser::leaveMargin()
{
    const int margin = HelpIndent(fontMetrics());
    const int place = verticalScrollBar()->value() - margin;
    verticalScrollBar()->setValue(place < margin ? 0 : place);
}

void HelpBrowser::applyStyle()
{
    document()->setDefaultStyleSheet(HelpStyleSheet(palette(), fontMetrics()));
    document()->setIndentWidth(HelpIndent(fontMetrics()));
    if (source().isEmpty())
        return;
    // A style sheet only works on a page that is loaded after it.
    const Place place = placeInSight();
    reload();
    returnTo(place);
}

HelpBrowser::Place HelpBrowser::placeInSight() const
{
    if (verticalScrollBar()->value() == 0)
        return {};
    const QTextCursor top = cursorForPosition({});
    return { top.position(), cursorRect(top).top() };
}

void HelpBrowser::returnTo(const Place& place)
{
    if (place.position == 0) {
        verticalScrollBar()->setValue(0);
        return;
    }
    QTextCursor top(document());
    top.setPosition(place.position);
    verticalScrollBar()->setValue(verticalScrollBar()->value() + cursorRect(top).top() - place.top);
}

/// Keeps lines short enough for the eye, in the middle of whatever width there is.
void HelpBrowser::applyColumn()
{
    const int margin = HelpIndent(fontMetrics());
    const int sides = std::max(margin, (viewport()->width() - HelpColumnWidth(fontMetrics())) / 2);
    QTextFrameFormat format = document()->rootFrame()->frameFormat();
    if (format.leftMargin() == sides && format.topMargin() == margin)
        return;
    format.setMargin(margin);
    format.setLeftMargin(sides);
    format.setRightMargin(sides);
    document()->rootFrame()->setFrameFormat(format);
}
