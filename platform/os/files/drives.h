// Drive letters: which directory of the host each one stands for, and what kind of drive it is.
//
// A library path is `d:\dvr\x.zebz`; its components are looked up without regard to case, an exact
// match first, and `..` never leaves the drive. A path without a drive letter is the host's own and
// passes through unchanged. `c:` stands for `/` unless mounted otherwise. A path with a zero byte
// leads nowhere: the system would take what stands before it. Any thread may call.
#pragma once

#include <optional>

#include "platform/framework/export.h"
#include "platform/framework/types.h"

namespace os {

// Kinds of drives, in the operating system's own numbering.
enum class DriveKind : UINT {
  kUnknown = 0,
  kNoRoot = 1,  // no such drive
  kRemovable = 2,
  kFixed = 3,
  kNetwork = 4,
  kCdRom = 5,
  kRamDisk = 6,
};

// Puts a host directory behind a letter (A to Z in either case), replacing what was there. With a
// quota other than 0 the drive is a disk of that many bytes to os::GetDiskFreeSpaceEx. 1, or 0 for
// another character, an empty directory or one with a zero byte, or the kind of no drive.
ZEBX_API int MountDrive(char letter, const CString& host_directory, DriveKind kind,
                        ULONGLONG quota_bytes = 0);

// Takes a letter away. Files open on it stay open.
ZEBX_API void UnmountDrive(char letter);

// Mounts every drive of a list such as "d=/srv/video1:64M;e=/mnt/nas:network:2G": a letter, a
// directory without a colon in its name, and optionally a kind and a quota. The kind is one of
// removable, fixed, network, cdrom and ramdisk; fixed when left out. The quota is a number of bytes
// above 0, or of 2^10, 2^20, 2^30 or 2^40 bytes with K, M, G or T behind it. 1, or 0 with nothing
// mounted when any entry is not of this form.
ZEBX_API int MountDrives(const CString& list);

// The kind of the drive that a path is on; kNoRoot for an unmounted letter or a path without one.
ZEBX_API DriveKind GetDriveType(const CString& path);

// The quota in bytes of the drive that a path is on; 0 when it has none.
ZEBX_API ULONGLONG GetDriveQuota(const CString& path);

// True for the root of a mounted drive, however it is spelled: `d:`, `D:\`, `d:\x\..`.
ZEBX_API bool IsDriveRoot(const CString& path);

// The host path behind a library path; nothing when its drive is not mounted. The file itself need
// not exist: what is not found is taken as spelled.
ZEBX_API std::optional<CString> HostPath(const CString& path);

// The same without a look at the disk: every component as it is spelled.
ZEBX_API std::optional<CString> SpelledHostPath(const CString& path);

// The absolute form of a path: a library path keeps its letter, with `.`, `..` and repeated
// separators folded; a host path is made absolute.
ZEBX_API CString FullPath(const CString& path);

}  // namespace os
