#pragma once

#include "ui/framework/Nib.h"
#include <QTextBrowser>
#include <string>

/// Shows the agreement, with some room around the text. Links open as the desktop does; they are reached by Tab.
class LicenseTextView : public QTextBrowser, public NibView {
    Q_OBJECT

public:
    explicit LicenseTextView(QWidget* parent = nullptr);

    void awakeFromNib() override;
    /// Replaces the text by that of a rich-text file. @return false, the view left empty, when it cannot be read.
    bool readRTFDFromFile(const std::string& path);

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void follow(const QUrl& link);
    void applyTextContainerInset();

    std::string fPath;
    QSizeF fTextContainerInset; ///< in points
};
