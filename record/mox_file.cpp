#include "record/mox_file.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "platform/framework/byte_order.h"
#include "platform/framework/error_report.h"
#include "platform/framework/file.h"
#include "platform/framework/time.h"
#include "record/file_stub.h"

using namespace zebx;

namespace {

constexpr std::array<BYTE, 4> kMagic = {'F', 'A', 'C', 'E'};
constexpr DWORD kVersion = 0;
constexpr std::size_t kFixedBytes = 42;  // of the header, without the characters of its names
constexpr DWORD kTimeBytes = sizeof(DWORD);
constexpr int kCurrentFace = -1;
// What is read at first: more than the header takes with names of a usual length.
constexpr std::size_t kFirstReadBytes = 256;
// What longer names are read in.
constexpr std::size_t kPieceBytes = 64 * 1024;

// The header as it lies in the file. docs/image-formats.md is its page.
struct Header {
  DWORD m_header_bytes = 0;
  DWORD m_image_width = 0;
  DWORD m_image_height = 0;
  BYTE m_board_index = 0;
  BYTE m_camera_index = 0;
  DWORD m_start_time = 0;
  int m_gmt = 0;
  CString m_host_name;
  CString m_board_name;
  CString m_camera_name;

  // Nothing for a wrong magic or version, and when the header is not whole: then `*needed` is set
  // to more bytes than there are, as many as it takes to get further.
  static std::optional<Header> Parse(std::span<const BYTE> bytes, ULONGLONG* needed);
  std::vector<BYTE> Format() const;
};

std::optional<Header> Header::Parse(std::span<const BYTE> bytes, ULONGLONG* needed) {
  *needed = kFixedBytes;
  if (*needed > bytes.size()) return std::nullopt;
  ByteReader reader(bytes);
  if (!std::ranges::equal(reader.Take(kMagic.size()), kMagic)) return std::nullopt;
  if (reader.Get<DWORD>() != kVersion) return std::nullopt;
  Header header;
  header.m_header_bytes = reader.Get<DWORD>();
  header.m_image_width = reader.Get<DWORD>();
  header.m_image_height = reader.Get<DWORD>();
  header.m_board_index = reader.Get<BYTE>();
  header.m_camera_index = reader.Get<BYTE>();
  header.m_start_time = reader.Get<DWORD>();
  header.m_gmt = reader.Get<int>();
  for (CString* name : {&header.m_host_name, &header.m_board_name, &header.m_camera_name}) {
    const auto name_bytes = reader.Get<DWORD>();
    *needed += name_bytes;
    if (*needed > bytes.size()) return std::nullopt;
    *name = reader.TakeText(name_bytes);
  }
  return header;
}

std::vector<BYTE> Header::Format() const {
  std::vector<BYTE> bytes(m_header_bytes);
  ByteWriter writer(bytes);
  writer.PutBytes(kMagic);
  writer.Put(kVersion);
  writer.Put(m_header_bytes);
  writer.Put(m_image_width);
  writer.Put(m_image_height);
  writer.Put(m_board_index);
  writer.Put(m_camera_index);
  writer.Put(m_start_time);
  writer.Put(m_gmt);
  for (const CString* name : {&m_host_name, &m_board_name, &m_camera_name}) {
    writer.Put(static_cast<DWORD>(name->size()));
    writer.PutText(*name);
  }
  return bytes;
}

// Reads on until `bytes` holds `wanted` bytes of the file. False when the file ends first, or has
// nothing there: a piece of zeros is a hole in the file, whose length takes memory and no disk.
bool ReadOn(CFile& file, ULONGLONG wanted, std::vector<BYTE>& bytes) {
  while (bytes.size() < wanted) {
    const std::size_t begin = bytes.size();
    bytes.resize(static_cast<std::size_t>(std::min<ULONGLONG>(wanted, begin + kPieceBytes)));
    const auto piece = std::span(bytes).subspan(begin);
    file.Seek(begin);
    if (file.Read(piece) < piece.size()) return false;
    const bool is_hole = std::ranges::all_of(piece, [](BYTE byte) { return byte == 0; });
    if (is_hole && piece.size() == kPieceBytes) return false;
  }
  return true;
}

// The header at the start of a file, with names of any length. A length takes no more memory than
// the file has bytes.
std::optional<Header> LoadHeader(CFile& file, ULONGLONG file_bytes) {
  ULONGLONG wanted = std::min<ULONGLONG>(kFirstReadBytes, file_bytes);
  std::vector<BYTE> bytes;
  while (wanted <= file_bytes && ReadOn(file, wanted, bytes)) {
    auto header = Header::Parse(bytes, &wanted);
    if (header || wanted <= bytes.size()) return header;
  }
  return std::nullopt;
}

// What becomes of a file that its last user dropped without closing it.
struct CloseAndDelete {
  void operator()(CFile* file) const {
    const std::unique_ptr<CFile> owned(file);
    try {
      if (owned->IsOpen()) owned->Close();
    } catch (const std::exception& failure) {
      ReportError(failure);
    }
  }
};

}  // namespace

CMoxFile::CMoxFile() = default;
CMoxFile::CMoxFile(const CMoxFile&) = default;
CMoxFile& CMoxFile::operator=(const CMoxFile&) = default;
CMoxFile::~CMoxFile() = default;

