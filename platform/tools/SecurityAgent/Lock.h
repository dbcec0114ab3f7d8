#pragma once

#include <QIcon>
#include <QWidget>

/// A closed golden padlock, drawn as large as the widget, which is square.
class LockView : public QWidget {
public:
    /// @param side in pixels.
    explicit LockView(int side, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// The same as the icon of a window.
QIcon LockIcon();
