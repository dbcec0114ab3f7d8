#include "ui/framework/TextFitting.h"

#include "ui/framework/Geometry.h"

#include <QFontMetrics>
#include <QLabel>
#include <algorithm>

namespace {

/// What a field's text keeps clear on either side.
constexpr double kTextInset = 10.0;
constexpr int kUnbounded = 1 << 20;

}

TextSize BoundingSize(const QLabel& field, double width)
{
    if (field.text().isEmpty())
        return {};
    const double scale = PixelsPerPoint();
    const QRect room(0, 0, static_cast<int>(width * scale), kUnbounded);
    const QRect bounds = field.fontMetrics().boundingRect(room, Qt::TextWordWrap, field.text());
    return { bounds.width() / scale, bounds.height() / scale };
}

float AdjustFrameOfTextView(QLabel& field)
{
    Rect frame = Frame(field);
    const TextSize text = BoundingSize(field, InsetRect(frame, kTextInset, 0).width);
    const float growth = std::max(static_cast<float>(text.height) - static_cast<float>(frame.height), 0.0F);
    frame = { frame.x, frame.y - growth, text.width + 2 * kTextInset, text.height };
    SetFrame(field, frame);
    return growth;
}
