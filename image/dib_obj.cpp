#include "image/dib_obj.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <new>
#include <optional>
#include <utility>

#include "image/bmp_format.h"
#include "platform/framework/file.h"
#include "platform/os/graphics/bitmap_resources.h"
#include "platform/os/graphics/graphics.h"

using namespace zebx;

namespace {

using os::BitmapInfoHeader;

constexpr std::size_t kHeaderBytes = BitmapInfoHeader::kBytes;
constexpr WORD kOutputBitCount = 24;
constexpr WORD kMaxPaletteBits = 8;

BitmapInfoHeader HeaderOf(const BYTE* dib) {
  return BitmapInfoHeader::Parse(std::span<const BYTE, kHeaderBytes>(dib, kHeaderBytes));
}

// The bytes of a packed DIB with this header; nothing when they are more than `available`, or when
// the sizes make no sense. Whatever passes has sizes that fit 32 bits.
std::optional<std::size_t> WholeSize(const BitmapInfoHeader& header, ULONGLONG available) {
  constexpr ULONGLONG kMaxBytes = std::numeric_limits<DWORD>::max();
  const bool is_top_down = header.m_height < 0;
  if (header.m_width < 0 || header.m_height == std::numeric_limits<LONG>::min() ||
      (is_top_down && header.m_compression != os::kUncompressed)) {
    return std::nullopt;
  }
  const ULONGLONG row_bits = static_cast<ULONGLONG>(header.m_width) * header.m_bit_count;
  if (row_bits > kMaxBytes - 32) return std::nullopt;
  const ULONGLONG row_bytes = os::RowBytes(static_cast<DWORD>(row_bits));
  const ULONGLONG bytes = kHeaderBytes + ULONGLONG{header.ColorCount()} * os::kColorBytes +
                          row_bytes * static_cast<ULONGLONG>(std::abs(header.m_height));
  if (bytes > std::min(available, kMaxBytes)) return std::nullopt;
  return static_cast<std::size_t>(bytes);
}

// A picture in a bitmap that can be selected, on a context of its own. Both go with it.
class Section {
 public:
  explicit Section(const BitmapInfoHeader& header)
      : m_dc(os::CreateCompatibleDC(os::GetDC(nullptr))),
        m_bitmap(os::CreateDIBSection(m_dc, header, &m_bits)) {
    if (m_bitmap != nullptr) os::SelectObject(m_dc, m_bitmap);
  }
  ~Section() {
    os::DeleteDC(m_dc);
    if (m_bitmap != nullptr) os::DeleteObject(m_bitmap);
  }
  Section(const Section&) = delete;
  Section& operator=(const Section&) = delete;

  HDC Context() const { return m_dc; }
  bool IsMade() const { return m_bitmap != nullptr; }
  std::span<BYTE> Bits() const { return m_bits; }

 private:
  std::span<BYTE> m_bits;
  HDC m_dc;
  HBITMAP m_bitmap;
};

}  // namespace

CDibObj::CDibObj() = default;
CDibObj::~CDibObj() = default;

int CDibObj::LoadBmp(UINT resource_id) {
  Destroy();
  const auto resource = os::FindBitmapResource(resource_id);
  if (resource == nullptr || resource->size() < kHeaderBytes) return 0;
  const auto size = WholeSize(HeaderOf(resource->data()), resource->size());
  if (!size) return 0;
  m_dib.assign(resource->begin(), resource->begin() + static_cast<std::ptrdiff_t>(*size));
  PutBottomRowFirst();
  return 1;
}

