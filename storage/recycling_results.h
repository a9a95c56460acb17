// What judging and changing the working disk answers, and which days making room would delete.
#pragma once

#include <vector>

#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "storage/storage_messages.h"

class CHddObj;

namespace zebx {

// Results of dbsCheckWorkHDD.
enum : int {
  kWorkingDiskNone = -1,
  kWorkingDiskFine = 0,
  kWorkingDiskFull = 1,   // below its reserved space: recycle or change it now
  kWorkingDiskShort = 2,  // below its alarm space
};

// Results of dbsChangeWorkDir.
enum : int {
  kNoDiskInList = -1,
  kWorkingDiskChosen = 0,
  kNothingToRecycle = 1,
};

// A day that recycling would delete.
struct DayToDelete {
  const CHddObj* m_disk;  // borrowed from the list
  CTime m_day;            // its local midnight
  ULONGLONG m_bytes;      // of its files, as they are now
};

struct RecyclingForecast {
  std::vector<DayToDelete> m_days;          // in the order of their deletion
  const CHddObj* m_working_disk = nullptr;  // afterwards; borrowed from the list, null for none
};

// What dbsChangeWorkDir would do with these disks now (CHddObj in the order of their addition, null
// entries passed over), if every file can be deleted. Changes nothing. Days without a byte are
// among the days: they are deleted on the way, without a notice.
ZEBX_API RecyclingForecast ForecastRecycling(const CObList& disks);

}  // namespace zebx
