#pragma once

#include "util/CFRef.h"
#include <QElapsedTimer>
#include <QLabel>
#include <string>

/// A label that is a link while it has a URL: underlined in the regular label font, a pointing hand over its text; one
/// click, or Space or Return while it has the keyboard, opens the URL as the desktop does. Its text can be selected and
/// copied. Main thread only.
class ClickableTextField : public QLabel {
    Q_OBJECT

public:
    explicit ClickableTextField(QWidget* parent = nullptr);

    /// Replaces the text, as a link when there is a URL.
    void setStringValue(const std::string& text);
    std::string stringValue() const;
    /// Sets the target; null makes it a plain label. The text is rebuilt only when it becomes a link or ceases to be one;
    /// so set the URL once.
    void setURL_Ptr(CFRef<CFURLRef> url);
    /// The same with a URL's text; one that cannot be read gives no URL.
    void setURL_WithString(const std::string& url);

    CFURLRef url() const { return fURL_Ptr.get(); } ///< borrowed; null for none
    /// The area with the pointing hand: the text as drawn, from the upper left corner; empty without a URL. In pixels.
    QRect textFieldRect() const { return fTextFieldRect; }
    /// Opens the URL; nothing without one.
    void openURL();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    int nextClickCount() const;

    CFRef<CFURLRef> fURL_Ptr;
    QRect fTextFieldRect;
    QPoint fPressedAt;
    QElapsedTimer fPressedTime; ///< invalid before the first press
    int fClickCount = 0; ///< of the row of clicks that the press belongs to; 0 once it has become a drag
};
