#include "capture/mask_info.h"

#include "platform/framework/archive.h"
#include "platform/framework/byte_order.h"
#include "platform/framework/error_report.h"

using namespace zebx;

namespace {

constexpr LONG kMacroblockPixels = 16;
constexpr LONG kThousand = 1000;  // parts of the picture's width and height
constexpr DWORD kMacroblockThousand = 16000;
// The first word of the archive form: the high half of the status, the low half of the left side.
constexpr DWORD kStatusHalf = 0xFFFF0000;
constexpr DWORD kLeftHalf = 0x0000FFFF;

// A side of a window's rectangle in thousandths, rounded toward 0. The product needs 64 bits.
LONG ToThousandths(LONG pixels, LONG window_pixels) {
  return static_cast<LONG>(LONGLONG{kThousand} * pixels / window_pixels);
}

LONG ToWindow(LONG origin, LONG thousandths, LONG window_pixels) {
  return static_cast<LONG>(origin + LONGLONG{thousandths} * window_pixels / kThousand);
}

// Between thousandths and macroblocks everything is unsigned and modulo 2^32, also sides below 0.
LONG ToMacroblocks(LONG thousandths, LONG picture_pixels) {
  return static_cast<LONG>(static_cast<DWORD>(thousandths) * static_cast<DWORD>(picture_pixels) /
                           kMacroblockThousand);
}

LONG FromMacroblocks(LONG macroblocks, LONG picture_pixels) {
  return static_cast<LONG>(static_cast<DWORD>(macroblocks) * kMacroblockThousand /
                           static_cast<DWORD>(picture_pixels));
}

}  // namespace

IMPLEMENT_DYNAMIC(CMaskInfo, CObject)

CMaskInfo::CMaskInfo() = default;
CMaskInfo::~CMaskInfo() = default;

CMaskInfo& CMaskInfo::operator=(const CMaskInfo& other) {
  if (this != &other) {
    m_relative = other.m_relative;
    m_macroblocks = other.m_macroblocks;
    m_frame_size = other.m_frame_size;
    m_status = other.m_status;
  }
  Reset();
  return *this;
}

int CMaskInfo::operator==(const CMaskInfo& other) const {
  return m_relative == other.m_relative ? 1 : 0;
}

int CMaskInfo::operator!=(const CMaskInfo& other) const {
  return m_relative != other.m_relative ? 1 : 0;
}

int CMaskInfo::SetMaskRect(const CRect& window, const CRect& mask, tag_FRAMESIZE frame_size,
                           BYTE board_type) {
  const LONG width = window.Width();
  const LONG height = window.Height();
  if (mask.Width() == 0 || mask.Height() == 0 || width == 0 || height == 0) return 0;
  Reset();
  m_status |= DWORD{board_type} << kTypeShift;
  m_relative = {ToThousandths(mask.left, width), ToThousandths(mask.top, height),
                ToThousandths(mask.right, width), ToThousandths(mask.bottom, height)};
  m_frame_size = kNoFrameSize;
  return SetFrameSize(frame_size);
}

int CMaskInfo::GetMaskRect(const CRect& window, CRect& mask) const {
  const LONG width = window.Width();
  const LONG height = window.Height();
  mask = {ToWindow(window.left, m_relative.left, width),
          ToWindow(window.top, m_relative.top, height),
          ToWindow(window.left, m_relative.right, width),
          ToWindow(window.top, m_relative.bottom, height)};
  return 1;
}

// The encode size as boards of this mask's type really have it; 0 x 0 for an unknown frame size.
CSize CMaskInfo::GetEncodeSize(tag_FRAMESIZE frame_size) const {
  DWORD width = 0;
  DWORD height = 0;
  zebxGetEncodeSize(frame_size, &width, &height);
  if (GetVer() != 0) {
    constexpr BYTE kTypeMask = 0x7F;  // without the bit of a device's second board
    const BYTE type = GetType() & kTypeMask;
    if (width == 320 && (type == 6 || type == 8 || type == 10)) width = 352;
    if (width == 640 && type == 10) width = 704;
  }
  return {static_cast<LONG>(width), static_cast<LONG>(height)};
}

