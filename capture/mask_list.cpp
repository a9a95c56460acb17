#include "capture/mask_list.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "capture/mask_info.h"
#include "platform/framework/archive.h"
#include "platform/framework/byte_order.h"
#include "platform/framework/error_report.h"

using namespace zebx;

namespace {

CMaskInfo* MaskOf(CObject* entry) {
  return static_cast<CMaskInfo*>(entry);
}

}  // namespace

IMPLEMENT_DYNAMIC(CMaskList, CObList)

CMaskList::CMaskList() = default;

CMaskList::~CMaskList() {
  DeleteAllMask();
}

int CMaskList::operator=(const CMaskList& other) {
  if (this == &other) return 1;
  try {
    CMaskList copies;
    for (CObject* entry : other) {
      if (entry == nullptr) continue;
      auto copy = std::make_unique<CMaskInfo>();
      *copy = *MaskOf(entry);
      copies.Append(std::move(copy));
    }
    Swap(copies);
    return 1;
  } catch (const std::exception& failure) {
    ReportError(failure);
    return 0;
  }
}

int CMaskList::AddMaskInfo(CMaskInfo* mask) {
  if (mask == nullptr) return 0;
  if (IsMaskInfo(mask) == 0) AddTail(mask);
  return 1;
}

int CMaskList::IsMaskInfo(const CMaskInfo* mask) const {
  if (mask == nullptr) return 0;
  return std::ranges::any_of(
             *this,
             [mask](CObject* entry) { return entry != nullptr && (*MaskOf(entry) == *mask) != 0; })
             ? 1
             : 0;
}

int CMaskList::DeleteAllMask() {
  while (!IsEmpty()) delete RemoveHead();
  return 1;
}

int CMaskList::IsAlarm() const {
  return std::ranges::any_of(
             *this,
             [](CObject* entry) { return entry != nullptr && MaskOf(entry)->IsAlarm() != 0; })
             ? 1
             : 0;
}

DWORD CMaskList::CountMasks() const {
  return static_cast<DWORD>(
      std::ranges::count_if(*this, [](const CObject* entry) { return entry != nullptr; }));
}

void CMaskList::Append(std::unique_ptr<CMaskInfo> mask) {
  AddTail(mask.get());
  static_cast<void>(mask.release());
}

DWORD CMaskList::GetSize() const {
  return DWORD{sizeof(DWORD)} + CMaskInfo::kBytes * CountMasks();
}

DWORD CMaskList::Write(BYTE*& cursor) const {
  ByteWriter({cursor, sizeof(DWORD)}).Put(CountMasks());
  cursor += sizeof(DWORD);
  DWORD bytes = sizeof(DWORD);
  for (CObject* entry : *this) {
    if (entry != nullptr) bytes += MaskOf(entry)->Write(cursor);
  }
  return bytes;
}

DWORD CMaskList::Read(BYTE*& cursor) {
  return Read(cursor, UnknownEnd(cursor));
}

DWORD CMaskList::Read(BYTE*& cursor, const BYTE* end) {
  DeleteAllMask();
  const std::span<const BYTE> bytes(cursor, end);
  ByteReader reader(bytes);
  const auto count = reader.Get<DWORD>();
  if (!reader.Ok() || ULONGLONG{count} * CMaskInfo::kBytes > reader.Remaining()) return 0;
  try {
    BYTE* at = cursor + sizeof(DWORD);
    for (DWORD i = 0; i < count; ++i) {
      auto mask = std::make_unique<CMaskInfo>();
      mask->Read(at);
      Append(std::move(mask));
    }
    const auto consumed = static_cast<DWORD>(at - cursor);
    cursor = at;
    return consumed;
  } catch (const std::exception& failure) {
    ReportError(failure);
    DeleteAllMask();
    return 0;
  }
}

void CMaskList::Serialize(CArchive& archive) {
  try {
    if (archive.IsStoring()) {
      archive << CountMasks();
      for (CObject* entry : *this) {
        if (entry != nullptr) MaskOf(entry)->Store(archive);
      }
      return;
    }
    DeleteAllMask();
    DWORD count = 0;
    archive >> count;
    for (DWORD i = 0; i < count; ++i) {
      auto mask = std::make_unique<CMaskInfo>();
      mask->Load(archive);
      Append(std::move(mask));
    }
  } catch (const std::exception& failure) {
    ReportError(failure);
  }
}
