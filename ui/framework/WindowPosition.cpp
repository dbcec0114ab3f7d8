#include "ui/framework/WindowPosition.h"

#include "ui/framework/Archiver.h"
#include "ui/framework/ZEK_Window.h"
#include "util/CFText.h"

#include <QLocale>
#include <QRegularExpression>
#include <cmath>

namespace {

/// "{{x, y}, {width, height}}", whatever the user's language.
std::string TextOfRect(const Rect& rect)
{
    const auto number
        = [](double value) { return QByteArray::number(value, 'g', QLocale::FloatingPointShortest); };
    const QByteArray text = "{{" + number(rect.x) + ", " + number(rect.y) + "}, {" + number(rect.width) + ", "
        + number(rect.height) + "}}";
    return text.toStdString();
}

/// The zero rectangle for anything else.
Rect RectOfText(const std::string& text)
{
    static const QRegularExpression form(
        R"(^\s*\{\s*\{\s*([^,{}]+),\s*([^,{}]+)\}\s*,\s*\{\s*([^,{}]+),\s*([^,{}]+)\}\s*\}\s*$)");
    const QRegularExpressionMatch match = form.match(QString::fromStdString(text));
    double numbers[4] = {};
    for (int index = 0; index < 4; ++index) {
        bool isNumber = false;
        numbers[index] = match.captured(index + 1).trimmed().toDouble(&isNumber);
        if (!isNumber || !std::isfinite(numbers[index]))
            return {};
    }
    return { numbers[0], numbers[1], numbers[2], numbers[3] };
}

}

bool RestoreWindowPosition(ZEK_Window& window, const std::string& key)
{
    Rect frame;
    if (!ReturnSavedWindowFrame(key, frame))
        return false;
    if (!window.isResizable()) {
        const Rect current = Frame(window);
        frame.width = current.width;
        frame.height = current.height;
    } else {
        const QSize minimum = window.minimumContentSize();
        const double scale = PixelsPerPoint();
        if (frame.height < minimum.height() / scale || frame.width < minimum.width() / scale)
            return false;
    }
    SetFrame(window, frame);
    return true;
}

bool ReturnSavedWindowFrame(const std::string& key, Rect& frame)
{
    const CFRef<CFPropertyListRef> value(
        CFPreferencesCopyAppValue(CFText(key).get(), kCFPreferencesCurrentApplication));
    if (!value)
        return false;
    const CFRef<CFStringRef> text
        = UnarchiveObjectWithData(CFDynamicCast<CFDataRef>(value.get(), CFDataGetTypeID()));
    frame = RectOfText(StdString(text.get()));
    return true;
}

void SaveWindowPosition(const ZEK_Window* window, const std::string& key)
{
    const Rect frame = window != nullptr ? Frame(*window) : Rect();
    const CFRef<CFDataRef> value = ArchivedDataWithRootObject(CFText(TextOfRect(frame)).get());
    CFPreferencesSetAppValue(CFText(key).get(), value.get(), kCFPreferencesCurrentApplication);
    CFPreferencesAppSynchronize(
        kCFPreferencesCurrentApplication); // one that fails is made up for by the next
}
