// The days of a disk, or of one of its folders: dates of day directories, ascending.
#pragma once

#include <optional>

#include "platform/framework/types.h"

namespace zebx {

// Appends the dates of the day directories right below `directory`, in no particular order; nothing
// when it cannot be read to its end, for half a list would take a later day for the oldest. A link
// is no day, whatever it leads to. On the root of a network drive there are none.
void AppendDays(CDWordArray& dates, const CString& directory);

// Fills the list anew.
void LoadDays(CDWordArray& dates, const CString& directory);

// The first date later than `after`; nothing when there is none.
std::optional<DWORD> OldestDayAfter(const CDWordArray& dates, DWORD after);

// Takes a date out of the list; false when it is not there.
bool TakeDay(CDWordArray& dates, DWORD date);

// Whether a walk over the dates meets `date` before an older one; nothing when it met neither.
std::optional<bool> MeetsDate(const CDWordArray& dates, DWORD date);

}  // namespace zebx
