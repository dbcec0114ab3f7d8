#pragma once

/// Whether there is a display to show windows on; on a Mac there always is.
bool HostHasDisplay();
