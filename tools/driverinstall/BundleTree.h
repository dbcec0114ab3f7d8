#pragma once

#include "tools/driverinstall/Outcome.h"
#include <string>
#include <vector>

/// Everything here works by descriptor and follows no symbolic link, so that a tree changed by its owner
/// while it is read can make a step fail but can never make it read or write elsewhere.
///
/// A tree is accepted when it holds only folders and plain files without set-id bits, is at most 64 folders
/// deep, has at most 100,000 entries and 1 GiB of data. Every entry must belong to the owner of the tree's
/// top or be readable by everybody: a hard link could otherwise bring in a file whose contents only root may
/// see.

/// Looks at every entry.
/// @param tree the top folder. @param shownName its name in messages. @return ok or badSource.
Outcome CheckTree(int tree, const std::string& shownName);

/// Copies every entry of `tree` with the checks of CheckTree(), as each entry is when it is opened, and
/// flushes the copies. The copies, `copy` itself included, get mode 0755 (folders and what somebody could
/// execute) or 0644, and belong to uid 0 and gid 0 where the effective user is 0, else to the effective user.
/// @param copy an empty folder that nobody else can write to.
/// @return ok; badSource, also when the tree cannot be read; diskError. A failure leaves a part of the copy.
Outcome CopyTree(int tree, const std::string& shownName, int copy);

/// Removes `name` from `folder`, whatever it is; a folder with all it holds, to a depth of 128. Only for
/// trees that nobody else can write to.
/// @return 0, also where nothing is there, or the errno of the step that failed.
int RemoveTree(int folder, const std::string& name);

/// Lists a folder without "." and "..".
/// @param limit at most this many.
/// @return 0, E2BIG when there are more, or the errno of the step that failed.
int ReadNames(int folder, size_t limit, std::vector<std::string>& names);
