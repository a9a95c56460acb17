#include "record/zeb_frame_data.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <string_view>

#include "platform/framework/byte_order.h"
#include "platform/framework/error_report.h"
#include "platform/framework/file.h"
#include "platform/framework/file_exception.h"
#include "platform/os/clock.h"

using namespace zebx;

namespace {

constexpr std::size_t kMaxTextBytes = 255;

std::shared_ptr<BYTE[]> MakeBuffer(DWORD bytes) {
  return bytes != 0 ? std::make_shared_for_overwrite<BYTE[]>(bytes) : nullptr;
}

std::string_view CutText(const CString& text) {
  return {text.data(), std::min(text.size(), kMaxTextBytes)};
}

CString FormatText(const char* format, DWORD first, DWORD second = 0) {
  char text[32];
  const int length = std::snprintf(text, sizeof text, format, first, second);
  return {text, static_cast<std::size_t>(length)};
}

}  // namespace

CZebFrameData::CZebFrameData(DWORD width, DWORD height, DWORD audio_size)
    : m_time_stamp(os::GetTickCount()),
      m_video(MakeBuffer(width * height * 2)),
      m_speech(MakeBuffer(audio_size)),
      m_video_capacity(width * height * 2),
      m_speech_capacity(audio_size),
      m_period_start_stamp(m_time_stamp) {}

CZebFrameData::CZebFrameData(const CZebFrameData&) = default;

CZebFrameData::~CZebFrameData() = default;

int CZebFrameData::CreateBuffer(DWORD video_size, DWORD speech_size) {
  if (video_size == 0 || speech_size == 0) return 0;
  auto video = MakeBuffer(video_size);
  auto speech = MakeBuffer(speech_size);
  m_video = std::move(video);
  m_speech = std::move(speech);
  m_video_capacity = video_size;
  m_speech_capacity = speech_size;
  return 1;
}

void CZebFrameData::Reserve(const FrameHeader& header) {
  if (header.m_video_bytes > m_video_capacity) {
    m_video = MakeBuffer(header.m_video_bytes);
    m_video_capacity = header.m_video_bytes;
    m_video_length = 0;
  }
  if (header.m_speech_bytes > m_speech_capacity) {
    m_speech = MakeBuffer(header.m_speech_bytes);
    m_speech_capacity = header.m_speech_bytes;
    m_speech_length = 0;
  }
}

int CZebFrameData::operator=(const CZebFrameData& other) {
  if (this == &other) return 1;
  // A length that says more than its buffer holds is passed on without bytes.
  const bool copies_video = m_video && other.m_video && other.HoldsVideo();
  const bool copies_speech = m_speech && other.m_speech && other.HoldsSpeech() && other.IsVoice();
  if (copies_video && other.m_video_length > m_video_capacity) return 0;
  if (copies_speech && other.m_speech_length > m_speech_capacity) return 0;

  m_block_index = other.m_block_index;
  m_frame_index = other.m_frame_index;
  m_frame_type = other.m_frame_type;
  m_flags = other.m_flags;
  m_video_length = other.m_video_length;
  m_time_stamp = other.m_time_stamp;
  m_speech_length = other.m_speech_length;
  if (copies_video) std::copy_n(other.m_video.get(), m_video_length, m_video.get());
  if (copies_speech) std::copy_n(other.m_speech.get(), m_speech_length, m_speech.get());
  return 1;
}

int CZebFrameData::CopyHeader(const CZebFrameData& other) {
  m_frame_type = other.m_frame_type;
  m_flags = other.m_flags;
  m_time_stamp = other.m_time_stamp;
  m_frame_rate = other.m_frame_rate;
  m_code_rate = other.m_code_rate;
  return 1;
}

void CZebFrameData::Reset() {
  m_video_length = 0;
  m_speech_length = 0;
  m_frame_type = 0;
  m_flags = 0;
  m_time_stamp = 0;
}

int CZebFrameData::SetVideoLength(DWORD length) {
  if (!m_video || length > m_video_capacity) return 0;
  m_video_length = length;
  return 1;
}

int CZebFrameData::SetSpeechData(BYTE* data, DWORD length) {
  if (data == nullptr || !IsVoice() || !m_speech || length > m_speech_capacity) return 0;
  std::copy_n(data, length, m_speech.get());
  m_speech_length = length;
  return 1;
}

void CZebFrameData::SetEncoderType(BYTE type) {
  m_flags = static_cast<WORD>(m_flags | ((type << 4) & kFrameEncoderTypeMask));
}