int CMoxFile::Open(const char* path, int write) {
  Detach();
  if (path == nullptr) return 0;
  std::shared_ptr<CFile> file(new CFile, CloseAndDelete());
  const UINT flags = write != 0 ? CFile::kModeCreate | CFile::kModeReadWrite : CFile::kModeRead;
  m_write_mode = write;
  if (file->Open(path, flags | CFile::kShareDenyNone) == 0) return 0;
  m_file = std::move(file);
  try {
    if (write != 0) m_start_time = CTime::GetCurrentTime().GetTime();
    if ((write != 0 ? WriteHeader() : ReadHeader()) == 0) m_file.reset();
  } catch (...) {
    if (write != 0) DeleteIfNew(*m_file);
    m_file.reset();
    throw;
  }
  return 1;
}

int CMoxFile::Close() {
  m_start_time = 0;
  m_face_time = 0;
  m_gmt = 0;
  m_write_mode = 0;
  m_total_faces = 0;
  m_current_index = 0;
  m_end_time = 0;
  m_header_bytes = 0;
  Detach();
  return 1;
}

void CMoxFile::Detach() {
  const auto file = std::exchange(m_file, nullptr);
  // A copy that still uses the file closes it in its turn.
  if (file != nullptr && file.use_count() == 1) file->Close();
}

int CMoxFile::WriteHeader() {
  if (m_file == nullptr || m_write_mode == 0) return 0;
  Header header;
  header.m_header_bytes = static_cast<DWORD>(kFixedBytes + m_host_name.size() +
                                             m_board_name.size() + m_camera_name.size());
  header.m_image_width = m_image_width;
  header.m_image_height = m_image_height;
  header.m_board_index = m_board_index;
  header.m_camera_index = m_camera_index;
  header.m_start_time = m_start_time;
  header.m_gmt = m_gmt;
  header.m_host_name = m_host_name;
  header.m_board_name = m_board_name;
  header.m_camera_name = m_camera_name;
  m_file->SeekToBegin();
  m_file->Write(header.Format());
  m_header_bytes = header.m_header_bytes;
  m_total_faces = 0;
  m_current_index = 0;
  m_end_time = m_face_time = m_start_time;
  return 1;
}

int CMoxFile::ReadHeader() {
  if (m_file == nullptr || m_write_mode != 0) return 0;
  const ULONGLONG file_bytes = m_file->GetLength();
  auto header = LoadHeader(*m_file, file_bytes);
  if (!header) return 0;
  m_header_bytes = header->m_header_bytes;
  m_image_width = header->m_image_width;
  m_image_height = header->m_image_height;
  m_board_index = header->m_board_index;
  m_camera_index = header->m_camera_index;
  m_start_time = header->m_start_time;
  m_gmt = header->m_gmt;
  m_host_name = std::move(header->m_host_name);
  m_board_name = std::move(header->m_board_name);
  m_camera_name = std::move(header->m_camera_name);

  // The file's length tells how many faces there are: the header is never written again.
  const ULONGLONG face_bytes = file_bytes > m_header_bytes ? file_bytes - m_header_bytes : 0;
  const ULONGLONG faces = face_bytes / (PictureBytes() + kTimeBytes);
  m_total_faces = static_cast<DWORD>(std::min<ULONGLONG>(faces, std::numeric_limits<DWORD>::max()));
  m_current_index = 0;
  m_end_time = m_start_time;
  if (m_total_faces > 0) {
    std::array<BYTE, kTimeBytes> time{};
    m_file->Seek(RecordOffset(m_total_faces - 1));
    m_file->Read(time);
    m_end_time = ByteReader(time).Get<DWORD>();
  }
  m_file->Seek(m_header_bytes);
  return 1;
}

int CMoxFile::Write(const BYTE* picture, DWORD time) {
  if (picture == nullptr || m_write_mode == 0 || m_file == nullptr) return 0;
  std::array<BYTE, kTimeBytes> time_bytes;
  ByteWriter(time_bytes).Put(time);
  m_file->WritePieces({time_bytes, {picture, static_cast<std::size_t>(PictureBytes())}});
  m_end_time = m_face_time = time;
  ++m_total_faces;
  ++m_current_index;
  return 1;
}

int CMoxFile::Read(BYTE* picture, DWORD* time, int index) {
  return Read(std::span(picture, picture != nullptr ? PictureBytes() : 0), time, index);
}

int CMoxFile::Read(std::span<BYTE> picture, DWORD* time, int index) {
  if (picture.data() == nullptr || m_write_mode != 0 || m_file == nullptr) return 0;
  if (index != kCurrentFace) m_current_index = static_cast<DWORD>(index);
  if (m_current_index >= m_total_faces || picture.size() < PictureBytes()) return 0;
  m_file->Seek(RecordOffset(m_current_index));
  std::array<BYTE, kTimeBytes> time_bytes;
  if (m_file->Read(time_bytes) != time_bytes.size()) return 0;
  m_face_time = ByteReader(time_bytes).Get<DWORD>();
  const auto pixels = picture.first(static_cast<std::size_t>(PictureBytes()));
  if (m_file->Read(pixels) != pixels.size()) return 0;
  if (time != nullptr) *time = m_face_time;
  return 1;
}

CSize CMoxFile::GetImageSize() const {
  return {static_cast<LONG>(m_image_width), static_cast<LONG>(m_image_height)};
}

ULONGLONG CMoxFile::RecordOffset(DWORD index) const {
  return m_header_bytes + index * (PictureBytes() + kTimeBytes);
}
