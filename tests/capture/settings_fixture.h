// What the tests of settings, masks and live frames share: archive forms, and masks as text.
#pragma once

#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "platform/framework/archive.h"
#include "platform/framework/error_report.h"
#include "tests/support/expect_forms.h"

// Counts the errors that are reported while it lives.
struct Reports {
  Reports() {
    zebx::SetErrorSink([this](const std::exception&) { ++m_count; });
  }
  ~Reports() { zebx::SetErrorSink({}); }

  int m_count = 0;
};

template <typename Record>
std::string FormOf(Record& record) {
  return BufferFormOf(record, record.GetSize());
}

inline std::string ArchiveFormOf(CObject& object) {
  CMemFile file;
  CArchive archive(file, CArchive::Mode::kStore);
  object.Serialize(archive);
  archive.Close();
  return {file.GetBytes().begin(), file.GetBytes().end()};
}
inline void LoadArchive(CObject& object, const std::string& form) {
  CMemFile file;
  file.Write({reinterpret_cast<const BYTE*>(form.data()), form.size()});
  file.SeekToBegin();
  CArchive archive(file, CArchive::Mode::kLoad);
  object.Serialize(archive);
}

inline std::string TextOf(const CRect& rect) {
  return std::to_string(rect.left) + ' ' + std::to_string(rect.top) + ' ' +
         std::to_string(rect.right) + ' ' + std::to_string(rect.bottom);
}

// Both rectangles, in thousandths and in macroblocks, and what the device saw in them.
inline std::string TextOf(const CMaskInfo& mask) {
  return TextOf(*mask.GetMaskRect()) + " = " + TextOf(mask.GetMBRect()) +
         (mask.IsMove() != 0 ? " moves" : "") + (mask.IsAlarm() != 0 ? " alarm" : "");
}

// A mask with that left side in thousandths.
inline CMaskInfo* NewMask(LONG left) {
  auto* mask = new CMaskInfo;
  mask->SetMaskRect({0, 0, 1000, 1000}, {left, 250, 500, 500}, tag_FRAMESIZE{130}, 3);
  return mask;
}

// The left sides of the masks, and - for null.
inline std::string LeftsOf(const CMaskList& list) {
  std::string lefts;
  for (const CObject* entry : list) {
    const auto* mask = static_cast<const CMaskInfo*>(entry);
    lefts += mask == nullptr ? "- " : std::to_string(mask->GetMaskRect()->left) + ' ';
  }
  return lefts;
}
