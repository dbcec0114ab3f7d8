#include "ui/framework/ZEK_WindowHeaderView.h"

#include "ui/framework/LightDarkModeColor.h"

#include <QPaintEvent>
#include <QPainter>

ZEK_WindowHeaderView::ZEK_WindowHeaderView(QWidget* parent)
    : QWidget(parent)
{
}

ZEK_WindowHeaderView::~ZEK_WindowHeaderView() = default;

void ZEK_WindowHeaderView::awakeFromNib()
{
    fViewBackgroundColorPtr = LightDarkModeColor::colorWithSRGBRed(0.0, 93.0 / 255, 168.0 / 255, 1.0);
}

void ZEK_WindowHeaderView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    if (fViewBackgroundColorPtr != nullptr)
        painter.setBrush(fViewBackgroundColorPtr->color());
    painter.fillRect(event->rect(), painter.brush());
}
