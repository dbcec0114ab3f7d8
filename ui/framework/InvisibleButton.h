#pragma once

#include <QAbstractButton>
#include <QEvent>

/// A button that is never seen, clicked or focused: it lends a window a key equivalent that no visible control has.
class InvisibleButton : public QAbstractButton {
    Q_OBJECT

public:
    explicit InvisibleButton(QWidget* parent = nullptr)
        : QAbstractButton(parent)
    {
        setFocusPolicy(Qt::NoFocus);
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    QSize sizeHint() const override { return { 0, 0 }; }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::Shortcut)
            return QAbstractButton::event(event);
        click(); // at once, as there is no press to be seen
        return true;
    }
    void paintEvent(QPaintEvent*) override { }
};
