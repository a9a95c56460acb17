// The owner of a bitmap handle.
#pragma once

#include <utility>

#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/types.h"

namespace zebx {

// Deletes the operating system's bitmap: one that is in use, as soon as it is not. 1, or 0 when it
// is stale. Defined by platform/os.
ZEBX_API int DeletePlatformBitmap(HBITMAP bitmap);

}  // namespace zebx

// Holds one bitmap or none, and deletes it at the end. Used by one thread at a time.
class ZEBX_API CBitmap : public CObject {
 public:
  CBitmap() = default;
  ~CBitmap() override { DeleteObject(); }
  CBitmap(const CBitmap&) = delete;
  CBitmap& operator=(const CBitmap&) = delete;

  // Takes ownership of a bitmap. 1, or 0 with nothing taken for null and when one is held already.
  int Attach(HBITMAP bitmap) {
    if (bitmap == nullptr || m_bitmap != nullptr) return 0;
    m_bitmap = bitmap;
    return 1;
  }
  // Gives the bitmap to the caller; null when none is held.
  HBITMAP Detach() { return std::exchange(m_bitmap, nullptr); }
  // Deletes the bitmap and holds none from then on: one that is selected into a context, as soon as
  // it is taken out there. 1, or 0 when none was held or it was deleted already.
  int DeleteObject() { return m_bitmap != nullptr ? zebx::DeletePlatformBitmap(Detach()) : 0; }
  // Borrowed; null when none is held.
  HBITMAP GetSafeHandle() const { return m_bitmap; }

 private:
  HBITMAP m_bitmap = nullptr;
};
