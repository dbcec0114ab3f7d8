#pragma once

#include "util/CFRef.h"
#include <string>

/// A text of a bundle's information dictionary as it stands there, not in the user's language; null when
/// there is none or it is not a text. Borrowed from the bundle.
CFStringRef BundleText(CFBundleRef bundle, CFStringRef key);

// What the bundle of the running program says and holds. A program whose bundle is gone has nothing of it.

/// The bundle's identifier; null when it has none. Borrowed.
CFStringRef MainBundleIdentifier();

/// The same of the main bundle.
CFStringRef MainBundleText(CFStringRef key);

/// The folder of the bundle's resources; "" when there is none.
std::string MainBundleResources();

/// The URL of a resource; null when it is missing. The extension may come with its point.
CFRef<CFURLRef> MainBundleResource(CFStringRef name, CFStringRef extension);

/// The text for a key in the default string table, or the key itself where there is no text.
std::string LocalizedString(CFStringRef key);
