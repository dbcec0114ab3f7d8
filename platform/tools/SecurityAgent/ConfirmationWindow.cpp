#include "ConfirmationWindow.h"

#include "AgentWords.h"
#include "Lock.h"

#include <QCursor>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

namespace {

/// A name of any direction among words of any other, which it does not turn around.
QString Isolated(const QString& text) { return QChar(0x2068) + text + QChar(0x2069); }

QScreen* ScreenInUse()
{
    QScreen* const screen = QGuiApplication::screenAt(QCursor::pos());
    return screen != nullptr ? screen : QGuiApplication::primaryScreen();
}

}

ConfirmationWindow::ConfirmationWindow(const Question& question, const AgentWords& words)
    : QDialog(nullptr,
        Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint
            | Qt::WindowStaysOnTopHint)
{
    setWindowTitle(words.title);
    setWindowIcon(LockIcon());
    const int line = fontMetrics().height();
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(line * 5 / 4, line * 5 / 4, line * 5 / 4, line);
    layout->setSpacing(line * 5 / 4);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(new LockView(line * 4), 0, Qt::AlignTop);
    auto* const column = new QVBoxLayout;
    column->setSpacing(0);
    column->addLayout(makeTexts(question, words));
    column->addSpacing(line * 5 / 4);
    column->addLayout(makeButtons(words));
    layout->addLayout(column);
    setFocus();
}

QLayout* ConfirmationWindow::makeTexts(const Question& question, const AgentWords& words)
{
    const int width = std::min(fontMetrics().height() * 30, ScreenInUse()->availableSize().width() * 2 / 3);
    auto* const layout = new QVBoxLayout;
    layout->setSpacing(fontMetrics().height() / 2);

    QLabel* const message = makeText("message", {}, width);
    QFont font = message->font();
    font.setBold(true);
    message->setFont(font);
    const QString program
        = message->fontMetrics().elidedText(question.program, Qt::ElideMiddle, width * 4 / 5);
    message->setText(QString(words.message).arg(Isolated(program)));
    layout->addWidget(message);
    layout->addWidget(makeText("powers", words.powers, width));

    QLabel* const folder = makeText("folder", {}, width);
    folder->setText(folder->fontMetrics().elidedText(question.folder, Qt::ElideMiddle, width));
    folder->setAccessibleName(question.folder);
    if (folder->text() != question.folder)
        folder->setToolTip(Qt::convertFromPlainText(question.folder));
    layout->addWidget(folder);
    layout->addWidget(makeText("reason", words.reason, width));

    // Screen readers say this when the window gets the keyboard.
    setAccessibleDescription(
        QStringList({ message->text(), words.powers, question.folder, words.reason }).join(' '));
    return layout;
}

QLabel* ConfirmationWindow::makeText(const char* name, const QString& text, int width)
{
    auto* const label = new QLabel(this);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setWordWrap(true);
    label->setFixedWidth(width);
    return label;
}

QLayout* ConfirmationWindow::makeButtons(const AgentWords& words)
{
    auto* const layout = new QHBoxLayout;
    layout->setSpacing(fontMetrics().height() / 2);
    layout->addStretch(1);
    const auto add = [&](const char* name, const char* word, void (QDialog::*act)()) {
        auto* const button = new QPushButton(word);
        button->setObjectName(name);
        button->setAutoDefault(false);
        button->setMinimumWidth(fontMetrics().height() * 6);
        connect(button, &QPushButton::clicked, this, act);
        layout->addWidget(button);
    };
    add("cancel", words.cancel, &QDialog::reject);
    add("allow", words.allow, &QDialog::accept);
    return layout;
}

void ConfirmationWindow::bringToFront()
{
    const QRect visible = ScreenInUse()->availableGeometry();
    const QSize space = visible.size() - sizeHint();
    move(visible.x() + std::max(0, space.width() / 2), visible.y() + std::max(0, space.height() / 3));
    show();
    raise();
    activateWindow();
}

void ConfirmationWindow::keyPressEvent(QKeyEvent* event)
{
    auto* const button = qobject_cast<QPushButton*>(focusWidget());
    if (button != nullptr && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        button->click();
    else
        QDialog::keyPressEvent(event);
}
