#pragma once

#include "util/CFRef.h"
#include <optional>
#include <string>
#include <string_view>

/// The text in UTF-8; "" for null.
std::string StdString(CFStringRef text);

/// The text as 7-bit ASCII; nothing when `text` is null or holds any other character.
std::optional<std::string> ASCIIString(CFStringRef text);

/// A string object for UTF-8 text; null when the bytes are not UTF-8.
CFRef<CFStringRef> CFText(std::string_view utf8);

/// The path that a file URL names, absolute, percent-decoded, as bytes for the file system, without a
/// trailing slash; "" for null or when the URL names no file.
std::string FileSystemPath(CFURLRef url);

/// A URL for an absolute path given in bytes of the file system; null when it cannot be made.
CFRef<CFURLRef> FileURL(std::string_view path, bool isDirectory);

/// The URL of `path`, which is percent-encoded for it, relative to a folder's URL. A path ending in "/" names
/// a folder.
/// @return null when `base` is null or the URL cannot be made.
CFRef<CFURLRef> URLRelativeTo(CFURLRef base, std::string_view path);
