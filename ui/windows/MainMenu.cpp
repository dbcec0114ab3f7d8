#include "ui/windows/MainMenu.h"

#include "app/AppController.h"
#include "ui/framework/Geometry.h"
#include "ui/framework/Help.h"
#include "ui/framework/InvisibleButton.h"
#include "ui/framework/ZEK_Window.h"
#include "util/Bundle.h"
#include "util/CFText.h"

#include <QApplication>
#include <QEvent>
#include <QMenuBar>
#include <algorithm>

namespace {

/// The size of the window that holds nothing but the menu, in points, without the bar.
constexpr Rect kMenuWindowFrame { 0, 0, 320, 0 };

}

MainMenu::MainMenu()
{
    addItem(fApplicationMenu, AppController::kAboutItem, {})->setMenuRole(QAction::AboutRole);
    fApplicationMenu.addSeparator();
    addItem(fApplicationMenu, AppController::kUninstallItem, {})
        ->setMenuRole(QAction::ApplicationSpecificRole);
    fApplicationMenu.addSeparator();
    addItem(fApplicationMenu, AppController::kQuitItem, QKeySequence(Qt::CTRL | Qt::Key_Q))
        ->setMenuRole(QAction::QuitRole);
    addItem(fHelpMenu, AppController::kHelpItem, QKeySequence::HelpContents);
    fApplicationMenu.setTitle(QString::fromStdString(StdString(MainBundleText(CFSTR("CFBundleName")))));
    connect(&fApplicationMenu, &QMenu::aboutToShow, this, &MainMenu::validate);
    fUpdate.setSingleShot(true);
    connect(&fUpdate, &QTimer::timeout, this, &MainMenu::updateMenuWindow);
    qApp->installEventFilter(this);
}

MainMenu::~MainMenu() = default;

QAction* MainMenu::addItem(QMenu& menu, int32_t tag, const QKeySequence& shortcut)
{
    QAction* const item = menu.addAction(QString());
    item->setShortcut(shortcut);
    item->setShortcutContext(Qt::ApplicationShortcut);
    connect(item, &QAction::triggered, this, [this, tag] { chosen(tag); });
    fItems[tag] = item;
    return item;
}

void MainMenu::setTitle(int32_t tag, const std::string& title)
{
    const QString text = QString::fromStdString(title).replace('&', "&&");
    if (tag == AppController::kHelpMenu)
        fHelpMenu.setTitle(text);
    else if (fItems.contains(tag))
        fItems[tag]->setText(text);
}

void MainMenu::validate()
{
    for (const auto& [tag, item] : fItems)
        item->setEnabled(AppController::appControllerPtr()->validateMenuItem(tag));
}

void MainMenu::chosen(int32_t tag)
{
    AppController& controller = *AppController::appControllerPtr();
    // Whoever chooses by other means than the mouse and the keys can reach a menu behind an alert.
    if (QApplication::activeModalWidget() != nullptr || !controller.validateMenuItem(tag))
        return;
    if (tag == AppController::kQuitItem)
        controller.quit();
    else if (tag == AppController::kHelpItem)
        ShowHelp("");
    else
        controller.handleMenuSelection(tag);
}

void MainMenu::addBar(ZEK_Window& window)
{
    auto* const bar = new QMenuBar(&window);
    bar->addMenu(&fApplicationMenu);
    bar->addMenu(&fHelpMenu);
    window.setMenuBar(bar);
}

bool MainMenu::eventFilter(QObject* watched, QEvent* event)
{
    auto* const window = qobject_cast<ZEK_Window*>(watched);
    if (window == nullptr)
        return false;
    // A window that runs alone has no menu: nothing in it could be chosen.
    if (event->type() == QEvent::Polish && !window->isModal() && window != fMenuWindow.get())
        addBar(*window);
    if (event->type() == QEvent::Show || event->type() == QEvent::Hide)
        fUpdate.start(); // once all that opens and closes now has done so
    return false;
}

void MainMenu::makeMenuWindow()
{
    fMenuWindow = std::make_unique<ZEK_Window>();
    fMenuWindow->setWindowTitle(fApplicationMenu.title());
    SetFrame(*fMenuWindow, kMenuWindowFrame);
    addBar(*fMenuWindow);
    // Closing the last thing that is left to see ends the application.
    auto* const closeButton = new InvisibleButton(fMenuWindow.get());
    closeButton->setShortcut(QKeySequence::Close);
    connect(closeButton, &QAbstractButton::clicked, this, [this] { chosen(AppController::kQuitItem); });
}

void MainMenu::updateMenuWindow()
{
    const std::vector<ZEK_Window*> windows = ZEK_Window::windows();
    const bool otherIsOpen = std::any_of(windows.begin(), windows.end(),
        [this](const ZEK_Window* window) { return window != fMenuWindow.get() && window->isVisible(); });
    const bool isShown = fMenuWindow != nullptr && fMenuWindow->isVisible();
    if (otherIsOpen == !isShown)
        return;
    if (otherIsOpen) {
        fMenuWindow->hide();
        return;
    }
    if (fMenuWindow == nullptr)
        makeMenuWindow();
    fMenuWindow->center();
    fMenuWindow->makeKeyAndOrderFront();
}
