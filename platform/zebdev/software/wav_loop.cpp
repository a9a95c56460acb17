#include "platform/zebdev/software/wav_loop.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/framework/byte_order.h"

namespace zebx::zebdev {
namespace {

constexpr DWORD kSoundRate = 8000;
constexpr std::size_t kBlockBytes = 8192;
constexpr int kMaxChunks = 1000;  // before the sound: nobody writes so many

constexpr std::size_t kIdBytes = 4;
constexpr std::size_t kChunkHeadBytes = 8;
constexpr std::size_t kMaxFormatBytes = 40;
constexpr WORD kPcm = 1;
constexpr WORD kExtensible = 0xFFFE;  // the format word stands further behind
constexpr std::size_t kExtendedFormatOffset = 24;

std::int16_t ValueAt(const BYTE* bytes, std::size_t bytes_per_value) {
  constexpr int kSilence = 128;  // of values of 8 bits
  if (bytes_per_value == 1) return static_cast<std::int16_t>((*bytes - kSilence) * 256);
  return static_cast<std::int16_t>(bytes[0] | bytes[1] << 8);
}

}  // namespace

CString WavLoop::Open(const CString& path) {
  CFileException error(CFileException::Cause::kGeneric, 0, path);
  if (m_file.Open(path, CFile::kModeRead | CFile::kShareDenyNone, &error) == 0) return error.what();
  try {
    const CString fault = FindChunks();
    if (!fault.empty()) return "cannot read " + path + ": " + fault;
  } catch (const CFileException& failure) {
    return failure.what();
  }
  m_block.resize(kBlockBytes);
  return {};
}

CString WavLoop::FindChunks() {
  std::array<BYTE, kChunkHeadBytes + kIdBytes> head;
  ByteReader file_head({head.data(), m_file.Read(head)});
  const CString riff = file_head.TakeText(kIdBytes);
  file_head.Get<DWORD>();  // the size, which writers that stopped early did not set
  if (riff != "RIFF" || file_head.TakeText(kIdBytes) != "WAVE") return "it is no WAV file";
  for (int chunk = 0; chunk < kMaxChunks; ++chunk) {
    ByteReader reader({head.data(), m_file.Read({head.data(), kChunkHeadBytes})});
    const CString id = reader.TakeText(kIdBytes);
    const auto size = reader.Get<DWORD>();
    if (!reader.Ok()) break;
    const ULONGLONG begin = m_file.GetPosition();
    if (id == "fmt ") {
      std::array<BYTE, kMaxFormatBytes> format;
      const std::size_t asked = std::min<std::size_t>(size, format.size());
      const std::size_t count = m_file.Read({format.data(), asked});
      CString fault = TakeFormat({format.data(), count});
      if (!fault.empty()) return fault;
    } else if (id == "data") {
      if (m_rate == 0) return "its sound comes before its format";
      m_data_offset = begin;
      const ULONGLONG length = m_file.GetLength();
      const ULONGLONG bytes = std::min<ULONGLONG>(size, length - std::min(begin, length));
      m_count = bytes / (m_channels * m_bytes_per_value);
      return m_count == 0 ? "it holds no sound" : CString();
    }
    m_file.Seek(begin + size + size % 2);
  }
  return "it holds no sound";
}

CString WavLoop::TakeFormat(std::span<const BYTE> chunk) {
  ByteReader reader(chunk);
  auto kind = reader.Get<WORD>();
  m_channels = reader.Get<WORD>();
  m_rate = reader.Get<DWORD>();
  reader.Get<DWORD>();  // bytes a second
  reader.Get<WORD>();   // bytes a sample
  const auto bits = reader.Get<WORD>();
  if (!reader.Ok()) return "its format is not whole";
  if (kind == kExtensible && chunk.size() >= kExtendedFormatOffset + sizeof(WORD)) {
    kind = ByteReader(chunk.subspan(kExtendedFormatOffset)).Get<WORD>();
  }
  m_bytes_per_value = bits / 8U;
  const bool is_known = kind == kPcm && (bits == 8 || bits == 16) && m_channels >= 1 &&
                        m_channels <= 2 && m_rate >= 1 && m_rate <= kMaxRate;
  return is_known ? CString() : "it is no PCM of 8 or 16 bits with one or two channels";
}

bool WavLoop::Read(std::span<std::int16_t> samples) {
  if (m_count == 0) return false;
  auto sample = samples.begin();
  try {
    if (!m_is_begun) {
      m_here = SampleAt(m_index);
      m_next = SampleAt(m_index + 1);
      if (m_count == 0) return false;
      m_is_begun = true;
    }
    for (; sample != samples.end(); ++sample) {
      const int part = static_cast<int>(m_part);
      const int rise = (m_next - m_here) * part / static_cast<int>(kSoundRate);
      *sample = static_cast<std::int16_t>(m_here + rise);
      Advance();
    }
  } catch (const CFileException&) {
    // The disk may get over it: silence until the next call tries again.
    std::fill(sample, samples.end(), std::int16_t{0});
    m_is_begun = false;
  }
  return true;
}

void WavLoop::Advance() {
  m_part += m_rate;
  const DWORD steps = m_part / kSoundRate;
  m_part %= kSoundRate;
  if (steps == 0) return;
  m_index += steps;
  m_here = steps == 1 ? m_next : SampleAt(m_index);
  m_next = SampleAt(m_index + 1);
  if (m_count != 0) m_index %= m_count;
}

std::int16_t WavLoop::SampleAt(ULONGLONG index) {
  if (m_count == 0) return 0;
  index %= m_count;
  const std::size_t sample_bytes = m_channels * m_bytes_per_value;
  if (index < m_block_index || index - m_block_index >= m_block_samples) {
    m_block_samples = 0;
    m_file.Seek(m_data_offset + index * sample_bytes);
    const std::size_t count = m_file.Read(m_block) / sample_bytes;
    m_block_samples = std::min<ULONGLONG>(count, m_count - index);
    m_block_index = index;
    if (m_block_samples == 0) {
      m_count = index;
      return 0;
    }
  }
  const BYTE* const at = m_block.data() + (index - m_block_index) * sample_bytes;
  const std::int16_t first = ValueAt(at, m_bytes_per_value);
  if (m_channels == 1) return first;
  return static_cast<std::int16_t>((first + ValueAt(at + m_bytes_per_value, m_bytes_per_value)) /
                                   2);
}

}  // namespace zebx::zebdev
