#pragma once

#include <QMenu>
#include <QObject>
#include <QTimer>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

class QMenuBar;
class ZEK_Window;

/// The application's one menu. Every window shows it in a bar of its own, so it is always in the one that has the keyboard; when no
/// other window is open, a small window with nothing but the bar keeps it within reach. Items are known by their tags
/// (AppController::MenuTag). Main thread only; one object, as long as windows may be shown.
class MainMenu : public QObject {
    Q_OBJECT

public:
    MainMenu();
    ~MainMenu() override;

    void setTitle(int32_t tag, const std::string& title);
    /// Shows the menu's own window while there is no other, which happens by itself after any window opens or closes.
    void updateMenuWindow();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QAction* addItem(QMenu& menu, int32_t tag, const QKeySequence& shortcut);
    void chosen(int32_t tag);
    void validate();
    void addBar(ZEK_Window& window);
    void makeMenuWindow();

    QMenu fApplicationMenu;
    QMenu fHelpMenu;
    std::map<int32_t, QAction*> fItems; ///< by tag; owned by their menus
    std::unique_ptr<ZEK_Window> fMenuWindow; ///< null before it is first needed
    QTimer fUpdate;
};
