#include "record/mox_face.h"

#include <algorithm>
#include <cstdint>

#include "platform/framework/byte_order.h"
#include "platform/noxdisplay/noxdisplay.h"
#include "platform/os/graphics/graphics.h"
#include "platform/os/windows/windows.h"

using namespace zebx;

namespace {

constexpr std::size_t kGreyBytes = 3;       // of a pixel of the face picture
constexpr std::int64_t kWidthMultiple = 4;  // of a face that is cut out

}  // namespace

CMoxFace::CMoxFace() = default;
CMoxFace::~CMoxFace() = default;

int CMoxFace::Create(const tag_ZEBCAMERAID* camera, const void* record, CTime time) {
  const auto* bytes = static_cast<const BYTE*>(record);
  return Create(camera, bytes, bytes != nullptr ? UnknownEnd(bytes) : nullptr, time);
}

int CMoxFace::Create(const tag_ZEBCAMERAID* camera, const BYTE* record, const BYTE* end,
                     CTime time) {
  Begin(camera, time);
  ByteReader reader({record, end});
  reader.Get<DWORD>();  // not used
  m_size.cx = reader.Get<WORD>();
  m_size.cy = reader.Get<WORD>();
  m_face_point.x = reader.Get<WORD>();
  m_face_point.y = reader.Get<WORD>();
  m_detect_index = reader.Get<WORD>();
  reader.Get<WORD>();  // not used
  const auto luminance =
      reader.Take(static_cast<std::size_t>(m_size.cx) * static_cast<std::size_t>(m_size.cy));
  if (luminance.empty()) return 0;
  Allocate();
  PutRow(0, luminance.data(), luminance.size());
  return 1;
}

int CMoxFace::Create(const tag_ZEBCAMERAID* camera, const BYTE* picture, CSize picture_size,
                     const CRect& rect, CTime time, const CPoint* point) {
  Begin(camera, time);
  if (point != nullptr) m_face_point = *point;
  std::int64_t width = std::max(std::int64_t{rect.right} - rect.left, std::int64_t{0});
  width -= width % kWidthMultiple;
  const std::int64_t height = std::max(std::int64_t{rect.bottom} - rect.top, std::int64_t{0});
  const std::int64_t pitch_bytes = std::int64_t{2} * picture_size.cx;
  const bool is_inside = rect.left >= 0 && rect.top >= 0 && rect.left + width <= pitch_bytes &&
                         rect.bottom <= picture_size.cy;
  m_size = is_inside ? CSize{static_cast<LONG>(width), static_cast<LONG>(height)} : CSize{};
  if (picture == nullptr || m_size.cx == 0 || m_size.cy == 0) return 0;

  Allocate();
  const auto row_bytes = static_cast<std::size_t>(m_size.cx);
  std::size_t offset = 0;
  for (std::ptrdiff_t row = rect.bottom - 1; row >= rect.top; --row) {
    PutRow(offset, picture + row * pitch_bytes + rect.left, row_bytes);
    offset += row_bytes;
  }
  return 1;
}

int CMoxFace::Destroy() {
  m_face.reset();
  m_luminance.reset();
  return 1;
}

int CMoxFace::Show(HWND window, const CRect& rect) const {
  if (m_face == nullptr || os::IsWindow(window) == 0) return 0;
  HDC dc = os::GetDC(window);
  if (dc == nullptr) return 0;
  noxshowDrawDib(m_face.get(), &m_size, dc, &rect);
  os::ReleaseDC(window, dc);
  return 1;
}

void CMoxFace::Begin(const tag_ZEBCAMERAID* camera, CTime time) {
  Destroy();
  if (camera != nullptr) m_camera = *camera;
  m_time = time;
}

void CMoxFace::Allocate() {
  const std::size_t pixels =
      static_cast<std::size_t>(m_size.cx) * static_cast<std::size_t>(m_size.cy);
  auto face = std::make_unique_for_overwrite<BYTE[]>(pixels * kGreyBytes);
  m_luminance = std::make_unique_for_overwrite<BYTE[]>(pixels);
  m_face = std::move(face);
}

// Puts a run of pixels at pixel `offset` of both forms.
void CMoxFace::PutRow(std::size_t offset, const BYTE* luminance, std::size_t count) {
  std::copy_n(luminance, count, m_luminance.get() + offset);
  BYTE* grey = m_face.get() + offset * kGreyBytes;
  for (std::size_t i = 0; i < count; ++i) grey = std::fill_n(grey, kGreyBytes, luminance[i]);
}
