// The snapshot file: a 24-bit BMP file with unpadded rows, and the trailer behind it.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

#include "image/bmp_format.h"
#include "image/image.h"
#include "image/snapshot_format.h"
#include "platform/framework/byte_order.h"
#include "platform/framework/file.h"
#include "platform/os/graphics/dib_format.h"

using namespace zebx;

namespace {

using os::BitmapInfoHeader;

constexpr std::string_view kDefaultName = "capture";
constexpr std::string_view kExtension = ".bmp";
constexpr WORD kBitCount = 24;
constexpr DWORD kHeadersBytes = kBmpFileHeaderBytes + BitmapInfoHeader::kBytes;
constexpr std::size_t kNames = 3;
constexpr std::size_t kMaxLoadedTrailerBytes =
    1 + sizeof(DWORD) + kNames * (sizeof(WORD) + kMaxLoadedNameBytes) + sizeof(int);

std::string_view CutName(std::string_view name) {
  return name.substr(0, kMaxSavedNameBytes);
}

void PutName(ByteWriter& writer, const CString& name) {
  writer.Put(static_cast<WORD>(CutName(name).size()));
  writer.PutText(CutName(name));
}

// False, with the name as it was, when the name is not whole or too long.
bool TakeName(ByteReader& reader, CString& name) {
  const auto bytes = reader.Get<WORD>();
  if (!reader.Ok() || bytes > kMaxLoadedNameBytes) return false;
  CString taken = reader.TakeText(bytes);
  if (!reader.Ok()) return false;
  name = std::move(taken);
  return true;
}

// From the top down to the bottom row first.
void TurnRows(BYTE* rows, std::size_t row_bytes, std::size_t count) {
  for (std::size_t row = 0; row < count / 2; ++row) {
    BYTE* const first = rows + row * row_bytes;
    std::swap_ranges(first, first + row_bytes, rows + (count - 1 - row) * row_bytes);
  }
}

// Modulo 2^32, so that 0 stays 0.
DWORD RoundUpToFour(DWORD size) {
  return (size - 1) / 4 * 4 + 4;
}

}  // namespace

int CImage::SaveImageAs(ImageFormat format, const CString& path) {
  m_file_name = path.empty() ? CString(kDefaultName) : path;
  if (m_raw_image == nullptr) return 0;
  switch (format) {
    case kImageBmp:
      SaveAsBMP();
      return 1;
    case kImageJpg:
    case kImageReserved:
      return 1;
    default:
      return 0;
  }
}

int CImage::LoadImageAs(ImageFormat format, const CString& path) {
  m_file_name = path;
  switch (format) {
    case kImageBmp:
      LoadAsBMP();
      break;
    case kImageJpg:
      LoadAsJPG();
      break;
    case kImageReserved:
      break;
    default:
      return 0;
  }
  return m_raw_image != nullptr ? 1 : 0;
}

void CImage::SaveAsBMP() {
  if (m_file_name.empty()) return;
  if (!m_file_name.ends_with(kExtension)) m_file_name += kExtension;
  const ULONGLONG picture_bytes = ULONGLONG{m_width} * m_height * kSnapshotPixelBytes;
  constexpr ULONGLONG kMaxPictureBytes = std::numeric_limits<DWORD>::max() - kHeadersBytes;
  if (picture_bytes > m_raw_image_bytes || picture_bytes > kMaxPictureBytes) return;

  CFile file;
  if (file.Open(m_file_name, CFile::kModeCreate | CFile::kModeWrite) == 0) return;
  const auto image_bytes = static_cast<DWORD>(picture_bytes);
  const auto file_header = FormatBmpFileHeader(kHeadersBytes + image_bytes, kHeadersBytes);
  BitmapInfoHeader info;
  info.m_width = static_cast<LONG>(m_width);
  info.m_height = static_cast<LONG>(m_height);
  info.m_bit_count = kBitCount;
  info.m_image_bytes = image_bytes;
  const auto trailer = FormatTrailer();
  file.WritePieces({file_header, info.Format(), {m_raw_image.get(), image_bytes}, trailer});
  file.Close();
}

