#pragma once

#include "tools/driverinstall/Outcome.h"
#include <climits>
#include <string>
#include <string_view>

/// How one entry of the folder of extensions is replaced or taken away so that a run killed at any moment
/// leaves the old or the new extension there, whole. All work goes on under hidden names beside it, which the
/// next run clears:
///   .NAME.staging   a copy being made; after the swap, the old extension
///   .NAME.removed   an extension being deleted
///   .NAME.old       an old extension, always whole, moved aside where the file system cannot swap; a run
///                   that ends before the new one is in place leaves it for the next run to put back
/// The folder is open, trusted and locked by the caller (ExtensionsFolder).

inline constexpr std::string_view stagingSuffix = ".staging";
inline constexpr std::string_view removedSuffix = ".removed";
inline constexpr std::string_view oldSuffix = ".old";

/// In bytes; the point before and the longest suffix still have to fit into a file name.
inline constexpr size_t longestName = NAME_MAX - 1 - stagingSuffix.size();

/// ".NAME" with one of the suffixes above.
std::string HiddenName(std::string_view name, std::string_view suffix);

/// Clears what runs that were killed left behind, for all names: puts an old extension back where its name is
/// free, and deletes the rest. What cannot be deleted is reported and does not stop the run.
/// @return ok, or diskError when the folder cannot be read or flushed, or an old extension not be put back.
Outcome ClearLeftovers(int folder);

/// Makes the staged copy the extension `name`, in one step where the file system can. Whatever had that name
/// is deleted after the change is flushed.
/// @return ok, or diskError; then the old or the new extension has the name, whole, unless the file system
/// can neither swap nor put the old one back: then that is ".NAME.old" until the next run.
Outcome PutStagedInPlace(int folder, const std::string& name);

/// Deletes a staged copy that is of no use; what cannot be deleted is reported.
void DropStaged(int folder, const std::string& name);

/// Takes away whatever is called `name`; a symbolic link is removed itself.
/// @param found whether there was anything. @return ok or diskError.
Outcome TakeAway(int folder, const std::string& name, bool& found);
