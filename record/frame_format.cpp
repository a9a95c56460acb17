#include "record/frame_format.h"

#include "platform/framework/byte_order.h"
#include "platform/framework/file.h"

namespace zebx {

std::optional<FrameHeader> FrameHeader::Parse(std::span<const BYTE> bytes) {
  ByteReader reader(bytes);
  FrameHeader header;
  header.m_type = reader.Get<WORD>();
  header.m_flags = reader.Get<WORD>();
  header.m_time_stamp = reader.Get<DWORD>();
  header.m_video_bytes = reader.Get<DWORD>();
  if (header.IsVoice()) header.m_speech_bytes = reader.Get<DWORD>();
  if (!reader.Ok()) return std::nullopt;
  return header;
}

std::optional<FrameHeader> FrameHeader::Read(CFile& file) {
  const ULONGLONG start = file.GetPosition();
  std::array<BYTE, kVoicedFrameHeaderBytes> buffer;
  const std::size_t count = file.Read(buffer);
  const auto header = Parse(std::span(buffer).first(count));
  if (header) file.Seek(start + header->HeaderBytes());
  return header;
}

std::span<const BYTE> FrameHeader::Format(std::array<BYTE, kVoicedFrameHeaderBytes>& buffer) const {
  ByteWriter writer(buffer);
  writer.Put(m_type);
  writer.Put(m_flags);
  writer.Put(m_time_stamp);
  writer.Put(m_video_bytes);
  if (IsVoice()) writer.Put(m_speech_bytes);
  return std::span(buffer).first(writer.Written());
}

}  // namespace zebx
