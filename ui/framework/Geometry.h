#pragma once

#include <QSizeF>

class QWidget;
class ZEK_Window;

/// A rectangle in points, its origin at the lower left, y growing upwards.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const Rect&) const = default;
};

/// The rectangle with its left and right edges moved inwards by `dx`, its lower and upper ones by `dy`; outwards
/// where these are negative.
Rect InsetRect(const Rect& rect, double dx, double dy);

/// How many of the toolkit's pixels make a point: 1 at the text size that the nibs are drawn for, more where the user
/// wants larger text, never less. Nibs are laid out in points, so windows grow with the text in them.
double PixelsPerPoint();

// These are the only places that know of the toolkit's coordinates, whose y grows downwards. Positions are rounded to
// whole pixels.

/// A view's frame, relative to its parent's lower left corner.
Rect Frame(const QWidget& view);
void SetFrame(QWidget& view, const Rect& frame);

/// The size that the view itself asks for, in points.
QSizeF FittingSize(const QWidget& view);

/// A window's frame on the primary screen. Its size is that of the content view: title bar and menu bar belong to the
/// desktop, and may come and go. Setting it lets the views in the window follow at once.
Rect Frame(const ZEK_Window& window);
void SetFrame(ZEK_Window& window, const Rect& frame);