void CZebFrameData::SetBit(WORD bit, int on) {
  m_flags = static_cast<WORD>(on != 0 ? m_flags | bit : m_flags & ~bit);
}

DWORD CZebFrameData::GetSize() const {
  const std::size_t speech_bytes = IsVoice() ? sizeof(DWORD) + m_speech_length : 0;
  return static_cast<DWORD>(kFrameHeaderBytes + m_video_length + speech_bytes + 2 +
                            CutText(m_frame_rate).size() + CutText(m_code_rate).size());
}

DWORD CZebFrameData::Write(BYTE*& cursor) const {
  if (!IsWritable()) return 0;
  // The record's own form, whatever a derived class adds to GetSize().
  ByteWriter writer({cursor, CZebFrameData::GetSize()});
  writer.Put(m_frame_type);
  writer.Put(m_flags);
  writer.Put(m_time_stamp);
  writer.Put(m_video_length);
  writer.PutBytes({m_video.get(), m_video_length});
  if (IsVoice()) {
    writer.Put(m_speech_length);
    writer.PutBytes({m_speech.get(), m_speech_length});
  }
  for (const CString* text : {&m_frame_rate, &m_code_rate}) {
    writer.Put(static_cast<BYTE>(CutText(*text).size()));
    writer.PutText(CutText(*text));
  }
  cursor += writer.Written();
  return static_cast<DWORD>(writer.Written());
}

DWORD CZebFrameData::Read(BYTE*& cursor) {
  return Read(cursor, UnknownEnd(cursor));
}

// The buffer form taken apart; bytes and texts are borrowed.
struct CZebFrameData::BufferForm {
  WORD m_frame_type = 0;
  WORD m_flags = 0;
  DWORD m_time_stamp = 0;
  std::span<const BYTE> m_video;
  std::span<const BYTE> m_speech;
  std::string_view m_frame_rate;
  std::string_view m_code_rate;
  std::size_t m_bytes = 0;
};

// Nothing for a form that is not whole or does not fit the buffers, whose sizes therefore bound how
// far a length leads.
std::optional<CZebFrameData::BufferForm> CZebFrameData::ParseBufferForm(
    std::span<const BYTE> bytes) const {
  ByteReader reader(bytes);
  const auto take_text = [&reader] {
    const auto text = reader.Take(reader.Get<BYTE>());
    return std::string_view(reinterpret_cast<const char*>(text.data()), text.size());
  };
  BufferForm form;
  form.m_frame_type = reader.Get<WORD>();
  form.m_flags = reader.Get<WORD>();
  form.m_time_stamp = reader.Get<DWORD>();
  const auto video_length = reader.Get<DWORD>();
  if (video_length > m_video_capacity) return std::nullopt;
  form.m_video = reader.Take(video_length);
  if ((form.m_flags & kFrameVoice) != 0) {
    const auto speech_length = reader.Get<DWORD>();
    if (speech_length > m_speech_capacity) return std::nullopt;
    form.m_speech = reader.Take(speech_length);
  }
  form.m_frame_rate = take_text();
  form.m_code_rate = take_text();
  if (!reader.Ok()) return std::nullopt;
  form.m_bytes = bytes.size() - reader.Remaining();
  return form;
}

std::size_t CZebFrameData::BufferFormBytes(const BYTE* cursor, const BYTE* end) const {
  const auto form = ParseBufferForm({cursor, end});
  return form ? form->m_bytes : 0;
}

DWORD CZebFrameData::Read(BYTE*& cursor, const BYTE* end) {
  const auto form = ParseBufferForm({cursor, end});
  if (!form) return 0;
  try {
    CString frame_rate(form->m_frame_rate);
    CString code_rate(form->m_code_rate);
    if (!frame_rate.empty()) m_frame_rate = std::move(frame_rate);
    if (!code_rate.empty()) m_code_rate = std::move(code_rate);
  } catch (const std::bad_alloc& failure) {
    ReportError(failure);
    return 0;
  }
  m_frame_type = form->m_frame_type;
  m_flags = form->m_flags;
  m_time_stamp = form->m_time_stamp;
  m_video_length = static_cast<DWORD>(form->m_video.size());
  if (IsVoice()) m_speech_length = static_cast<DWORD>(form->m_speech.size());
  std::ranges::copy(form->m_video, m_video.get());
  std::ranges::copy(form->m_speech, m_speech.get());
  cursor += form->m_bytes;
  return static_cast<DWORD>(form->m_bytes);
}