std::vector<BYTE> CImage::FormatTrailer() const {
  if ((m_info_flags & kInfoAny) == 0) return {};
  std::vector<BYTE> trailer(1 + sizeof(m_time_stamp) + kNames * sizeof(WORD) +
                            CutName(m_board_name).size() + CutName(m_camera_name).size() +
                            CutName(m_host_name).size() + sizeof(m_gmt));
  ByteWriter writer(trailer);
  writer.Put(m_info_flags);
  if ((m_info_flags & kInfoTimeStamp) != 0) writer.Put(m_time_stamp);
  if ((m_info_flags & kInfoBoardName) != 0) PutName(writer, m_board_name);
  if ((m_info_flags & kInfoCameraName) != 0) PutName(writer, m_camera_name);
  if ((m_info_flags & kInfoHostNameAndGmt) != 0) {
    PutName(writer, m_host_name);
    writer.Put(m_gmt);
  }
  trailer.resize(writer.Written());
  return trailer;
}

void CImage::LoadAsBMP() {
  CFile file;
  if (file.Open(m_file_name, CFile::kModeRead | CFile::kShareDenyNone) == 0) return;
  m_length = static_cast<DWORD>(file.GetLength());
  if (LoadPicture(file)) LoadTrailer(file);
}

// False when the file holds no picture that can be taken.
bool CImage::LoadPicture(CFile& file) {
  std::array<BYTE, kHeadersBytes> headers;
  if (file.Read(headers) != headers.size()) return false;
  const auto info = BitmapInfoHeader::Parse(
      std::span(headers).subspan<kBmpFileHeaderBytes, BitmapInfoHeader::kBytes>());
  const auto width = static_cast<DWORD>(info.m_width);
  const auto height = static_cast<DWORD>(std::abs(LONGLONG{info.m_height}));
  if (m_raw_image == nullptr) {
    m_width = width;
    m_height = height;
  }
  if (info.m_bit_count != kBitCount || info.m_compression != os::kUncompressed) return false;
  // It may be cut while it is read.
  const ULONGLONG length = std::max<ULONGLONG>(file.GetLength(), kHeadersBytes);
  const ULONGLONG pixels_in_file = (length - kHeadersBytes) / kSnapshotPixelBytes;
  if (ULONGLONG{width} * height > pixels_in_file) return false;

  // Sizes are rounded up when reading though rows are not padded when writing: on purpose, for this
  // is how snapshots are read everywhere. A trailer within that distance is swallowed.
  const ULONGLONG bytes =
      ULONGLONG{RoundUpToFour(width)} * RoundUpToFour(height) * kSnapshotPixelBytes;
  std::shared_ptr<BYTE[]> raw_image;
  try {
    raw_image = std::make_shared<BYTE[]>(static_cast<std::size_t>(bytes));
  } catch (const std::bad_alloc&) {
    return false;
  }
  file.Read({raw_image.get(), static_cast<std::size_t>(bytes)});
  if (info.m_height < 0)
    TurnRows(raw_image.get(), std::size_t{width} * kSnapshotPixelBytes, height);
  ReplaceRawImage(std::move(raw_image), bytes);
  m_width = width;
  m_height = height;
  return true;
}

void CImage::LoadTrailer(CFile& file) {
  m_info_flags = 0;
  m_time_stamp = 0;
  m_board_name.clear();
  m_camera_name.clear();
  m_host_name.clear();
  m_gmt = 0;

  std::array<BYTE, kMaxLoadedTrailerBytes> bytes;
  ByteReader reader(std::span<const BYTE>(bytes).first(file.Read(bytes)));
  m_info_flags = reader.Get<BYTE>();
  if ((m_info_flags & kInfoTimeStamp) != 0) m_time_stamp = reader.Get<DWORD>();
  if (!reader.Ok()) return;
  if ((m_info_flags & kInfoBoardName) != 0 && !TakeName(reader, m_board_name)) return;
  if ((m_info_flags & kInfoCameraName) != 0 && !TakeName(reader, m_camera_name)) return;
  if ((m_info_flags & kInfoHostNameAndGmt) != 0 && TakeName(reader, m_host_name)) {
    m_gmt = reader.Get<int>();
  }
}

void CImage::LoadAsJPG() {}
