// What recycling would delete next.
#pragma once

#include <string>
#include <vector>

#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "storage/hdd_obj.h"

namespace zebtool {

struct DoomedDay {
  const CHddObj* disk;  // borrowed
  CTime day;
  ULONGLONG bytes;  // of its files
};

struct RecyclingForecast {
  std::vector<DoomedDay> days;
  const CHddObj* working_disk = nullptr;  // afterwards; borrowed, null for none
};

// What dbsChangeWorkDir would do with the disks now, from their days and without deleting: days
// without a byte in them are deleted on the way, without notice.
RecyclingForecast ForecastRecycling(const std::vector<CHddObj*>& disks, CTime now);

}  // namespace zebtool
