#pragma once

#include "app/ZEK_AppController.h"
#include "tests/support/RecordingFrontEnd.h"
#include "tests/support/TestVolume.h"
#include "ui/framework/Geometry.h"
#include "ui/framework/ZEK_WindowController.h"

#include <QPushButton>
#include <functional>
#include <gtest/gtest.h>
#include <set>

/// An application that remembers window positions, and in memory which alerts are suppressed.
class TestApplication : public ZEK_AppController {
public:
    static TestApplication& init(FrontEnd& frontEnd);
    static void end() { registerShared(nullptr); }

    bool rememberWindowPostions() const override
    {
        return remembersPositions && ZEK_AppController::rememberWindowPostions();
    }
    bool suppressDialogWithKey(const std::string& key) const override { return suppressed.count(key) == 1; }
    void setSuppressDialogWithKey(const std::string& key) override { suppressed.insert(key); }

    bool remembersPositions = true;
    std::set<std::string> suppressed;

private:
    using ZEK_AppController::ZEK_AppController;
};

/// A throw-away Mac and an application on it whose windows come from nibs that the test writes. The text is so small that a
/// point is a pixel.
class FrameworkTest : public ::testing::Test {
protected:
    FrameworkTest();
    ~FrameworkTest() override;

    /// Makes a point more than a pixel, by no whole number.
    static void useLargeText();
    /// Of a line in a text of several, in pixels: rounded for each, which a font's own height is not.
    static int lineHeight(const QFontMetrics& metrics)
    {
        return metrics.boundingRect(QRect(0, 0, 1000, 1000), Qt::TextWordWrap, "x").height();
    }
    /// Gives the application a light or dark appearance, and tells nobody.
    static void setDark(bool dark);
    /// Tells of a change of the appearance, as the system does.
    static void tellAppearanceChange();
    /// A control of a nib. @param frame from the upper left corner. @param properties as the .ui file has them.
    static std::string control(const std::string& className, const std::string& name, const QRect& frame,
        const std::string& properties = "");
    /// A text property that is not the toolkit's own.
    static std::string property(const std::string& name, const std::string& value);
    /// Writes a nib with a content view of 300 by 200 points.
    void writeNib(
        const std::string& name, const std::string& controls, const std::string& windowProperties = "") const;

    /// Waits until a shown window can have the keyboard.
    static void activate(QWidget& window);
    /// Sends a key that repeats while it is held down.
    static void holdKey(QWidget& window, Qt::Key key);
    /// Does what is asked once the window runs modally. @return the result; -99 when the run had to be ended from outside.
    static int32_t runModal(ZEK_Window& window, const std::function<void()>& action);

    TestVolume volume;
    RecordingFrontEnd frontEnd;
    TestApplication& application;
};

/// Runs a nib's window and counts what happens to it.
class TestController : public ZEK_WindowController {
public:
    bool load(const std::string& nib) { return initWithWindowNibName(nib); }

    std::optional<std::string> returnWindowPositionKey() const override { return key; }
    QAbstractButton* returnCancelButton() const override { return cancelButton; }
    void windowWillCloseNotification(ZEK_Window& window) override
    {
        ++closings;
        ZEK_WindowController::windowWillCloseNotification(window);
    }

    std::optional<std::string> key;
    std::string outlet; ///< of the button that `cancelButton` is to be; "" for none
    QPushButton* cancelButton = nullptr;
    int awakenings = 0;
    int closings = 0;

protected:
    void connectOutlets(Nib& nib) override
    {
        if (!outlet.empty())
            nib.connectOutlet(outlet.c_str(), cancelButton);
    }
    void awakeFromNib() override { ++awakenings; }
};

/// A button whose fitting size is 10 by 24 points for each character of its title, and that remembers what it looked like.
class FixedButton : public QPushButton {
public:
    explicit FixedButton(QWidget* parent = nullptr)
        : QPushButton(parent)
    {
    }
    QSize sizeHint() const override { return fixedSize.isEmpty() ? fittingSize(text()) : fixedSize; }
    static QSize fittingSize(const QString& text, int height = 24)
    {
        return (QSizeF(10.0 * static_cast<double>(text.size()), height) * PixelsPerPoint()).toSize();
    }

    QSize fixedSize; ///< where not empty, the fitting size in pixels instead
    std::vector<bool> paintedDown; ///< for each time it was drawn, whether pressed

protected:
    void paintEvent(QPaintEvent* event) override
    {
        paintedDown.push_back(isDown());
        QPushButton::paintEvent(event);
    }
};
