#pragma once

/// Tells screen readers what the framework's own controls are: that a link field is a link, and how to follow it. Once per
/// application, before the first window.
void InstallAccessibility();
