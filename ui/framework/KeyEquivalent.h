#pragma once

class QPushButton;

/// Makes Return and Enter press this button wherever in its window the keyboard is, and draws it as the default one. To be
/// called after the button is titled, which takes key equivalents away.
void SetReturnKeyEquivalent(QPushButton& button);
