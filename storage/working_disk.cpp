#include "storage/working_disk.h"

#include <vector>

#include "platform/framework/time.h"
#include "storage/day_directory.h"
#include "storage/disk_path.h"
#include "storage/hdd_obj.h"

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
    if (free_mb > slot.m_disk->GetAlarmSpace()) return slot.m_disk;
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

void DeleteDay(const OldestDay& day, HWND host_window) {
  DWORD freed_bytes;
  if (day.m_slot->m_disk->DeleteDate(day.m_date, freed_bytes) == 0) return;
  // Bytes added to megabytes, on purpose: as a rule one call deletes one day, and the host calls
  // again when it needs more room.
  if (day.m_slot->m_free_mb != kUnknownMb) day.m_slot->m_free_mb += freed_bytes;
  if (os::IsWindow(host_window) != 0) {
    os::SendMessage(host_window, ZEBX_MSG_DATE_DELETED, 0, LPARAM{day.m_date});
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
  if (free_mb < disk->GetReservedSpace()) return kWorkingDiskFull;
  if (free_mb < disk->GetAlarmSpace()) return kWorkingDiskShort;
  return kWorkingDiskFine;
}

int ChooseWorkingDisk(const CObList& disks, HWND host_window, CString& working_disk) {
  if (disks.IsEmpty()) return kNoDiskInList;
  std::vector<Slot> slots = SlotsOf(disks);
  if (const CHddObj* disk = FindDiskWithRoom(slots)) {
    working_disk = disk->GetHDD();
    return kWorkingDiskChosen;
  }
  const DWORD today = MidnightOf(CTime::GetCurrentTime()).GetTime();
  while (true) {
    const OldestDay day = TakeOldestDay(slots, today);
    if (day.m_slot == nullptr) {
      working_disk.clear();
      return kNothingToRecycle;
    }
    DeleteDay(day, host_window);
    const CHddObj& disk = *day.m_slot->m_disk;
    if (day.m_slot->m_free_mb > disk.GetReservedSpace()) {
      working_disk = disk.GetHDD();
      return kWorkingDiskChosen;
    }
  }
}
