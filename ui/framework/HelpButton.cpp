#include "ui/framework/HelpButton.h"

#include "util/Bundle.h"

#include <QPainter>

HelpButton::HelpButton(QWidget* parent)
    : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setAccessibleName(QString::fromStdString(LocalizedString(CFSTR("kHelpButton"))));
}

QSize HelpButton::sizeHint() const
{
    const int side = fontMetrics().height() * 8 / 5;
    return { side, side };
}

void HelpButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double side = qMin(width(), height()) - 3.0;
    const QRectF circle((width() - side) / 2, (height() - side) / 2, side, side);
    QColor face = palette().color(QPalette::Button);
    if (isDown())
        face = face.darker(125);
    else if (underMouse())
        face = face.lighter(106);
    painter.setBrush(face);
    painter.setPen(
        QPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Dark), hasFocus() ? 2.0 : 1.0));
    painter.drawEllipse(circle);

    QFont font = this->font();
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(palette().color(QPalette::ButtonText));
    painter.drawText(circle, Qt::AlignCenter, QStringLiteral("?"));
}
