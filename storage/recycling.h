// Which disk new recordings go to: judging its free space, choosing another, and making room by
// deleting the oldest days.
#pragma once

#include "platform/framework/object.h"
#include "platform/framework/types.h"
#include "storage/recycling_results.h"

class CHddObj;

namespace zebx {

// A disk list holds CHddObj in the order of their addition; an entry may be null. The working disk
// is named by its drive root and may name none.

// The first disk on the drive of `working_disk`, borrowed; null when there is none.
CHddObj* FindWorkingDisk(const CObList& disks, const CString& working_disk);

// Judges the working disk's free space by its own thresholds and answers it in `free_mb`, which is
// untouched for kWorkingDiskNone: no such disk, or one that does not answer.
int CheckWorkingDisk(const CObList& disks, const CString& working_disk, DWORD& free_mb);

// Makes the first disk with more than its alarm space free the working disk. When there is none,
// deletes the oldest day before today of the disks that recycle, day by day until a disk counts as
// free, and sends the host window (when it exists) each day deleted; from within the message the
// host must not change the list. A disk that does not answer counts as free on its first turn. Sets
// `working_disk` when one is chosen, empties it when nothing can be recycled, and leaves it when
// the list is empty.
int ChooseWorkingDisk(const CObList& disks, HWND host_window, CString& working_disk);

}  // namespace zebx
