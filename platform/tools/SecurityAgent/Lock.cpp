#include "Lock.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {

/// The drawing's own coordinates.
constexpr double kSide = 64;
constexpr QRectF kBody(11, 27, 42, 33);
constexpr int kIconSide = 128;

QLinearGradient Gradient(const QRectF& across, QRgb start, QRgb middle, QRgb end)
{
    QLinearGradient gradient(across.topLeft(), across.bottomLeft());
    gradient.setColorAt(0, start);
    gradient.setColorAt(0.5, middle);
    gradient.setColorAt(1, end);
    return gradient;
}

void PaintShackle(QPainter& painter)
{
    QPainterPath shackle(QPointF(21, 30));
    shackle.lineTo(21, 18);
    shackle.arcTo(QRectF(21, 7, 22, 22), 180, -180);
    shackle.lineTo(43, 30);
    painter.strokePath(shackle, QPen(QColor(0x6A6E75), 8, Qt::SolidLine, Qt::FlatCap));
    QLinearGradient steel(17, 0, 47, 0);
    steel.setColorAt(0, 0xFFC9CDD3);
    steel.setColorAt(0.5, 0xFFECEEF1);
    steel.setColorAt(1, 0xFFA4A9B1);
    painter.strokePath(shackle, QPen(steel, 6, Qt::SolidLine, Qt::FlatCap));
}

void PaintBody(QPainter& painter)
{
    painter.setPen(QPen(QColor(0x94650F), 1));
    painter.setBrush(Gradient(kBody, 0xFFFBDD7E, 0xFFF0BC3F, 0xFFD4921B));
    painter.drawRoundedRect(kBody, 6, 6);
    painter.setPen(QPen(QColor(255, 255, 255, 110), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(kBody.adjusted(1, 1, -1, -1), 5, 5);
}

void PaintKeyhole(QPainter& painter)
{
    QPainterPath keyhole;
    keyhole.setFillRule(Qt::WindingFill);
    keyhole.addEllipse(QPointF(32, 40), 4.5, 4.5);
    keyhole.addPolygon(QPolygonF({ { 30.5, 42 }, { 33.5, 42 }, { 35, 52 }, { 29, 52 }, { 30.5, 42 } }));
    painter.fillPath(keyhole, QColor(0x4A3208));
}

void PaintLock(QPainter& painter, double side)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(side / kSide, side / kSide);
    PaintShackle(painter);
    PaintBody(painter);
    PaintKeyhole(painter);
}

}

LockView::LockView(int side, QWidget* parent)
    : QWidget(parent)
{
    setFixedSize(side, side);
}

void LockView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    PaintLock(painter, width());
}

QIcon LockIcon()
{
    QPixmap picture(kIconSide, kIconSide);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    PaintLock(painter, kIconSide);
    painter.end();
    return picture;
}