int CDibObj::LoadBmp(const CString& path) {
  Destroy();
  CFile file;
  if (path.empty() || file.Open(path, CFile::kModeRead | CFile::kShareDenyNone) == 0) return 0;
  try {
    std::array<BYTE, kBmpFileHeaderBytes + kHeaderBytes> headers;
    if (file.Read(headers) != headers.size() ||
        !IsBmpFileHeader(std::span(headers).first<kBmpFileHeaderBytes>())) {
      return 0;
    }
    const auto header = std::span(headers).subspan(kBmpFileHeaderBytes);
    // It may be cut while it is read.
    const ULONGLONG length = std::max<ULONGLONG>(file.GetLength(), headers.size());
    const auto size = WholeSize(HeaderOf(header.data()), length - kBmpFileHeaderBytes);
    if (!size) return 0;
    m_dib.resize(*size);
    std::copy(header.begin(), header.end(), m_dib.begin());
    const auto rest = std::span(m_dib).subspan(kHeaderBytes);
    if (file.Read(rest) == rest.size()) {
      PutBottomRowFirst();
      return 1;
    }
  } catch (const CFileException&) {
    // No picture, like one that is cut short.
  } catch (const std::bad_alloc&) {
    // A file may be longer than the memory without taking room on the disk.
  }
  Destroy();
  return 0;
}

int CDibObj::SaveBmp(const CString& path) const {
  if (m_dib.empty()) return 0;
  try {
    CFile file;
    if (file.Open(path, CFile::kModeCreate | CFile::kModeWrite) == 0) return 0;
    const auto bits_offset =
        static_cast<DWORD>(kBmpFileHeaderBytes + kHeaderBytes + GetPaletteSize());
    const auto file_header =
        FormatBmpFileHeader(static_cast<DWORD>(kBmpFileHeaderBytes + m_dib.size()), bits_offset);
    file.WritePieces({file_header, m_dib});
    file.Close();
  } catch (const CFileException&) {
    return 0;
  }
  return 1;
}

void CDibObj::Destroy() {
  m_dib = {};
}

