#include "ui/framework/ZEK_Window.h"

#include "ui/framework/InvisibleButton.h"
#include "ui/framework/ZEK_WindowController.h"
#include "util/CFText.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenuBar>
#include <QScreen>

namespace {

/// Which part of one dimension takes up a change: the space before the view, the view, the space after it.
struct Flexible {
    bool before, size, after;
};

/// The view's new place in one dimension. What changes is shared equally among all that is flexible.
void Stretch(int& position, int& size, int change, const Flexible& flexible)
{
    const int parts = flexible.before + flexible.size + flexible.after;
    if (parts == 0)
        return;
    position += flexible.before ? change / parts : 0;
    size += flexible.size ? change / parts : 0;
}

void Autoresize(QWidget& view, const QSize& change)
{
    const QString mask = view.property("autoresizingMask").toString();
    QRect frame = view.geometry();
    int x = frame.x();
    int y = frame.y();
    QSize size = frame.size();
    Stretch(x, size.rwidth(), change.width(),
        { mask.contains("minX"), mask.contains("width"), mask.contains("maxX") });
    Stretch(y, size.rheight(), change.height(),
        { mask.contains("maxY"), mask.contains("height"), mask.contains("minY") });
    view.setGeometry({ QPoint(x, y), size });
}

}

ZEK_Window::ZEK_Window(QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    fCloseKey.setSingleShot(true);
    connect(&fCloseKey, &QTimer::timeout, this, &ZEK_Window::actAsCloseKey);
}

std::vector<ZEK_Window*> ZEK_Window::windows()
{
    std::vector<ZEK_Window*> windows;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (auto* const window = qobject_cast<ZEK_Window*>(widget))
            windows.push_back(window);
    }
    return windows;
}

QWidget* ZEK_Window::contentView() const
{
    return findChild<QWidget*>("contentView", Qt::FindDirectChildrenOnly);
}

QSize ZEK_Window::contentSize() const { return contentView() != nullptr ? contentView()->size() : size(); }

bool ZEK_Window::isResizable() const { return property("resizable").toBool(); }

int ZEK_Window::menuBarHeight() const
{
    // A desktop that shows menus elsewhere takes the bar out of the window.
    return fMenuBar && !fMenuBar->isNativeMenuBar() ? fMenuBar->sizeHint().height() : 0;
}

void ZEK_Window::setContentSize(const QSize& size)
{
    const QSize whole = size + QSize(0, menuBarHeight());
    if (!isResizable())
        setFixedSize(whole);
    resize(whole);
    layOut(); // the resize event of a hidden window comes only when it is shown
}

void ZEK_Window::setMinimumContentSize(const QSize& size)
{
    fMinimumContentSize = size;
    if (isResizable())
        setMinimumSize(size + QSize(0, menuBarHeight()));
}

void ZEK_Window::setMenuBar(QMenuBar* bar)
{
    const QSize content = contentSize();
    bar->setParent(this);
    fMenuBar = bar;
    setMinimumContentSize(fMinimumContentSize);
    setContentSize(content);
    bar->show();
}

void ZEK_Window::layOut()
{
    const int menuHeight = menuBarHeight();
    if (fMenuBar)
        fMenuBar->setGeometry(0, 0, width(), menuHeight);
    QWidget* const content = contentView();
    if (content == nullptr)
        return;
    const QSize before = content->size();
    content->setGeometry(0, menuHeight, width(), height() - menuHeight);
    const QSize change = content->size() - before;
    if (change.isNull())
        return;
    for (QWidget* const view : content->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        Autoresize(*view, change);
}

void ZEK_Window::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    layOut();
}

void ZEK_Window::center()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return;
    ensurePolished(); // its menu bar comes with that
    const QRect visible = screen->availableGeometry();
    const QSize space = visible.size() - size();
    move(visible.x() + space.width() / 2, visible.y() + qMax(0, space.height() / 3));
}

void ZEK_Window::makeKeyAndOrderFront()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void ZEK_Window::performClose() { close(); }

void ZEK_Window::closeEvent(QCloseEvent* event)
{
    if (event->spontaneous() && !property("closable").toBool()) {
        event->ignore();
        fCloseKey.start();
        return;
    }
    CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(),
        CFText(kWindowWillCloseNotification).get(), this, nullptr, true);
}

void ZEK_Window::actAsCloseKey()
{
    if (!isVisible())
        return;
    if (auto* const closeButton = findChild<InvisibleButton*>())
        closeButton->click();
    else
        cancelOperation();
}

void ZEK_Window::cancelOperation()
{
    if (fController != nullptr)
        fController->cancelOperation();
}

void ZEK_Window::keyPressEvent(QKeyEvent* event)
{
    // Some keyboards have the period on a shifted key.
    const auto modifiers = event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
    const bool commandPeriod = event->key() == Qt::Key_Period && modifiers == Qt::ControlModifier;
    if (event->key() == Qt::Key_Escape || commandPeriod)
        cancelOperation();
    else
        QWidget::keyPressEvent(event);
}
