#pragma once

#include <QAbstractButton>

/// The round button with a question mark that opens the help, named so for who cannot see it.
class HelpButton : public QAbstractButton {
    Q_OBJECT

public:
    explicit HelpButton(QWidget* parent = nullptr);
    QSize sizeHint() const override; ///< as high as a line of text with room around it, and as wide

protected:
    void paintEvent(QPaintEvent* event) override;
};
