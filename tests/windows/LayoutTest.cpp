#include "tests/windows/Person.h"

#include "app/AppController.h"
#include "app/WindowFrontEnd.h"
#include "install/DriverInterface.h"
#include "ui/framework/Geometry.h"
#include "ui/framework/InvisibleButton.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/framework/ZEK_WindowHeaderView.h"
#include "ui/windows/AboutWindowController.h"
#include "ui/windows/DialogWindowController.h"
#include "ui/windows/InstallWindowController.h"
#include "ui/windows/LicenseTextView.h"
#include "ui/windows/LicenseWindowController.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <map>
#include <optional>

namespace {

/// What every window keeps clear of controls on either side, in points.
constexpr int kMargin = 20;
/// Of text to what is behind it, so that people with moderately low vision can read it.
constexpr double kReadableContrast = 4.5;

double Linear(double part) { return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); }

double Luminance(QRgb color)
{
    const QColor parts(color);
    return 0.2126 * Linear(parts.redF()) + 0.7152 * Linear(parts.greenF()) + 0.0722 * Linear(parts.blueF());
}

double Contrast(QRgb one, QRgb other)
{
    const auto [darker, lighter] = std::minmax({ Luminance(one), Luminance(other) });
    return (lighter + 0.05) / (darker + 0.05);
}

/// How much the colour that differs most stands out from the one that most of the picture has.
double TextContrast(const QImage& picture)
{
    std::map<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    }
    const auto background = std::max_element(
        counts.begin(), counts.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
    double contrast = 1;
    for (const auto& [color, count] : counts)
        contrast = std::max(contrast, Contrast(color, background->first));
    return contrast;
}

/// Where a control shows its text, without the frame or box beside it.
QRect TextArea(const QWidget& view)
{
    if (const auto* const label = qobject_cast<const QLabel*>(&view)) {
        const int flags = static_cast<int>(label->alignment()) | (label->wordWrap() ? Qt::TextWordWrap : 0);
        return label->fontMetrics().boundingRect(label->contentsRect(), flags, label->text());
    }
    const int frame = view.height() / 6;
    return view.rect().adjusted(
        qobject_cast<const QCheckBox*>(&view) != nullptr ? view.height() : frame, frame, -frame, -frame);
}

bool HasText(const QWidget& view) { return !view.property("text").toString().isEmpty(); }

/// What a person sees in the window, apart from the band that lies behind other controls.
std::vector<QWidget*> Controls(const ZEK_Window& window)
{
    std::vector<QWidget*> controls;
    if (window.contentView() == nullptr)
        return controls;
    for (QWidget* const view : window.contentView()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (view->isVisible() && qobject_cast<InvisibleButton*>(view) == nullptr
            && qobject_cast<ZEK_WindowHeaderView*>(view) == nullptr)
            controls.push_back(view);
    }
    return controls;
}

std::string Name(const QWidget& view) { return view.objectName().toStdString(); }

void ExpectTextFits(const QWidget& view)
{
    if (qobject_cast<const QLabel*>(&view) != nullptr) {
        const QRect text = TextArea(view);
        EXPECT_TRUE(!HasText(view) || view.contentsRect().contains(text))
            << text.width() << "x" << text.height() << " in " << view.width() << "x" << view.height();
    } else if (const auto* const agreement = qobject_cast<const LicenseTextView*>(&view)) {
        EXPECT_EQ(agreement->horizontalScrollBar()->maximum(), 0) << "it has to be moved sideways to be read";
    } else {
        EXPECT_LE(view.sizeHint().width(), view.width());
        EXPECT_LE(view.sizeHint().height(), view.height());
    }
}

void ExpectButtonRow(const ZEK_Window& window)
{
    QList<QPushButton*> row = window.findChildren<QPushButton*>();
    row.removeIf([](const QPushButton* button) { return !button->isVisible(); });
    if (row.isEmpty())
        return;
    for (const QPushButton* const button : row) {
        EXPECT_EQ(button->height(), row[0]->height());
        EXPECT_EQ(button->y(), row[0]->y());
    }
    const auto last = std::max_element(
        row.begin(), row.end(), [](const QWidget* a, const QWidget* b) { return a->x() < b->x(); });
    EXPECT_TRUE(Name(**last) == "fInstallButtonPtr" || Name(**last) == "fAgreeButtonPtr"
        || Name(**last) == "fFirstButtonPtr")
        << Name(**last) << " is where the button to go on belongs";
}

void ExpectNothingClipped(const ZEK_Window& window)
{
    const auto* const bar = window.findChild<QMenuBar*>();
    EXPECT_TRUE(bar == nullptr || bar->sizeHint().width() <= window.width()) << "the menu";
    const std::vector<QWidget*> controls = Controls(window);
    const int margin = static_cast<int>(kMargin * PixelsPerPoint());
    for (auto control = controls.begin(); control != controls.end(); ++control) {
        SCOPED_TRACE(Name(**control));
        ExpectTextFits(**control);
        const QRect& frame = (*control)->geometry();
        const QRect& whole = window.contentView()->rect();
        EXPECT_TRUE(whole.contains(frame));
        EXPECT_GE(frame.left(), margin);
        EXPECT_LE(frame.right(), whole.right() - margin);
        for (auto other = controls.begin(); other != control; ++other)
            EXPECT_FALSE((*other)->geometry().intersects(frame)) << "both there: " << Name(**other);
    }
    ExpectButtonRow(window);
}