FrameHeader CZebFrameData::GetHeader() const {
  FrameHeader header;
  header.m_type = m_frame_type;
  header.m_flags = m_flags;
  header.m_time_stamp = m_time_stamp;
  header.m_video_bytes = m_video_length;
  if (header.IsVoice()) header.m_speech_bytes = m_speech_length;
  return header;
}

bool CZebFrameData::IsWritable() const {
  return HoldsVideo() && (!IsVoice() || HoldsSpeech());
}

DWORD CZebFrameData::WriteTo(CFile& file, std::span<const BYTE> before) const {
  const FrameHeader header = GetHeader();
  std::array<BYTE, kVoicedFrameHeaderBytes> buffer;
  file.WritePieces({before,
                    header.Format(buffer),
                    {m_video.get(), header.m_video_bytes},
                    {m_speech.get(), header.m_speech_bytes}});
  return static_cast<DWORD>(header.TotalBytes());
}

bool CZebFrameData::ReadFrom(CFile& file) {
  // Whatever is found, the bytes of the frame before are not to pass for this one's.
  m_video_length = 0;
  m_speech_length = 0;
  const auto header = FrameHeader::Read(file);
  if (!header) return false;
  m_frame_type = header->m_type;
  m_flags = header->m_flags;
  m_time_stamp = header->m_time_stamp;

  const ULONGLONG body = file.GetPosition();
  if (header->m_video_bytes > m_video_capacity || header->m_speech_bytes > m_speech_capacity) {
    // Step over the frame, so that the next one is found; a length that leads out of the file is
    // damage, and then nothing behind it can be trusted.
    if (body + header->BodyBytes() <= file.GetLength()) file.Seek(body + header->BodyBytes());
    return false;
  }
  if (file.Read({m_video.get(), header->m_video_bytes}) < header->m_video_bytes) return false;
  if (file.Read({m_speech.get(), header->m_speech_bytes}) < header->m_speech_bytes) return false;
  m_video_length = header->m_video_bytes;
  m_speech_length = header->m_speech_bytes;
  return true;
}

DWORD CZebFrameData::Write(CFile* file) const {
  if (file == nullptr) return 0;
  try {
    if (IsWritable()) return WriteTo(*file);
    // What stands before the missing buffer still goes into the file.
    std::array<BYTE, kVoicedFrameHeaderBytes> buffer;
    file->WritePieces({GetHeader().Format(buffer),
                       {m_video.get(), HoldsVideo() ? m_video_length : std::size_t{0}}});
    return 0;
  } catch (const std::exception& failure) {
    ReportError(failure);
    return 0;
  }
}

int CZebFrameData::Read(CFile* file) {
  if (file == nullptr) return 0;
  try {
    return ReadFrom(*file) ? 1 : 0;
  } catch (const std::exception& failure) {
    ReportError(failure);
    return 0;
  }
}

void CZebFrameData::ResetCodeStatus() {
  m_frame_index = 0;
  m_period_bytes = 0;
  m_period_start_stamp = m_time_stamp;
}

void CZebFrameData::CalcuCodeStatus() {
  constexpr DWORD kFewFrames = 10;
  constexpr DWORD kMostFramesPerSecond = 30;

  const DWORD frames = static_cast<DWORD>(m_frame_index) + 1;
  m_frame_index = static_cast<int>(frames);
  if (!IsVideoLost()) m_period_bytes += m_video_length;
  // With speech the video bytes count once more: the rates on screen have always been shown so.
  if (IsVoice()) m_period_bytes += m_video_length;

  const DWORD elapsed_ms = m_time_stamp - m_period_start_stamp;
  if (elapsed_ms == 0) return;
  if (IsIFrame() && elapsed_ms * frames != 0) {
    const DWORD rate = m_period_bytes * 100 / (elapsed_ms * frames);
    // No zero padding: 1205 reads "12.5KB/s".
    m_code_rate = FormatText("%u.%uKB/s", rate / 100, rate % 100);
  }
  if (m_frame_index > static_cast<int>(kFewFrames)) {
    const DWORD centi_rate = frames * 100000 / elapsed_ms;
    const DWORD rate = centi_rate / 100 + (centi_rate % 100 > 0 ? 1 : 0);
    m_frame_rate = FormatText("%uf/s", std::min(rate, kMostFramesPerSecond));
  }
  if (IsIFrame()) ResetCodeStatus();
}
