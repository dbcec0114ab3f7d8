#pragma once

#include "Question.h"

#include <QDialog>

class QLabel;
struct AgentWords;

/// Asks whether a program may make changes. Accepted when the user allows it; Escape and closing the window reject it.
/// No button is the default one and none has the keyboard at first: Return that was meant for the window before, or is
/// still held from there, must neither allow nor refuse anything. Once Tab has chosen a button, Return presses it, and
/// so does the space bar.
class ConfirmationWindow : public QDialog {
public:
    ConfirmationWindow(const Question& question, const AgentWords& words);

    /// Shows the window in the middle of the screen that the pointer is on, above other windows, as far as the
    /// desktop lets it.
    void bringToFront();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QLayout* makeTexts(const Question& question, const AgentWords& words);
    QLayout* makeButtons(const AgentWords& words);
    QLabel* makeText(const char* name, const QString& text, int width);
};