void ExpectReadable(ZEK_Window& window)
{
    const QImage picture = window.grab().toImage();
    for (const QWidget* const control : Controls(window)) {
        if (!HasText(*control) || !control->isEnabled())
            continue;
        const QRect area = TextArea(*control).translated(control->mapTo(&window, QPoint()));
        EXPECT_GE(TextContrast(picture.copy(area)), kReadableContrast) << Name(*control);
    }
}

/// Parameters: the language, and the size of text in percent of the usual one.
class LayoutTest : public WindowsTest, public ::testing::WithParamInterface<std::tuple<std::string, int>> {
protected:
    LayoutTest()
    {
        const auto& [language, textSize] = GetParam();
        speak(std::string(language) + ".UTF-8");
        setenv("QT_ENABLE_HIGHDPI_SCALING", "0", 1); // which enlarges pixels, and no text in them
        setenv("QT_FONT_DPI", std::to_string(96 * textSize / 100).c_str(), 1);
        fApplication.emplace(fArgumentCount, fArguments);
        fFrontEnd.emplace();
        QApplication::setQuitOnLastWindowClosed(false);
    }

    void start(const std::string& agentVersion, const std::string& driverVersion)
    {
        prepare(agentVersion, driverVersion);
        AppController::init(*fFrontEnd)->awakeFromNib();
    }

    template <class Controller> static void inspect(void (*show)())
    {
        inLightAndDark([show] {
            show();
            inspectWindow(*Controller::openController()->window());
            Controller::openController()->close();
        });
    }

    static void inspectAlert(int32_t number)
    {
        inLightAndDark([number] {
            const auto alert = DialogWindowController::initWithAlertPanelNumber(number);
            SCOPED_TRACE("alert " + std::to_string(number));
            alert->showWindow();
            inspectWindow(*alert->window());
            alert->close();
        });
    }

    /// The window that has nothing but the menu.
    void inspectMenuWindow()
    {
        fFrontEnd->ensureReachable();
        QCoreApplication::processEvents();
        const auto* const window = qobject_cast<ZEK_Window*>(QApplication::activeWindow());
        ASSERT_NE(window, nullptr);
        ExpectNothingClipped(*window);
    }

private:
    static void inLightAndDark(const std::function<void()>& inspectAll)
    {
        for (const bool isDark : { false, true }) {
            SCOPED_TRACE(isDark ? "dark" : "light");
            QApplication::setPalette(ApplicationPalette(isDark));
            inspectAll();
        }
    }

    static void inspectWindow(ZEK_Window& window)
    {
        SCOPED_TRACE(Name(window));
        QCoreApplication::processEvents();
        ASSERT_FALSE(Controls(window).empty());
        ExpectNothingClipped(window);
        ExpectReadable(window);
        if (!window.isResizable())
            return;
        SCOPED_TRACE("at its smallest");
        window.resize(window.minimumSize());
        ExpectNothingClipped(window);
    }

    char fProgram[16] = "windows_test";
    char* fArguments[2] = { fProgram, nullptr };
    int fArgumentCount = 1;
    std::optional<QApplication> fApplication;
    std::optional<WindowFrontEnd> fFrontEnd;
};

}

TEST_P(LayoutTest, ShowsEverythingWholeAndReadable)
{
    ASSERT_NEAR(PixelsPerPoint() * 100, std::get<1>(GetParam()), 15);
    start("", "");
    inspectMenuWindow();
    inspect<LicenseWindowController>(&LicenseWindowController::showLicenseWindow);
    inspect<InstallWindowController>(&InstallWindowController::showInstallWindow);
    inspect<AboutWindowController>(&AboutWindowController::showAboutWindow);
    for (int32_t alert = 1; alert <= 8; ++alert)
        inspectAlert(alert);
    start("1.0", "0.9");
    inspect<InstallWindowController>(&InstallWindowController::showInstallWindow);
    start(INSTALLER_VERSION, "0.9");
    inspect<InstallWindowController>(&InstallWindowController::showInstallWindow);
    ASSERT_EQ(DriverInterface::driverInterfacePtr()->update(), noErr); // alerts ask for a restart from now on
    for (const int32_t alert : { 1, 3, 5 })
        inspectAlert(alert);
}

INSTANTIATE_TEST_SUITE_P(AllLanguages, LayoutTest,
    ::testing::Combine(
        ::testing::Values("en_US", "de_DE", "fr_FR", "es_ES", "ja_JP", "zh_CN"), ::testing::Values(100, 200)),
    [](const auto& layout) {
        return std::string(std::get<0>(layout.param)) + "At" + std::to_string(std::get<1>(layout.param))
            + "Percent";
    });
