#include "ui/framework/Geometry.h"

#include "ui/framework/ZEK_Window.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QScreen>
#include <algorithm>

namespace {

/// The height of a line of text, in pixels, that nibs are drawn for.
constexpr double kNibLineHeight = 14;

/// The nearest whole number of pixels that a widget can have.
int Rounded(double pixels) { return qRound(std::clamp<double>(pixels, -QWIDGETSIZE_MAX, QWIDGETSIZE_MAX)); }

QRect Pixels(const Rect& frame, double containerHeight)
{
    const double scale = PixelsPerPoint();
    const QSize size(Rounded(frame.width * scale), Rounded(frame.height * scale));
    return { QPoint(Rounded(frame.x * scale), Rounded(containerHeight - frame.y * scale) - size.height()),
        size };
}

Rect Points(const QRect& frame, double containerHeight)
{
    const double scale = PixelsPerPoint();
    return { frame.x() / scale, (containerHeight - frame.y() - frame.height()) / scale, frame.width() / scale,
        frame.height() / scale };
}

double ContainerHeight(const QWidget& view)
{
    return view.parentWidget() != nullptr ? view.parentWidget()->height() : 0;
}

double ScreenHeight()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->geometry().bottom() + 1 : 0;
}

}

Rect InsetRect(const Rect& rect, double dx, double dy)
{
    return { rect.x + dx, rect.y + dy, rect.width - 2 * dx, rect.height - 2 * dy };
}

double PixelsPerPoint()
{
    return std::max(1.0, QFontMetricsF(QApplication::font()).height() / kNibLineHeight);
}

Rect Frame(const QWidget& view) { return Points(view.geometry(), ContainerHeight(view)); }

void SetFrame(QWidget& view, const Rect& frame) { view.setGeometry(Pixels(frame, ContainerHeight(view))); }

QSizeF FittingSize(const QWidget& view) { return QSizeF(view.sizeHint()) / PixelsPerPoint(); }

Rect Frame(const ZEK_Window& window)
{
    return Points({ window.pos(), window.contentSize() }, ScreenHeight());
}

void SetFrame(ZEK_Window& window, const Rect& frame)
{
    const QRect pixels = Pixels(frame, ScreenHeight());
    window.setContentSize(pixels.size());
    if (pixels.topLeft() != window.pos())
        window.move(pixels.topLeft());
}
