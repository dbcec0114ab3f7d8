#pragma once

#include "tests/support/TestVolume.h"

#include <QString>
#include <deque>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

class QWidget;
class ZEK_Window;

/// The installer as it was built, on a volume of its own, its windows on a screen that nobody sees. It speaks English, and
/// finds recorders in place of launchctl, the help viewer and the driver's tool. What it keeps in the process is never reset,
/// so each test needs a process of its own.
class WindowsTest : public ::testing::Test {
protected:
    WindowsTest();

    static void speak(const std::string& locale);
    /// Puts an agent and a driver on the volume, in place of those that are there; "" for none.
    void prepare(const std::string& agentVersion, const std::string& driverVersion);
    void acceptLicense();

    TestVolume volume;
};

/// A person who works with the installer through mouse and keyboard alone.
class PersonTest : public WindowsTest {
protected:
    static constexpr const char* kLicense = "LicenseWindow";
    static constexpr const char* kInstall = "InstallWindow";
    static constexpr const char* kAlert = "DialogWindow";
    static constexpr const char* kAbout = "AboutWindow";
    static constexpr const char* kMenuWindow = ""; ///< has nothing but the menu, and is from no nib

    /// What the person does as soon as the window of this nib has the keyboard and all that was told before is done.
    void when(const std::string& nib, std::function<void()> act);
    /// Runs the installer until it ends. A window that does not come within ten seconds, and an installer that then does
    /// not end, fail the test.
    /// @return its exit status.
    int run();

    static ZEK_Window& window(); ///< the one in front
    static QWidget& control(const char* name); ///< of that window
    static QString text(const char* label);
    static bool isChecked(const char* button);
    /// @param side where on the control: only the text and the box of a check box can be clicked.
    static void click(const char* name, Qt::Alignment side = Qt::AlignCenter);
    static void drag(const char* name); ///< from the control's left edge to its right one
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static void closeByTitleBar();
    static void bringToFront(const std::string& nib);
    /// Opens the menu with this title and clicks an item. @return whether it could be chosen.
    static bool choose(const QString& menu, const QString& item);
    /// Chooses an item as an aid for people who use neither mouse nor keyboard can, wherever its menu is.
    static void chooseUnseen(const QString& item);

    /// The nibs of the windows that came up before the last thing that the person did, in order.
    std::vector<std::string> shown;

private:
    struct Step {
        std::string nib;
        std::function<void()> act;
    };
    static void begin();
    void proceed();

    std::deque<Step> fSteps;
    int fIdleTicks = 0;
};
