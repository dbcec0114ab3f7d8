#pragma once

class QUrl;
class QWidget;

/// Opens a URL with the desktop's program for it. Where there is none, the address shows at the pointer, to be typed
/// elsewhere. @param from the view that the user clicked.
void OpenURL(const QUrl& url, QWidget& from);
