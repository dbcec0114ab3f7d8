#pragma once

#include "ui/framework/Nib.h"
#include <QWidget>
#include <memory>

class LightDarkModeColor;

/// A band in the product's blue. One made in code has no colour, and paints with whatever its painter has, until it is
/// woken as those of a nib are.
class ZEK_WindowHeaderView : public QWidget, public NibView {
    Q_OBJECT

public:
    explicit ZEK_WindowHeaderView(QWidget* parent = nullptr);
    ~ZEK_WindowHeaderView() override;

    void awakeFromNib() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::unique_ptr<LightDarkModeColor> fViewBackgroundColorPtr;
};
