// The status pictures that all show settings share.
#include <algorithm>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>

#include "capture/show_param.h"
#include "image/dib_obj.h"
#include "platform/framework/bitmap.h"

CDibObj* CShowParam::m_pDibVideoLost = nullptr;
CDibObj* CShowParam::m_pDibWorking = nullptr;
CDibObj* CShowParam::m_pDibIdle = nullptr;
CBitmap* CShowParam::m_pBmpVideoLost = nullptr;
CBitmap* CShowParam::m_pBmpWorking = nullptr;
CBitmap* CShowParam::m_pBmpIdle = nullptr;
CBitmap* CShowParam::m_pBmpActive = nullptr;
CBitmap* CShowParam::m_pBmpRecord = nullptr;
CBitmap* CShowParam::m_pBmpAudio = nullptr;
CBitmap* CShowParam::m_pBmpAlarm = nullptr;
CBitmap* CShowParam::m_pBmpProgram = nullptr;

struct CShowParam::StatusPicture {
  enum Index {
    kVideoLost,
    kWorking,
    kIdle,
    kActive,
    kRecord,
    kAudio,
    kAlarm,
    kRestored,
    kProgram = kRestored,  // is not restored, on purpose
    kCount
  };

  CDibObj** m_dib;  // null for a mark, which has none
  CBitmap** m_bitmap;
  DWORD m_number;
  DWORD m_replacements;

  static std::mutex s_mutex;  // guards all pictures and counters
  static StatusPicture s_pictures[kCount];

  static void Replace(Index index, CDibObj* dib, CBitmap* bitmap);
  static void Get(Index index, CDibObj** dib, CBitmap** bitmap);
  void Register(bool is_dib_preferred) const;
};

std::mutex CShowParam::StatusPicture::s_mutex;

CShowParam::StatusPicture CShowParam::StatusPicture::s_pictures[kCount] = {
    {&m_pDibVideoLost, &m_pBmpVideoLost, kNoxshowVideoLostPicture, 0},
    {&m_pDibWorking, &m_pBmpWorking, kNoxshowWorkingPicture, 0},
    {&m_pDibIdle, &m_pBmpIdle, kNoxshowIdlePicture, 0},
    {nullptr, &m_pBmpActive, kNoxshowActivePicture, 0},
    {nullptr, &m_pBmpRecord, kNoxshowRecordPicture, 0},
    {nullptr, &m_pBmpAudio, kNoxshowAudioPicture, 0},
    {nullptr, &m_pBmpAlarm, kNoxshowAlarmPicture, 0},
    {nullptr, &m_pBmpProgram, kNoxshowProgramPicture, 0},
};

void CShowParam::StatusPicture::Replace(Index index, CDibObj* dib, CBitmap* bitmap) {
  StatusPicture& picture = s_pictures[index];
  const auto is_held = [](auto StatusPicture::*member, const auto* object) {
    return std::any_of(std::begin(s_pictures), std::end(s_pictures), [&](const auto& other) {
      return other.*member != nullptr && *(other.*member) == object;
    });
  };
  std::unique_ptr<CDibObj> old_dib;
  std::unique_ptr<CBitmap> old_bitmap;
  {
    const std::lock_guard lock(s_mutex);
    ++picture.m_replacements;
    if (picture.m_dib != nullptr) {
      CDibObj* old = std::exchange(*picture.m_dib, dib);
      if (!is_held(&StatusPicture::m_dib, old)) old_dib.reset(old);
    }
    CBitmap* old = std::exchange(*picture.m_bitmap, bitmap);
    if (!is_held(&StatusPicture::m_bitmap, old)) old_bitmap.reset(old);
  }
  old_dib.reset();
  old_bitmap.reset();
  picture.Register(true);
}

void CShowParam::StatusPicture::Get(Index index, CDibObj** dib, CBitmap** bitmap) {
  const StatusPicture& picture = s_pictures[index];
  const std::lock_guard lock(s_mutex);
  if (dib != nullptr) *dib = *picture.m_dib;
  if (bitmap != nullptr) *bitmap = *picture.m_bitmap;
}

// Calls the display without the lock. Another thread may replace the picture meanwhile, and its own
// call come first: then the picture is registered once more, so that the last one stays.
void CShowParam::StatusPicture::Register(bool is_dib_preferred) const {
  for (;;) {
    CBitmap made;  // deleted when the display has copied it
    HBITMAP bitmap = nullptr;
    DWORD replacements = 0;
    {
      const std::lock_guard lock(s_mutex);
      replacements = m_replacements;
      const CDibObj* dib = is_dib_preferred && m_dib != nullptr ? *m_dib : nullptr;
      if (dib == nullptr && *m_bitmap == nullptr) return;
      if (dib != nullptr) made.Attach(dib->CreateBitmap());
      bitmap = dib != nullptr ? made.GetSafeHandle() : (*m_bitmap)->GetSafeHandle();
    }
    noxshowSetBitmap(bitmap, m_number);
    const std::lock_guard lock(s_mutex);
    if (replacements == m_replacements) return;
    is_dib_preferred = true;
  }
}

void CShowParam::SetVideoLostImage(CDibObj* dib, CBitmap* bitmap) {
  StatusPicture::Replace(StatusPicture::kVideoLost, dib, bitmap);
}

void CShowParam::SetWorkingImage(CDibObj* dib, CBitmap* bitmap) {
  StatusPicture::Replace(StatusPicture::kWorking, dib, bitmap);
}

void CShowParam::SetIdleImage(CDibObj* dib, CBitmap* bitmap) {
  StatusPicture::Replace(StatusPicture::kIdle, dib, bitmap);
}

void CShowParam::GetVideoLostImage(CDibObj** dib, CBitmap** bitmap) {
  StatusPicture::Get(StatusPicture::kVideoLost, dib, bitmap);
}

void CShowParam::GetWorkingImage(CDibObj** dib, CBitmap** bitmap) {
  StatusPicture::Get(StatusPicture::kWorking, dib, bitmap);
}

void CShowParam::GetIdleImage(CDibObj** dib, CBitmap** bitmap) {
  StatusPicture::Get(StatusPicture::kIdle, dib, bitmap);
}

void CShowParam::SetActiveBmp(CBitmap* bitmap) {
  StatusPicture::Replace(StatusPicture::kActive, nullptr, bitmap);
}

void CShowParam::SetRecordBmp(CBitmap* bitmap) {
  StatusPicture::Replace(StatusPicture::kRecord, nullptr, bitmap);
}

void CShowParam::SetAudioBmp(CBitmap* bitmap) {
  StatusPicture::Replace(StatusPicture::kAudio, nullptr, bitmap);
}

void CShowParam::SetAlarmBmp(CBitmap* bitmap) {
  StatusPicture::Replace(StatusPicture::kAlarm, nullptr, bitmap);
}

void CShowParam::SetProgramBmp(CBitmap* bitmap) {
  StatusPicture::Replace(StatusPicture::kProgram, nullptr, bitmap);
}

void CShowParam::Restore() {
  for (int index = 0; index < StatusPicture::kRestored; ++index) {
    StatusPicture::s_pictures[index].Register(false);
  }
}
