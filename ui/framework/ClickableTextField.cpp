#include "ui/framework/ClickableTextField.h"

#include "ui/framework/KeyEquivalent.h"
#include "ui/framework/OpenURL.h"
#include "util/CFText.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>
#include <QStyleOptionFocusRect>
#include <QUrl>

namespace {

/// The regular size, which a nib may have changed for the field while it is no link.
QFont LinkFont()
{
    QFont font = QApplication::font("QLabel");
    font.setUnderline(true);
    return font;
}

bool IsOpeningKey(const QKeyEvent& event) { return event.key() == Qt::Key_Space || IsReturnKey(event); }

}

ClickableTextField::ClickableTextField(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setMouseTracking(true);
}

void ClickableTextField::setStringValue(const std::string& text)
{
    const bool isLink = static_cast<bool>(fURL_Ptr);
    setFont(isLink ? LinkFont() : QFont());
    setForegroundRole(isLink ? QPalette::Link : QPalette::NoRole);
    setTextInteractionFlags(isLink ? Qt::TextSelectableByMouse : Qt::NoTextInteraction);
    setFocusPolicy(isLink ? Qt::StrongFocus : Qt::NoFocus);
    setToolTip(isLink ? QString::fromStdString(StdString(CFURLGetString(fURL_Ptr.get()))) : QString());
    setText(QString::fromStdString(text));
    fTextFieldRect = isLink ? QRect(QPoint(), fontMetrics().size(Qt::TextSingleLine, this->text())) : QRect();
    unsetCursor();
}

std::string ClickableTextField::stringValue() const { return text().toStdString(); }

void ClickableTextField::setURL_Ptr(CFRef<CFURLRef> url)
{
    const bool switches = static_cast<bool>(url) != static_cast<bool>(fURL_Ptr);
    fURL_Ptr = std::move(url);
    if (switches && !text().isEmpty())
        setStringValue(stringValue());
}

void ClickableTextField::setURL_WithString(const std::string& url)
{
    setURL_Ptr(CFRef(CFURLCreateWithString(kCFAllocatorDefault, CFText(url).get(), nullptr)));
}

void ClickableTextField::openURL()
{
    if (!fURL_Ptr)
        return;
    const CFRef<CFURLRef> absolute(CFURLCopyAbsoluteURL(fURL_Ptr.get()));
    OpenURL(QUrl(QString::fromStdString(StdString(CFURLGetString(absolute.get())))), *this);
}

/// What the default button would take otherwise.
bool ClickableTextField::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && fURL_Ptr
        && IsOpeningKey(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QLabel::event(event);
}

void ClickableTextField::keyPressEvent(QKeyEvent* event)
{
    if (!fURL_Ptr || !IsOpeningKey(*event))
        QLabel::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        openURL();
}

/// The toolkit tells double clicks; a third one in time continues the row.
int ClickableTextField::nextClickCount() const
{
    const bool continues = fPressedTime.isValid() && fClickCount > 1
        && !fPressedTime.hasExpired(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    return continues ? fClickCount + 1 : 1;
}

void ClickableTextField::mousePressEvent(QMouseEvent* event)
{
    fClickCount = event->button() == Qt::LeftButton ? nextClickCount() : 0;
    fPressedAt = event->pos();
    fPressedTime.start();
    QLabel::mousePressEvent(event);
}

void ClickableTextField::mouseDoubleClickEvent(QMouseEvent* event)
{
    QLabel::mouseDoubleClickEvent(event);
    fClickCount = 2;
    fPressedTime.start();
}

void ClickableTextField::mouseMoveEvent(QMouseEvent* event)
{
    const int moved = (event->pos() - fPressedAt).manhattanLength();
    if (event->buttons() != Qt::NoButton && moved >= QGuiApplication::styleHints()->startDragDistance())
        fClickCount = 0; // selecting text is no click
    QLabel::mouseMoveEvent(event);
    setCursor(fTextFieldRect.contains(event->pos()) ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void ClickableTextField::mouseReleaseEvent(QMouseEvent* event)
{
    QLabel::mouseReleaseEvent(event);
    if (fClickCount == 1)
        openURL();
}

void ClickableTextField::paintEvent(QPaintEvent* event)
{
    QLabel::paintEvent(event);
    if (!hasFocus() || !fURL_Ptr)
        return;
    QPainter painter(this);
    QStyleOptionFocusRect option;
    option.initFrom(this);
    option.rect = fTextFieldRect;
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
}