int CMaskInfo::SetMBRect(const CRect* macroblocks, tag_FRAMESIZE frame_size) {
  const CSize size = GetEncodeSize(frame_size);
  if (macroblocks == nullptr || size == CSize()) return 0;
  const LONG columns = size.cx / kMacroblockPixels;
  const LONG rows = size.cy / kMacroblockPixels;
  if (macroblocks->IsEmpty() || macroblocks->right >= columns || macroblocks->bottom >= rows) {
    return 0;
  }
  m_frame_size = frame_size;
  m_macroblocks = *macroblocks;
  m_relative = {
      FromMacroblocks(macroblocks->left, size.cx), FromMacroblocks(macroblocks->top, size.cy),
      FromMacroblocks(macroblocks->right, size.cx), FromMacroblocks(macroblocks->bottom, size.cy)};
  return 1;
}

int CMaskInfo::GetMBRect(BYTE* out) const {
  if (out == nullptr) return 0;
  for (const LONG side :
       {m_macroblocks.left, m_macroblocks.top, m_macroblocks.right, m_macroblocks.bottom}) {
    *out++ = static_cast<BYTE>(side);
  }
  return 1;
}

int CMaskInfo::SetFrameSize(tag_FRAMESIZE frame_size) {
  if (frame_size == m_frame_size) return 1;
  m_frame_size = frame_size;
  const CSize size = GetEncodeSize(frame_size);
  m_macroblocks = {ToMacroblocks(m_relative.left, size.cx), ToMacroblocks(m_relative.top, size.cy),
                   ToMacroblocks(m_relative.right, size.cx),
                   ToMacroblocks(m_relative.bottom, size.cy)};
  return 1;
}

int CMaskInfo::IsValid() const {
  constexpr LONG kLeast = 2;
  return m_frame_size != kNoFrameSize && m_macroblocks.Width() >= kLeast &&
                 m_macroblocks.Height() >= kLeast
             ? 1
             : 0;
}

void CMaskInfo::SetMove(int has_moved, DWORD alarm_count) {
  if (has_moved == 0) {
    Reset();
    return;
  }
  m_status = (m_status & ~DWORD{kAlarm}) | kMotion;
  if (++m_motion_reports >= alarm_count) {
    m_status |= kAlarm;
    m_motion_reports = 0;
  }
}

void CMaskInfo::Reset() {
  m_motion_reports = 0;
  m_status &= ~DWORD{kMotion | kAlarm};
}

DWORD CMaskInfo::Write(BYTE*& cursor) const {
  ByteWriter writer({cursor, kBytes});
  for (const LONG side : {m_relative.left, m_relative.top, m_relative.right, m_relative.bottom}) {
    writer.Put(side);
  }
  writer.Put(m_status);
  writer.Put(DWORD{m_frame_size});
  cursor += kBytes;
  return kBytes;
}

DWORD CMaskInfo::Read(BYTE*& cursor) {
  return Read(cursor, cursor + kBytes);
}

DWORD CMaskInfo::Read(BYTE*& cursor, const BYTE* end) {
  if (end - cursor < std::ptrdiff_t{kBytes}) return 0;
  ByteReader reader({cursor, kBytes});
  for (LONG* side : {&m_relative.left, &m_relative.top, &m_relative.right, &m_relative.bottom}) {
    *side = reader.Get<LONG>();
  }
  m_status = reader.Get<DWORD>();
  m_frame_size = kNoFrameSize;
  SetFrameSize(tag_FRAMESIZE{reader.Get<DWORD>()});
  cursor += kBytes;
  return kBytes;
}

void CMaskInfo::Serialize(CArchive& archive) {
  try {
    if (archive.IsStoring()) {
      Store(archive);
    } else {
      Load(archive);
    }
  } catch (const std::exception& failure) {
    ReportError(failure);
  }
}

void CMaskInfo::Store(CArchive& archive) const {
  archive << ((m_status & kStatusHalf) | (static_cast<DWORD>(m_relative.left) & kLeftHalf));
  archive << m_relative.top << m_relative.right << m_relative.bottom << DWORD{m_frame_size};
}

void CMaskInfo::Load(CArchive& archive) {
  DWORD word = 0;
  CRect relative;
  DWORD frame_size = 0;
  archive >> word >> relative.top >> relative.right >> relative.bottom >> frame_size;
  m_status = word & kStatusHalf;
  relative.left = static_cast<LONG>(word & kLeftHalf);
  m_relative = relative;
  m_motion_reports = 0;
  SetFrameSize(tag_FRAMESIZE{frame_size});
}
