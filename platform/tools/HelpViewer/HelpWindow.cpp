#include "HelpWindow.h"

#include "HelpBrowser.h"
#include "HelpWords.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QShortcut>
#include <QToolButton>
#include <QVBoxLayout>

HelpWindow::HelpWindow(const HelpBook& book, QWidget* parent)
    : QWidget(parent)
    , fBook(book)
{
    const HelpWords& words = UsersHelpWords();
    setWindowTitle(fBook.title());
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->setSpacing(0);
    layout->addWidget(makeBar(words));
    fNotFound = new QLabel(words.notFound);
    fNotFound->setObjectName("notFound");
    fNotFound->setAlignment(Qt::AlignTrailing);
    fNotFound->setMargin(fontMetrics().height() / 3);
    fNotFound->hide();
    layout->addWidget(fNotFound);
    fPage = new HelpBrowser(fBook);
    fPage->setObjectName("page");
    layout->addWidget(fPage, 1);
    connectHistory();
    connectSearch();
    addKeys();

    const int line = fontMetrics().height();
    resize(QSize(line * 48, line * 40).boundedTo(screen()->availableSize() * 9 / 10));
    fPage->setFocus();
}

void HelpWindow::showPage(const QString& anchor) { fPage->setSource(fBook.pageWithAnchor(anchor)); }

void HelpWindow::bringToFront()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

QWidget* HelpWindow::makeBar(const HelpWords& words)
{
    auto* const bar = new QWidget;
    fBack = makeButton("back", words.back, Qt::ALT | Qt::Key_Left);
    fForward = makeButton("forward", words.forward, Qt::ALT | Qt::Key_Right);
    fContents = makeButton("contents", words.contents, Qt::ALT | Qt::Key_Home);
    fSearch = new QLineEdit;
    fSearch->setObjectName("search");
    fSearch->setAccessibleName(words.search);
    fSearch->setPlaceholderText(words.search);
    fSearch->setClearButtonEnabled(true);
    fSearch->setMinimumWidth(fontMetrics().averageCharWidth() * 16);
    fSearch->setMaximumWidth(fontMetrics().averageCharWidth() * 32);

    auto* const layout = new QHBoxLayout(bar);
    for (QToolButton* const button : { fBack, fForward, fContents })
        layout->addWidget(button);
    layout->addStretch(1);
    layout->addWidget(fSearch, 2);
    return bar;
}

QToolButton* HelpWindow::makeButton(const char* name, const char* word, const QKeySequence& key)
{
    auto* const button = new QToolButton;
    button->setObjectName(name);
    button->setText(word);
    button->setAccessibleName(word);
    button->setShortcut(key);
    button->setToolTip(QString("%1 (%2)").arg(word, key.toString(QKeySequence::NativeText)));
    button->setAutoRaise(true);
    return button;
}

void HelpWindow::connectHistory()
{
    fBack->setEnabled(false);
    fForward->setEnabled(false);
    connect(fPage, &QTextBrowser::backwardAvailable, fBack, &QToolButton::setEnabled);
    connect(fPage, &QTextBrowser::forwardAvailable, fForward, &QToolButton::setEnabled);
    connect(fBack, &QToolButton::clicked, fPage, &QTextBrowser::backward);
    connect(fForward, &QToolButton::clicked, fPage, &QTextBrowser::forward);
    connect(fContents, &QToolButton::clicked, this, [this] { showPage({}); });
}

void HelpWindow::connectSearch()
{
    connect(fSearch, &QLineEdit::textChanged, this, [this] { search(Match::thisOne); });
    connect(fSearch, &QLineEdit::returnPressed, this, [this] {
        const bool isShifted = QGuiApplication::keyboardModifiers().testFlag(Qt::ShiftModifier);
        search(isShifted ? Match::previous : Match::next);
    });
    connect(fPage, &QTextBrowser::historyChanged, this, [this] { tellFound(true); });
}

void HelpWindow::addKeys()
{
    const auto add = [this](auto key, auto act) {
        connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, this, act);
    };
    add(QKeySequence::Find, [this] {
        fSearch->setFocus(Qt::ShortcutFocusReason);
        fSearch->selectAll();
    });
    add(QKeySequence::FindNext, [this] { search(Match::next); });
    add(QKeySequence::FindPrevious, [this] { search(Match::previous); });
    add(Qt::Key_Escape, [this] { leave(); });
    add(Qt::CTRL | Qt::Key_W, [this] { close(); });
    add(Qt::CTRL | Qt::Key_Q, [this] { close(); });
}

void HelpWindow::search(Match wanted)
{
    const QString text = fSearch->text();
    const bool isFound
        = fPage->findText(text, wanted != Match::thisOne, wanted == Match::previous) || text.isEmpty();
    tellFound(isFound);
}

void HelpWindow::tellFound(bool isFound)
{
    fNotFound->setVisible(!isFound);
    // This way a screen reader says so while the user types.
    fSearch->setAccessibleDescription(isFound ? QString() : fNotFound->text());
}

void HelpWindow::leave()
{
    if (fSearch->hasFocus() && !fSearch->text().isEmpty())
        fSearch->clear();
    else
        close();
}
