#include "ui/framework/KeyEquivalent.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QShortcut>
#include <QThread>
#include <algorithm>
#include <array>

namespace {

constexpr std::array kReturnKeys { Qt::Key_Return, Qt::Key_Enter };

/// Fills the button with the accent colour while it can be pressed, as desktops show default buttons. The button's own.
class Accent : public QObject {
public:
    explicit Accent(QPushButton& button)
        : QObject(&button)
        , fButton(button)
    {
        apply();
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
            apply();
        return false;
    }

private:
    void apply()
    {
        const QPalette colors = QApplication::palette();
        const QColor face = colors.color(QPalette::Highlight).darker(140); // styles lighten it
        QPalette palette;
        for (const QPalette::ColorGroup group : { QPalette::Active, QPalette::Inactive }) {
            palette.setColor(group, QPalette::Button, face);
            palette.setColor(group, QPalette::ButtonText, colors.color(QPalette::HighlightedText));
        }
        fButton.setPalette(palette);
    }

    QPushButton& fButton;
};

}

bool IsReturnKey(const QKeyEvent& event)
{
    return std::find(kReturnKeys.begin(), kReturnKeys.end(), event.key()) != kReturnKeys.end();
}

void SetReturnKeyEquivalent(QPushButton& button)
{
    button.setDefault(true);
    button.setFocus();
    new Accent(button);
    for (const Qt::Key key : kReturnKeys) {
        auto* const shortcut = new QShortcut(key, &button);
        shortcut->setAutoRepeat(false); // the key may still be held from the window before
        QObject::connect(shortcut, &QShortcut::activated, &button, [&button] {
            HighlightButton(button);
            button.click();
        });
    }
}

void HighlightButton(QAbstractButton& button)
{
    button.setDown(true);
    button.repaint();
    QThread::msleep(50);
    button.setDown(false);
    button.repaint();
}
