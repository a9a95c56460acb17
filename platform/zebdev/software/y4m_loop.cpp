#include "platform/zebdev/software/y4m_loop.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace zebx::zebdev {
namespace {

// Reads up to the line break and puts the position behind it. Nothing when there is none within the
// longest line. The line lies in `bytes`.
std::optional<std::string_view> ReadLine(CFile& file, std::vector<BYTE>& bytes) {
  bytes.resize(kY4mMaxLineBytes + 1);
  const ULONGLONG begin = file.GetPosition();
  const std::size_t count = file.Read(bytes);
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), count);
  const std::size_t length = text.find('\n');
  if (length == std::string_view::npos) return std::nullopt;
  file.Seek(begin + length + 1);
  return text.substr(0, length);
}

}  // namespace

CString Y4mLoop::Open(const CString& path) {
  CFileException error(CFileException::Cause::kGeneric, 0, path);
  if (m_file.Open(path, CFile::kModeRead | CFile::kShareDenyNone, &error) == 0) return error.what();
  const CString fault = ReadHeader();
  if (!fault.empty()) return "cannot read " + path + ": " + fault;
  return {};
}

CString Y4mLoop::ReadHeader() {
  try {
    const auto line = ReadLine(m_file, m_line);
    if (!line) return "it does not begin with the header line of a Y4M video";
    CString fault;
    const auto header = ParseY4mHeader(*line, fault);
    if (!header) return fault;
    m_header = *header;
    m_first_offset = m_file.GetPosition();
    if (!ReadFrameLine() || !IsPictureThere()) return "not even its first picture is whole";
  } catch (const CFileException& error) {
    return error.what();
  }
  m_picture = noxcodec::Picture(m_header.width, m_header.height);
  Rewind();
  return {};
}

const noxcodec::Picture* Y4mLoop::PictureAt(ULONGLONG time_ms) {
  const ULONGLONG number = m_header.rate.NumberAt(time_ms);
  try {
    // Each turn that does not get there has found the file shorter than it was taken for.
    do {
      if (GoTo(m_count == 0 ? number : number % m_count)) return &m_picture;
      m_count = m_next;
      Rewind();
    } while (m_count != 0);
  } catch (const CFileException&) {
    // The disk may get over it: the next picture is tried from the start of the file.
    Rewind();
  }
  return nullptr;
}

// False when the file ends before the picture does; m_next is then the number of whole ones.
bool Y4mLoop::GoTo(ULONGLONG index) {
  if (m_is_shown && m_next == index + 1) return true;
  if (index < m_next) Rewind();
  while (m_next < index) {
    if (!SkipPicture()) return false;
  }
  return ReadPicture();
}

bool Y4mLoop::ReadPicture() {
  m_is_shown = false;
  if (!ReadFrameLine()) return false;
  for (int index = 0; index < noxcodec::kPlaneCount; ++index) {
    // Without a border the rows of a plane follow each other at once.
    const noxcodec::MutablePlaneView plane = m_picture.Plane(index);
    const auto bytes =
        static_cast<std::size_t>(plane.stride) * static_cast<std::size_t>(plane.height);
    if (m_file.Read({plane.pixels, bytes}) < bytes) return false;
  }
  ++m_next;
  ++m_pictures_read;
  m_is_shown = true;
  return true;
}

bool Y4mLoop::SkipPicture() {
  m_is_shown = false;
  if (!ReadFrameLine() || !IsPictureThere()) return false;
  m_file.Seek(m_file.GetPosition() + RawPictureBytes(m_header.width, m_header.height));
  ++m_next;
  return true;
}

bool Y4mLoop::ReadFrameLine() {
  const auto line = ReadLine(m_file, m_line);
  return line && IsY4mFrameLine(*line);
}

bool Y4mLoop::IsPictureThere() const {
  return m_file.GetPosition() + RawPictureBytes(m_header.width, m_header.height) <=
         m_file.GetLength();
}

void Y4mLoop::Rewind() {
  m_file.Seek(m_first_offset);
  m_next = 0;
  m_is_shown = false;
}

}  // namespace zebx::zebdev
