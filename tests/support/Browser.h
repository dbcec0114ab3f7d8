#pragma once

#include <QObject>
#include <QUrl>
#include <string>
#include <vector>

/// Writes down, while it lives, the "https" addresses that are to be opened, in place of the desktop's browser.
class Browser : public QObject {
    Q_OBJECT

public:
    Browser();
    ~Browser() override;
    Q_INVOKABLE void open(const QUrl& url);

    std::vector<std::string> opened;
};
