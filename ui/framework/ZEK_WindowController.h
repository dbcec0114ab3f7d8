#pragma once

#include "ui/framework/Nib.h"
#include "ui/framework/ZEK_Window.h"
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class QAbstractButton;

/// The base of everything that runs a window: loads it from its nib, shows it in front and in the middle of the screen or
/// where the user left it, and acts on Escape. Main thread only.
class ZEK_WindowController {
public:
    virtual ~ZEK_WindowController();
    ZEK_WindowController(const ZEK_WindowController&) = delete;
    ZEK_WindowController& operator=(const ZEK_WindowController&) = delete;

    /// The window, filled by awakeFromNib() the first time it is asked for. Owned by the controller; null when the nib could
    /// not be loaded.
    ZEK_Window* window();

    /// The user-defaults key under which the window's frame is kept; none unless overridden, and then it is not kept.
    virtual std::optional<std::string> returnWindowPositionKey() const;
    /// The button that stands for cancelling; null unless overridden.
    virtual QAbstractButton* returnCancelButton() const;
    /// What Escape and Command-period do: flash the cancel button and close.
    virtual void cancelOperation();
    /// Shows the cancel button pressed for a moment, as HighlightButton() does; nothing without one.
    void highlightCancelButton();

    /// Brings the application and the window to the front, the window where the user left it if that is remembered, else
    /// in the middle of the screen. Each call registers once more for the window's closing.
    void showWindow();
    /// Brings only the window to the front: its place is its own affair.
    void showWindowWithoutRestoringWindowPositions();
    /// Keeps the frame of the closing window if that is wanted. Overriders call it too.
    virtual void windowWillCloseNotification(ZEK_Window& closing);
    virtual void close();

protected:
    ZEK_WindowController() = default;

    /// Loads the nib and its outlets.
    /// @return false, with a message on standard error, when it is missing, malformed or lacks an outlet.
    bool initWithWindowNibName(const std::string& nibName);
    /// Binds the subclass's outlets.
    virtual void connectOutlets(Nib& nib) = 0;
    /// Has a button call an action when clicked while the window is open: a click that was under way when the window went
    /// does nothing more, nor does any once the controller has gone. @param button null for none.
    void connectAction(QAbstractButton* button, std::function<void()> action);
    /// Fills the window before it is first shown.
    virtual void awakeFromNib() = 0;

private:
    QPointer<ZEK_Window> fWindow; ///< null as well once the toolkit has deleted it
    QObject fTarget; ///< the buttons' actions end with it
    bool fIsAwake = false;
};
