#pragma once

#include <string>

/// The folder shaped like a Mac's start-up volume that Mac paths are looked up in: ZEK_STARTUP_VOLUME where
/// it is set, absolute, and the program does not run with more rights than its caller; else the folder fixed
/// when this was built.
/// @return an absolute path without a trailing slash ("/" alone excepted); on a Mac "", since paths there
/// need no mapping.
std::string HostStartupVolume();

/// Whether the start-up volume is the system's: the one fixed when this was built, belonging to root. What changes it
/// then changes the computer; any other volume is only a folder. On a Mac true.
bool HostStartupVolumeIsSystems();

/// The folder of the programs that stand in for a Mac's: HOST_TOOLS_FOLDER, read and ignored like the volume,
/// else the one fixed when this was built.
/// @return an absolute path without a trailing slash; on a Mac "".
std::string HostToolsFolder();

/// The host's name for a path as a Mac program writes it. Apply it at the last moment, when the path is
/// opened or executed; texts keep the Mac path. The first of these that fits is the answer:
///   1. a path inside the start-up volume's folder: itself;
///   2. a path that exists in the volume: the volume's folder followed by the path;
///   3. a program of /bin, /sbin, /usr/bin or /usr/sbin, or of the resources of
///      "/System/Library/Filesystems/hfs.fs", that HostToolsFolder() has: that tool;
///   4. "/dev/disk2s1" or "/dev/rdisk2s1": the host's file for that device, where HostFindDevicesWith() gave somebody to
///      ask and they know it;
///   5. a path that exists neither there nor on the host, but whose first component is a folder of the
///      volume: the volume's folder followed by the path, which is where it is about to be created;
///   6. itself.
/// A path that may not be looked at counts as existing, so that opening it tells the true reason. Relative
/// and empty paths are answered unchanged. Symbolic links are not resolved. On a Mac: the argument.
std::string HostPath(const std::string& macPath);

/// Names whoever knows the devices. @param find answers the host's file for a BSD name such as "disk2s1"; "" for none. On
/// a Mac it is not asked.
void HostFindDevicesWith(std::string (*find)(const std::string& bsdName));

/// The user's home folder: CFFIXED_USER_HOME where set, absolute and not ignored (as above), else the user
/// database's for the real user id.
/// @return an absolute path without a trailing slash ("/" alone excepted), or "" when the user has none.
std::string HostHomeFolder();

/// Where the desktop's programs keep the user's data: XDG_DATA_HOME where set and absolute, else .local/share in
/// HostHomeFolder().
std::string HostDataFolder();

/// Makes HostHomeFolder() the home folder for everything in this process that asks the host instead
/// (toolkits, the Trash, children). Does nothing unless CFFIXED_USER_HOME decides the home: otherwise the
/// host knows already. Call once at the start of main, before other threads exist. On a Mac it does nothing.
void HostEnterHome();

/// The file in which a restart of a start-up volume that is only a folder is recorded, since such a volume
/// cannot be restarted; it exists while a restart is wanted. On a Mac "", since restarts really happen there.
std::string HostRestartRequestPath();
