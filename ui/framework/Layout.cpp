#include "ui/framework/Layout.h"

#include "ui/framework/Geometry.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

namespace {

constexpr double kTallButton = 32.0;
constexpr double kMargin = 4.0;
constexpr double kTallMargin = 12.0;

double ButtonWidth(const Rect& fitted, double oldWidth)
{
    const double margin = fitted.height < kTallButton ? kMargin : kTallMargin;
    return fitted.width < static_cast<float>(oldWidth) - margin ? oldWidth : fitted.width + margin;
}

template <class... Classes> bool IsOneOf(const QWidget& view)
{
    return ((qobject_cast<const Classes*>(&view) != nullptr) || ...);
}

/// Whether the view is something that a person operates or reads, in contrast to what only holds such things.
bool IsControl(const QWidget& view)
{
    return IsOneOf<QAbstractButton, QAbstractSlider, QAbstractSpinBox, QComboBox, QLabel, QLineEdit>(view);
}

}

float SizeToFit(QWidget* control, bool anchorLeft, float offset)
{
    if (control == nullptr)
        return offset;
    Rect frame = Frame(*control);
    const double oldWidth = frame.width;
    frame.width = FittingSize(*control).width();
    frame.height = FittingSize(*control).height();
    if (qobject_cast<QAbstractButton*>(control) != nullptr)
        frame.width = ButtonWidth(frame, oldWidth);
    const double growth = frame.width - oldWidth;
    const double result = anchorLeft ? offset + growth : offset - growth;
    frame.x += anchorLeft ? offset : result;
    SetFrame(*control, frame);
    return static_cast<float>(result);
}

void RecursivelyEnableSubviews(QWidget* view, bool enable)
{
    if (view == nullptr)
        return;
    if (IsControl(*view)) {
        view->setEnabled(enable);
        return;
    }
    for (QWidget* const subview : view->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        RecursivelyEnableSubviews(subview, enable);
}
