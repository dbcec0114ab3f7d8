#include "ui/framework/KeyEquivalent.h"

#include <QApplication>
#include <QPushButton>
#include <QShortcut>

namespace {

/// Fills the button with the accent colour while it can be pressed, as desktops show default buttons.
void Accentuate(QPushButton& button)
{
    const QPalette colors = QApplication::palette();
    QPalette palette;
    for (const QPalette::ColorGroup group : { QPalette::Active, QPalette::Inactive }) {
        palette.setColor(group, QPalette::Button, colors.color(QPalette::Highlight));
        palette.setColor(group, QPalette::ButtonText, colors.color(QPalette::HighlightedText));
    }
    button.setPalette(palette);
}

}

void SetReturnKeyEquivalent(QPushButton& button)
{
    button.setDefault(true);
    Accentuate(button);
    button.setShortcut(Qt::Key_Return);
    auto* const enter = new QShortcut(Qt::Key_Enter, &button); // the numeric keypad's
    QObject::connect(enter, &QShortcut::activated, &button, &QAbstractButton::animateClick);
}
