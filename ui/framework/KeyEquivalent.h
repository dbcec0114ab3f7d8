#pragma once

class QAbstractButton;
class QKeyEvent;
class QPushButton;

/// Whether the key is Return, or the numeric keypad's Enter.
bool IsReturnKey(const QKeyEvent& event);

/// Makes Return and Enter press this button wherever in its window the keyboard is, draws it as the default one, and gives it
/// the keyboard first. To be called after the button is titled, which takes key equivalents away.
void SetReturnKeyEquivalent(QPushButton& button);

/// Shows the button pressed for 0.05 s, which blocks: long enough to be seen before its window goes.
void HighlightButton(QAbstractButton& button);
