#pragma once

/// Makes the folders of the user's Trash where they are missing. To be called before a toolkit moves
/// something there: where it finds no Trash and cannot make one, it would put the item into the current
/// folder and call that a success.
/// @return whether the Trash is there and can take items. On a Mac always, since the system looks after it.
bool HostPrepareTrash();
