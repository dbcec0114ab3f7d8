#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <vector>

class QMenuBar;
class ZEK_WindowController;

/// Posted to the local notification center, the window as its object, when a window is about to close.
inline constexpr char kWindowWillCloseNotification[] = "NSWindowWillCloseNotification";

/// A window from a nib: a content view with controls at fixed places, above it a menu bar where there is one.
/// Escape and Command-period (Control-period off a Mac) ask its controller to cancel.
///
/// Properties that a nib may set on the window:
///   "resizable"  bool, false unless set: whether the user may change its size
///   "closable"   bool, false unless set: whether the title bar's close button simply closes it; where not, that
///                button does what the close key equivalent does, or else Escape
/// and on each control in the content view:
///   "autoresizingMask"  text with any of minX, width, maxX, minY, height, maxY: which distances and sizes take up a
///                change of the content view's size, minY being the distance to the lower edge; "maxX minY" unless set
class ZEK_Window : public QWidget {
    Q_OBJECT

public:
    explicit ZEK_Window(QWidget* parent = nullptr);

    /// All windows of the application, open or not. Deleting one leaves the others.
    static std::vector<ZEK_Window*> windows();

    /// The view named "contentView"; null when the nib has none.
    QWidget* contentView() const;
    QSize contentSize() const; ///< in pixels
    /// Changes the size and lets the controls follow at once.
    void setContentSize(const QSize& size);
    /// How small the user can make the content, in pixels; no bound on a window that is not resizable.
    QSize minimumContentSize() const { return fMinimumContentSize; }
    void setMinimumContentSize(const QSize& size);
    bool isResizable() const;

    /// Shows a bar above the content, which keeps its size. The window owns the bar.
    void setMenuBar(QMenuBar* bar);

    /// The controller that hears of the user's wish to cancel; null for none. It has to leave before it is destroyed.
    void setWindowController(ZEK_WindowController* controller) { fController = controller; }

    /// Puts the window into the middle of the screen, somewhat above its vertical centre.
    void center();
    /// Shows the window in front of all others and gives it the keyboard.
    void makeKeyAndOrderFront();
    /// What the title bar's close button of a closable window does.
    void performClose();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void cancelOperation();
    void actAsCloseKey();
    int menuBarHeight() const;
    void layOut();

    QPointer<QMenuBar> fMenuBar;
    ZEK_WindowController* fController = nullptr;
    QSize fMinimumContentSize { 0, 0 };
    QTimer fCloseKey; ///< runs out once the toolkit is done with a refused wish to close
};
