#pragma once

#include <cstdint>

// Copying files and folders with everything that belongs to them.

using copyfile_state_t = struct _copyfile_state*;
using copyfile_flags_t = uint32_t;

// What is copied.
#define COPYFILE_ACL (1 << 0) ///< access control lists; extended attributes "system.*" here
#define COPYFILE_STAT (1 << 1) ///< owner, mode, times
#define COPYFILE_XATTR (1 << 2) ///< extended attributes: "user.*" here, and for root those of the system
#define COPYFILE_DATA (1 << 3) ///< a file's bytes
#define COPYFILE_SECURITY (COPYFILE_STAT | COPYFILE_ACL)
#define COPYFILE_METADATA (COPYFILE_SECURITY | COPYFILE_XATTR)
#define COPYFILE_ALL (COPYFILE_METADATA | COPYFILE_DATA)

// How.
#define COPYFILE_RECURSIVE (1 << 15) ///< a folder with everything in it
#define COPYFILE_EXCL (1 << 17) ///< fail with EEXIST where `to` exists
#define COPYFILE_NOFOLLOW_SRC (1 << 18) ///< copy a symbolic link at `from` itself
#define COPYFILE_NOFOLLOW_DST (1 << 19) ///< never write through a symbolic link at `to`
#define COPYFILE_MOVE (1 << 20) ///< remove(3) `from` after success; its failure is not reported
#define COPYFILE_UNLINK (1 << 21) ///< unlink files that are in the way instead of writing into them
#define COPYFILE_NOFOLLOW (COPYFILE_NOFOLLOW_SRC | COPYFILE_NOFOLLOW_DST)
/// Share the bytes with the original where the file system can, else copy them. Implies COPYFILE_EXCL,
/// COPYFILE_ALL and COPYFILE_NOFOLLOW_SRC.
#define COPYFILE_CLONE (1 << 24)
#define COPYFILE_CLONE_FORCE (1 << 25) ///< the same, but fail where bytes cannot be shared; not for folders
#define COPYFILE_DATA_SPARSE (1 << 27) ///< as COPYFILE_DATA: holes stay holes with either

// What copyfile_state_get() can tell.
#define COPYFILE_STATE_COPIED 8 ///< off_t: bytes of data that were copied or shared
#define COPYFILE_STATE_WAS_CLONED 10 ///< bool: every file's bytes are shared with the original's

#ifdef __cplusplus
extern "C" {
#endif

/// Copies the file, symbolic link or folder `from` to `to`. Hard links become files of their own.
///
/// A folder is made alone unless COPYFILE_RECURSIVE is given. With COPYFILE_RECURSIVE and without
/// COPYFILE_EXCL, a `to` that is an existing folder receives the copy inside itself, under the last name of
/// `from`; where `from` ends with a slash, what is in it is merged into `to`. Symbolic links inside a tree
/// are copied as links, whether or not they lead anywhere, and never followed, in the copy as little as in
/// the original. Pass COPYFILE_NOFOLLOW_SRC all the same: a Mac follows them without it.
///
/// The owner is kept where the caller may give files away, else the group if possible; set-id bits are kept
/// only together with owner and group. Folders are writable for their owner while they are filled and get
/// their own mode and times last. Extended attributes and ACLs that the destination's file system has no room
/// for in principle are left out.
///
/// A tree of any depth needs about 70 descriptors and no path longer than the arguments.
///
/// @param from @param to host paths, not null. @param state null, or from copyfile_state_alloc().
/// @return 0, or -1 with errno of the first failure; what was copied by then stays. Among others EEXIST;
/// ENOTSUP: a FIFO, socket or device, or no cloning; EINVAL: null, unknown flags, a file onto itself, a
/// folder into itself (nothing was written then); ESTALE: a folder was moved away while it was being copied.
int copyfile(const char* from, const char* to, copyfile_state_t state, copyfile_flags_t flags);

/// @return a state for copyfile(), which the caller frees; null when memory is short.
copyfile_state_t copyfile_state_alloc(void);
/// @param state may be null. @return 0.
int copyfile_state_free(copyfile_state_t state);
/// Tells of the last copyfile() that was given the state.
/// @param dst where the value is stored, of the type given with `flag` above.
/// @return 0, or -1 with errno EINVAL for null or an unknown flag.
int copyfile_state_get(copyfile_state_t state, uint32_t flag, void* dst);

#ifdef __cplusplus
}
#endif
