#include "tests/support/Browser.h"

#include <QDesktopServices>

Browser::Browser() { QDesktopServices::setUrlHandler("https", this, "open"); }

Browser::~Browser() { QDesktopServices::unsetUrlHandler("https"); }

void Browser::open(const QUrl& url) { opened.push_back(url.toString().toStdString()); }
