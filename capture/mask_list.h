// The masks of one camera, in the order in which the device knows them.
#pragma once

#include <memory>

#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/types.h"

class CMaskInfo;

// Owns its entries, all of them CMaskInfo; one that is taken out with an operation of the base
// class is the caller's. An entry that is null is passed over everywhere, also where masks are
// counted. Used by one thread at a time; the list of an open camera belongs to the library (see
// CVideoData).
class ZEBX_API CMaskList : public CObList {
  DECLARE_DYNAMIC(CMaskList)

 public:
  CMaskList();
  ~CMaskList() override;
  CMaskList(const CMaskList&) = delete;
  // Replaces the masks by copies of the other list's. 1, also for the list itself, which stays as
  // it is; 0, with the masks as they were, when memory runs out, which is reported.
  int operator=(const CMaskList& other);

  // Appends a mask and takes ownership. 1, also for one that equals a mask of the list: that is not
  // appended and stays the caller's, so ask IsMaskInfo before. 0 for null. Throws std::bad_alloc,
  // with the mask still the caller's.
  int AddMaskInfo(CMaskInfo* mask);
  // 1 when a mask of the list equals it; 0 for none and for null.
  int IsMaskInfo(const CMaskInfo* mask) const;
  // Destroys every mask. Always 1.
  int DeleteAllMask();
  // 1 when any mask is in alarm, else 0.
  int IsAlarm() const;
  // Exchanges the masks of two lists.
  void Swap(CMaskList& other) noexcept { CObList::Swap(other); }

  // Byte form: a 32-bit count, then the byte forms of the masks. The cursor advances; the answer is
  // the bytes moved. Write needs GetSize() bytes. Read replaces the masks, and takes equal
  // ones too. It answers 0, with an empty list and the cursor where it was, when memory runs out,
  // which is reported, and when the bytes before `end` are too few. Without `end` the count is
  // trusted.
  DWORD GetSize() const;
  DWORD Write(BYTE*& cursor) const;
  DWORD Read(BYTE*& cursor);
  DWORD Read(BYTE*& cursor, const BYTE* end);
  // Archive form: a 32-bit count, then the archive forms of the masks. Loading replaces the masks.
  // The first failure ends it and is reported; masks that were loaded whole stay.
  void Serialize(CArchive& archive) override;

 private:
  DWORD CountMasks() const;
  void Append(std::unique_ptr<CMaskInfo> mask);
};
