#pragma once

#include <cstdint>

class ZEK_Window;

/// Runs the application for this window alone until StopModalWithCode() is called or the window closes. The window is
/// showing and modal (QWidget::setWindowModality before it was shown). Runs may nest; then they end innermost first.
/// @return the code; 0 without one, as when the application ends meanwhile.
int32_t RunModalForWindow(const ZEK_Window& window);

/// Ends the innermost run; nothing outside of one.
void StopModalWithCode(int32_t code);
