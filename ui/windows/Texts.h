#pragma once

#include "util/Bundle.h"
#include <QString>

/// The text of the installer's string tables for a key, in the user's language.
inline QString Localized(CFStringRef key) { return QString::fromStdString(LocalizedString(key)); }