int CDibObj::ConvertFormat(DWORD width, DWORD height, DWORD bit_count) {
  if (m_dib.empty() || bit_count != kOutputBitCount) return 0;
  if (GetBitCount() == bit_count && GetWidth() == width && GetHeight() == height) return 1;

  const BitmapInfoHeader old_header = Header();
  BitmapInfoHeader new_header;
  new_header.m_width = static_cast<LONG>(width);
  new_header.m_height = static_cast<LONG>(height);
  new_header.m_bit_count = kOutputBitCount;
  const Section old_section(old_header);
  if (!old_section.IsMade() || new_header.m_height < 0) return 0;
  const Section new_section(new_header);
  if (!new_section.IsMade()) return 0;

  std::ranges::copy(PixelRows(), old_section.Bits().begin());
  const bool is_colored = old_header.m_bit_count > kMaxPaletteBits ||
                          os::SetDIBColorTable(old_section.Context(), 0, ColorTable()) != 0;
  if (!is_colored || os::StretchBlt(new_section.Context(), 0, 0, new_header.m_width,
                                    new_header.m_height, old_section.Context(), 0, 0,
                                    old_header.m_width, old_header.m_height, os::kSrcCopy) == 0) {
    return 0;
  }
  os::GdiFlush();

  const auto new_bits = new_section.Bits();
  new_header.m_image_bytes = static_cast<DWORD>(new_bits.size());
  const auto header_bytes = new_header.Format();
  try {
    std::vector<BYTE> dib;
    dib.reserve(header_bytes.size() + new_bits.size());
    dib.insert(dib.end(), header_bytes.begin(), header_bytes.end());
    dib.insert(dib.end(), new_bits.begin(), new_bits.end());
    m_dib = std::move(dib);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 1;
}

HBITMAP CDibObj::CreateBitmap() const {
  if (m_dib.empty()) return nullptr;
  return os::CreateDIBitmap(os::GetDC(nullptr), Header(), PixelRows(), ColorTable());
}

int CDibObj::Display(HDC dc, int x, int y, int width, int height, int source_x, int source_y,
                     int source_width, int source_height, DWORD raster_operation) const {
  if (m_dib.empty()) return 0;
  const int rows =
      os::StretchDIBits(dc, x, y, width, height, source_x, source_y, source_width, source_height,
                        PixelRows(), Header(), ColorTable(), raster_operation);
  return rows != os::kGdiError ? 1 : 0;
}

int CDibObj::Display(HDC dc, const CRect& target, const CRect& source,
                     DWORD raster_operation) const {
  return Display(dc, target.left, target.top, target.Width(), target.Height(), source.left,
                 source.top, source.Width(), source.Height(), raster_operation);
}

int CDibObj::Display(HDC dc, int x, int y, DWORD raster_operation) const {
  const auto width = static_cast<int>(GetWidth());
  const auto height = static_cast<int>(GetHeight());
  return Display(dc, x, y, width, height, 0, 0, width, height, raster_operation);
}

BYTE* CDibObj::GetData() {
  return m_dib.empty() ? nullptr : m_dib.data() + kHeaderBytes + GetPaletteSize();
}

const BYTE* CDibObj::GetData() const {
  return m_dib.empty() ? nullptr : m_dib.data() + kHeaderBytes + GetPaletteSize();
}

DWORD CDibObj::GetWidth() const {
  return m_dib.empty() ? 0 : GetWidth(m_dib.data());
}
DWORD CDibObj::GetHeight() const {
  return m_dib.empty() ? 0 : GetHeight(m_dib.data());
}
DWORD CDibObj::GetBitCount() const {
  return m_dib.empty() ? 0 : GetBitCount(m_dib.data());
}
DWORD CDibObj::GetColorNumbers() const {
  return m_dib.empty() ? 0 : GetColorNumbers(m_dib.data());
}
DWORD CDibObj::GetPaletteSize() const {
  return m_dib.empty() ? 0 : GetPaletteSize(m_dib.data());
}
DWORD CDibObj::GetDataSize() const {
  return m_dib.empty() ? 0 : GetDataSize(m_dib.data());
}
DWORD CDibObj::GetWidthBytes() const {
  return m_dib.empty() ? 0 : GetWidthBytes(GetWidth() * GetBitCount());
}

DWORD CDibObj::GetWidth(const BYTE* dib) {
  return static_cast<DWORD>(HeaderOf(dib).m_width);
}
DWORD CDibObj::GetHeight(const BYTE* dib) {
  return static_cast<DWORD>(HeaderOf(dib).m_height);
}
DWORD CDibObj::GetBitCount(const BYTE* dib) {
  return HeaderOf(dib).m_bit_count;
}
DWORD CDibObj::GetColorNumbers(const BYTE* dib) {
  return HeaderOf(dib).ColorCount();
}
DWORD CDibObj::GetPaletteSize(const BYTE* dib) {
  return os::kColorBytes * GetColorNumbers(dib);
}
DWORD CDibObj::GetDataSize(const BYTE* dib) {
  return GetWidthBytes(GetBitCount(dib) * GetWidth(dib)) * GetHeight(dib);
}
DWORD CDibObj::GetWidthBytes(DWORD bits) {
  return os::RowBytes(bits);
}

void CDibObj::PutBottomRowFirst() {
  BitmapInfoHeader header = Header();
  if (header.m_height >= 0) return;
  header.m_height = -header.m_height;
  std::ranges::copy(header.Format(), m_dib.begin());
  const auto row_bytes = static_cast<std::ptrdiff_t>(GetWidthBytes());
  auto first = m_dib.end() - row_bytes * header.m_height;
  for (auto last = m_dib.end() - row_bytes; first < last; first += row_bytes, last -= row_bytes) {
    std::swap_ranges(first, first + row_bytes, last);
  }
}

os::BitmapInfoHeader CDibObj::Header() const {
  return HeaderOf(m_dib.data());
}

std::span<const BYTE> CDibObj::ColorTable() const {
  return std::span(m_dib).subspan(kHeaderBytes, GetPaletteSize());
}

std::span<const BYTE> CDibObj::PixelRows() const {
  return std::span(m_dib).subspan(kHeaderBytes + GetPaletteSize());
}
