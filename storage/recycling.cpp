#include "storage/recycling.h"

#include <functional>

#include "storage/day_directory.h"
#include "storage/hdd_obj.h"
#include "storage/space_thresholds.h"
#include "storage/tree_deletion.h"

namespace zebx {
namespace {

constexpr DWORD kUnknownMb = 0xFFFFFFFF;

// What one call of ChooseWorkingDisk knows about an entry of the disk list.
struct Slot {
  CHddObj* m_disk = nullptr;  // borrowed, may be null
  DWORD m_free_mb = kUnknownMb;
  DWORD m_cursor = 0;  // days up to here have had their turn
};

struct OldestDay {
  Slot* m_slot = nullptr;  // null when no disk has a day to recycle
  DWORD m_date = 0;
};

std::vector<Slot> SlotsOf(const CObList& disks) {
  std::vector<Slot> slots;
  slots.reserve(disks.GetCount());
  for (CObject* disk : disks) slots.push_back({static_cast<CHddObj*>(disk)});
  return slots;
}

// The first disk with more than its alarm space free; notes what the ones before it have.
CHddObj* FindDiskWithRoom(std::vector<Slot>& slots) {
  for (Slot& slot : slots) {
    DWORD total_mb;
    DWORD used_mb;
    DWORD free_mb;
    if (slot.m_disk == nullptr || slot.m_disk->GetHDDSpace(total_mb, used_mb, free_mb) == 0) {
      continue;
    }
    if (HasRoom(free_mb, slot.m_disk->GetAlarmSpace())) return slot.m_disk;
    slot.m_free_mb = free_mb;
  }
  return nullptr;
}

// The oldest day before `today` whose turn has not come yet. A disk that led for a while has had
// its turn as well, although a later disk's day was older: on purpose, the order in which hosts
// have seen days go rests on it.
OldestDay TakeOldestDay(std::vector<Slot>& slots, DWORD today) {
  OldestDay oldest{nullptr, today};
  for (Slot& slot : slots) {
    if (slot.m_disk == nullptr || slot.m_disk->IsRecycle() == 0) continue;
    DWORD date;
    if (slot.m_disk->FindOldestDir(date, slot.m_cursor) != 0 && date < oldest.m_date) {
      oldest = {&slot, date};
      slot.m_cursor = date;
    }
  }
  return oldest;
}

// Ends a day whose turn has come, and answers the bytes that this frees.
using DayEnd = std::function<DWORD(CHddObj& disk, DWORD date)>;

// The first disk with room, or the one on which ending days makes some; null for none.
CHddObj* ChooseDisk(const CObList& disks, const DayEnd& end_day) {
  std::vector<Slot> slots = SlotsOf(disks);
  if (CHddObj* disk = FindDiskWithRoom(slots)) return disk;
  const DWORD today = MidnightOf(CTime::GetCurrentTime()).GetTime();
  while (true) {
    const OldestDay day = TakeOldestDay(slots, today);
    if (day.m_slot == nullptr) return nullptr;
    Slot& slot = *day.m_slot;
    const DWORD freed_bytes = end_day(*slot.m_disk, day.m_date);
    // Bytes added to megabytes, on purpose: as a rule one call deletes one day, and the host calls
    // again when it needs more room.
    if (slot.m_free_mb != kUnknownMb) slot.m_free_mb += freed_bytes;
    if (slot.m_free_mb > slot.m_disk->GetReservedSpace()) return slot.m_disk;
  }
}

}  // namespace

CHddObj* FindWorkingDisk(const CObList& disks, const CString& working_disk) {
  for (CObject* entry : disks) {
    auto* disk = static_cast<CHddObj*>(entry);
    if (disk != nullptr && *disk == working_disk) return disk;
  }
  return nullptr;
}

int CheckWorkingDisk(const CObList& disks, const CString& working_disk, DWORD& free_mb) {
  const CHddObj* disk = FindWorkingDisk(disks, working_disk);
  DWORD total_mb;
  DWORD used_mb;
  if (disk == nullptr || disk->GetHDDSpace(total_mb, used_mb, free_mb) == 0) {
    return kWorkingDiskNone;
  }
  if (IsFull(free_mb, disk->GetReservedSpace())) return kWorkingDiskFull;
  if (IsRunningShort(free_mb, disk->GetAlarmSpace())) return kWorkingDiskShort;
  return kWorkingDiskFine;
}

int ChooseWorkingDisk(const CObList& disks, HWND host_window, CString& working_disk) {
  if (disks.IsEmpty()) return kNoDiskInList;
  const CHddObj* disk = ChooseDisk(disks, [host_window](CHddObj& of, DWORD date) {
    DWORD freed_bytes;
    if (of.DeleteDate(date, freed_bytes) != 0 && os::IsWindow(host_window) != 0) {
      os::SendMessage(host_window, ZEBX_MSG_DATE_DELETED, 0, LPARAM{date});
    }
    return freed_bytes;
  });
  working_disk = disk != nullptr ? disk->GetHDD() : CString();
  return disk != nullptr ? kWorkingDiskChosen : kNothingToRecycle;
}

RecyclingForecast ForecastRecycling(const CObList& disks) {
  RecyclingForecast forecast;
  forecast.m_working_disk = ChooseDisk(disks, [&forecast](CHddObj& disk, DWORD date) {
    const CTime day(date);
    const ULONGLONG bytes = BytesFreedByDeletingTree(disk.GetBaseDir() + DayDirectoryName(day));
    forecast.m_days.push_back({&disk, day, bytes});
    return static_cast<DWORD>(bytes);
  });
  return forecast;
}

}  // namespace zebx
