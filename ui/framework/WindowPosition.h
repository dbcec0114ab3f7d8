#pragma once

#include "ui/framework/Geometry.h"
#include <string>

// Where the user left a window, kept in the application's user defaults as the archived text of its frame. Main thread
// only.

/// Puts the window back where it was. A window that the user cannot resize keeps its size; one that he can is left alone
/// when the kept frame is smaller than the window's minimum. Whether the place is still on a screen is not asked.
/// @return whether a frame was applied.
bool RestoreWindowPosition(ZEK_Window& window, const std::string& key);

/// Reads the frame kept under the key; an entry that is no frame counts as the zero rectangle.
/// @param frame written only when there is an entry. @return whether there is one.
bool ReturnSavedWindowFrame(const std::string& key, Rect& frame);

/// Keeps the window's frame under the key, the zero rectangle for a null window.
void SaveWindowPosition(const ZEK_Window* window, const std::string& key);
