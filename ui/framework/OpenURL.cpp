#include "ui/framework/OpenURL.h"

#include <QCursor>
#include <QDesktopServices>
#include <QToolTip>
#include <QUrl>

void OpenURL(const QUrl& url, QWidget& from)
{
    if (!QDesktopServices::openUrl(url))
        QToolTip::showText(QCursor::pos(), url.toDisplayString(), &from);
}
