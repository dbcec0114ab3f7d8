#include "ui/framework/Nib.h"

#include "ui/framework/ClickableTextField.h"
#include "ui/framework/Geometry.h"
#include "ui/framework/HelpButton.h"
#include "ui/framework/Images.h"
#include "ui/framework/InvisibleButton.h"
#include "ui/framework/ZEK_Window.h"
#include "ui/framework/ZEK_WindowHeaderView.h"
#include "util/Bundle.h"
#include "util/CFText.h"

#include <QCoreApplication>
#include <QFile>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QtUiTools/QUiLoader>
#include <map>

namespace {

/// Leaves more room beside its title than styles do that draw for dense dialogs.
class NibPushButton : public QPushButton {
public:
    using QPushButton::QPushButton;
    QSize sizeHint() const override { return QPushButton::sizeHint() + QSize(fontMetrics().height(), 0); }

protected:
    /// A default button has the outline that styles give the one with the keyboard, so that gets a line of its own.
    void paintEvent(QPaintEvent* event) override
    {
        QPushButton::paintEvent(event);
        if (!isDefault() || !hasFocus() || !window()->testAttribute(Qt::WA_KeyboardFocusChange))
            return;
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::ButtonText));
        painter.drawRect(rect().adjusted(3, 3, -4, -4));
    }
};

using MakeView = std::function<QWidget*(QWidget* parent)>;

template <class View> QWidget* Make(QWidget* parent) { return new View(parent); }

std::map<QString, MakeView>& ViewClasses()
{
    static std::map<QString, MakeView> classes {
        { "ZEK_Window", Make<ZEK_Window> },
        { "ZEK_WindowHeaderView", Make<ZEK_WindowHeaderView> },
        { "ClickableTextField", Make<ClickableTextField> },
        { "HelpButton", Make<HelpButton> },
        { "InvisibleButton", Make<InvisibleButton> },
        { "QPushButton", Make<NibPushButton> },
    };
    return classes;
}

/// Lets the toolkit find none of its plug-ins until they are put back.
class WithoutPlugins {
public:
    WithoutPlugins() { QCoreApplication::setLibraryPaths({}); }
    void putBack() const { QCoreApplication::setLibraryPaths(fPaths); }

private:
    const QStringList fPaths = QCoreApplication::libraryPaths();
};

/// Does without Designer's plug-ins, which the toolkit's loader reads when it is made: that would take longer than
/// loading all nibs.
class NibLoader : private WithoutPlugins, public QUiLoader {
public:
    NibLoader() { putBack(); }

    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override
    {
        const auto known = ViewClasses().find(className);
        if (known == ViewClasses().end())
            return QUiLoader::createWidget(className, parent, name);
        QWidget* const view = known->second(parent);
        view->setObjectName(name);
        return view;
    }
};

QSize Scaled(const QSize& size, double scale)
{
    return { qRound(size.width() * scale), qRound(size.height() * scale) };
}

/// Gives a control its size in pixels, its font and its image.
void PrepareView(QWidget& view, double scale)
{
    const QRect frame = view.geometry();
    view.setGeometry(
        { QPoint(qRound(frame.x() * scale), qRound(frame.y() * scale)), Scaled(frame.size(), scale) });
    const QString image = view.property("imageName").toString();
    if (auto* const label = qobject_cast<QLabel*>(&view); label != nullptr && !image.isEmpty())
        label->setPixmap(ImageNamed(image.toStdString(), label->size(), label->devicePixelRatioF()));
    const double fontScale = view.property("fontScale").toDouble();
    if (fontScale <= 0)
        return;
    QFont font = view.font();
    font.setPointSizeF(font.pointSizeF() * fontScale);
    view.setFont(font);
}

/// Turns the nib's points into pixels.
void ScaleWindow(ZEK_Window& window)
{
    const double scale = PixelsPerPoint();
    const QSize minimum = Scaled(window.minimumSize(), scale);
    window.setMinimumSize(0, 0);
    QWidget& content = *window.contentView();
    content.setGeometry({ QPoint(), Scaled(content.size(), scale) });
    for (QWidget* const view : content.findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        PrepareView(*view, scale);
    window.setMinimumContentSize(minimum);
    window.setContentSize(content.size());
}

}

void RegisterNibClass(const QString& className, std::function<QWidget*(QWidget*)> make)
{
    ViewClasses()[className] = std::move(make);
}

Nib::Nib(const std::string& name)
    : fName(name)
{
    QFile file(QFile::decodeName((MainBundleResources() + "/" + name + ".ui").c_str()));
    if (!file.open(QIODevice::ReadOnly)) {
        fError = "cannot open the nib " + file.fileName().toStdString() + ": "
            + file.errorString().toStdString();
        return;
    }
    NibLoader loader;
    QWidget* const root = loader.load(&file);
    fWindow.reset(dynamic_cast<ZEK_Window*>(root));
    if (fWindow == nullptr || fWindow->contentView() == nullptr) {
        const std::string reason = root == nullptr ? loader.errorString().toStdString()
                                                   : "it holds no ZEK_Window with a contentView";
        fError = "cannot load the nib " + file.fileName().toStdString() + ": " + reason;
        if (fWindow == nullptr)
            delete root;
        fWindow.reset();
        return;
    }
    fWindow->setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint
        | Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    fWindow->setWindowFlag(Qt::WindowMaximizeButtonHint, fWindow->isResizable());
    ScaleWindow(*fWindow);
    for (QWidget* const view : fWindow->findChildren<QWidget*>()) {
        if (auto* const nibView = dynamic_cast<NibView*>(view))
            nibView->awakeFromNib();
    }
}

Nib::~Nib() = default;

QWidget* Nib::find(const char* name) const { return fWindow->findChild<QWidget*>(name); }

void Nib::reportOutlet(const char* name)
{
    if (fError.empty())
        fError = "the nib " + fName + " has no fitting " + name;
}

ZEK_Window* Nib::releaseWindow() { return fWindow.release(); }
