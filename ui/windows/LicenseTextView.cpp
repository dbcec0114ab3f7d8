#include "ui/windows/LicenseTextView.h"

#include "ui/framework/Geometry.h"
#include "ui/framework/KeyEquivalent.h"
#include "ui/framework/OpenURL.h"
#include "ui/framework/rtf/Rtf.h"

#include <QEvent>
#include <QFile>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTextFrame>

LicenseTextView::LicenseTextView(QWidget* parent)
    : QTextBrowser(parent)
{
    setOpenLinks(false);
    connect(this, &QTextBrowser::anchorClicked, this, &LicenseTextView::follow);
}

void LicenseTextView::follow(const QUrl& link)
{
    if (link.isRelative()) // a place in this text
        scrollToAnchor(link.fragment());
    else
        OpenURL(link, *this);
}

/// Return opens the link that the keyboard is on, before any default button takes it.
bool LicenseTextView::event(QEvent* event)
{
    const bool isOnLink = textCursor().hasSelection() && textCursor().charFormat().isAnchor();
    if (event->type() == QEvent::ShortcutOverride && isOnLink
        && IsReturnKey(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QTextBrowser::event(event);
}

void LicenseTextView::awakeFromNib()
{
    fTextContainerInset = { 15.0, 5.0 };
    applyTextContainerInset();
}

void LicenseTextView::applyTextContainerInset()
{
    const double scale = PixelsPerPoint();
    QTextFrameFormat format = document()->rootFrame()->frameFormat();
    format.setLeftMargin(fTextContainerInset.width() * scale);
    format.setRightMargin(fTextContainerInset.width() * scale);
    format.setTopMargin(fTextContainerInset.height() * scale);
    format.setBottomMargin(fTextContainerInset.height() * scale);
    document()->rootFrame()->setFrameFormat(format);
}

bool LicenseTextView::readRTFDFromFile(const std::string& path)
{
    fPath = path;
    QFile file(QFile::decodeName(path.c_str()));
    clear();
    if (path.empty() || !file.open(QIODevice::ReadOnly))
        return false;
    const bool isRead = ReadRTF(file.readAll().toStdString(), *document(), palette().color(QPalette::Link));
    applyTextContainerInset();
    moveCursor(QTextCursor::Start);
    return isRead;
}

/// Links have the palette's colour, which the text has taken in when it was read.
void LicenseTextView::changeEvent(QEvent* event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() != QEvent::PaletteChange || fPath.empty())
        return;
    const int position = verticalScrollBar()->value();
    readRTFDFromFile(fPath);
    verticalScrollBar()->setValue(position);
}
