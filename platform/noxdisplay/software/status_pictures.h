// The pictures registered with the display under the numbers of streams.h.
#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/framework/geometry.h"
#include "platform/noxdisplay/streams.h"
#include "platform/os/graphics/pixels.h"

namespace zebx::noxdisplay {

// Rows from the top, without gaps.
struct StatusPicture {
  CSize m_size;
  std::vector<os::Color> m_pixels;

  os::PixelSource Source() const;
};

inline constexpr std::array<DWORD, 8> kPictureNumbers = {
    kNoxshowWorkingPicture, kNoxshowProgramPicture,   kNoxshowActivePicture, kNoxshowAlarmPicture,
    kNoxshowRecordPicture,  kNoxshowVideoLostPicture, kNoxshowAudioPicture,  kNoxshowIdlePicture,
};

bool IsPictureNumber(DWORD number);

// The registered pictures of some moment, for as long as they are held.
class PictureSet {
 public:
  // Null for a number without a picture.
  const StatusPicture* Find(DWORD number) const;

 private:
  friend class StatusPictures;
  std::array<std::shared_ptr<const StatusPicture>, kPictureNumbers.size()> m_pictures;
};

// One per process, for any thread. The lock guards the set and is held for nothing but copying it.
class StatusPictures {
 public:
  static StatusPictures& Get();

  // Copies the bitmap's pixels. False for another number, for a bitmap that does not exist, and for
  // one that is too large.
  bool Register(HBITMAP bitmap, DWORD number);
  PictureSet Current();
  void Clear();

 private:
  std::mutex m_mutex;
  PictureSet m_current;
};

}  // namespace zebx::noxdisplay
