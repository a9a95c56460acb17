#include "tools/zebtool/wav.h"

#include <algorithm>
#include <array>
#include <limits>

#include "platform/framework/byte_order.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr WORD kFormatPcm = 1;
constexpr WORD kFormatExtensible = 0xFFFE;
constexpr std::size_t kChunkHeaderBytes = 8;
constexpr std::size_t kRiffHeaderBytes = 12;
constexpr DWORD kFormatBytes = 16;
constexpr DWORD kExtensibleFormatBytes = 26;  // up to the first word of the format's identifier
constexpr std::size_t kHeaderBytes = kRiffHeaderBytes + 2 * kChunkHeaderBytes + kFormatBytes;
// Programs that write into a pipe do not know the length yet and put this or 0 in its place.
constexpr DWORD kUnknownLength = 0xFFFFFFFF;
constexpr WORD kBitsPerByte = 8;
constexpr WORD kBytesPerSample = 2;

std::array<BYTE, kHeaderBytes> FormatHeader(ULONGLONG samples) {
  constexpr DWORD kMostBytes = std::numeric_limits<DWORD>::max() - kHeaderBytes;
  const DWORD bytes =
      static_cast<DWORD>(std::min<ULONGLONG>(samples * kBytesPerSample, kMostBytes));
  std::array<BYTE, kHeaderBytes> header{};
  ByteWriter writer(header);
  writer.PutText("RIFF");
  writer.Put(static_cast<DWORD>(kHeaderBytes - kChunkHeaderBytes + bytes));
  writer.PutText("WAVEfmt ");
  writer.Put(kFormatBytes);
  writer.Put(kFormatPcm);
  writer.Put(WORD{1});
  writer.Put(kSpeechRate);
  writer.Put(kSpeechRate * kBytesPerSample);
  writer.Put(kBytesPerSample);
  writer.Put(static_cast<WORD>(kBytesPerSample * kBitsPerByte));
  writer.PutText("data");
  writer.Put(bytes);
  return header;
}

}  // namespace

WavReader::WavReader(InputStream& input) : m_input(input) {
  std::array<BYTE, kRiffHeaderBytes> riff{};
  m_input.Read(riff);
  ByteReader reader(riff);
  const CString outer = reader.TakeText(4);
  reader.Get<DWORD>();
  if (outer != "RIFF" || reader.TakeText(4) != "WAVE") Fail("it is no WAV file");
  while (true) {
    std::array<BYTE, kChunkHeaderBytes> chunk{};
    if (m_input.Read(chunk) < chunk.size()) Fail("it holds no sound");
    ByteReader fields(chunk);
    const CString name = fields.TakeText(4);
    const auto length = fields.Get<DWORD>();
    if (name == "data") {
      m_rest =
          length == 0 || length == kUnknownLength ? std::numeric_limits<ULONGLONG>::max() : length;
      break;
    }
    if (name == "fmt ") {
      ReadFormat(length);
    } else {
      m_input.Skip(length);
    }
    m_input.Skip(length % 2);  // chunks are padded to even lengths
  }
  if (m_rate == 0) Fail("the sound comes before its format");
}

void WavReader::Fail(const std::string& what) const {
  throw JobError("cannot read " + m_input.Name() + ": " + what +
                 "; 'ffmpeg -i SOUND -ar 8000 -ac 1 -c:a pcm_s16le OUT.wav' makes one that fits");
}

void WavReader::ReadFormat(DWORD chunk_bytes) {
  std::array<BYTE, kExtensibleFormatBytes> bytes{};
  const DWORD taken = std::min(chunk_bytes, kExtensibleFormatBytes);
  if (taken < kFormatBytes || m_input.Read(std::span(bytes).first(taken)) < taken) {
    Fail("its format is cut off");
  }
  m_input.Skip(chunk_bytes - taken);
  ByteReader reader(bytes);
  auto format = reader.Get<WORD>();
  m_channels = reader.Get<WORD>();
  m_rate = reader.Get<DWORD>();
  reader.Get<DWORD>();  // bytes a second
  reader.Get<WORD>();   // bytes of a sample of all channels
  const auto bits = reader.Get<WORD>();
  if (format == kFormatExtensible && taken == kExtensibleFormatBytes) {
    reader.Take(kExtensibleFormatBytes - kFormatBytes - sizeof(WORD));
    format = reader.Get<WORD>();
  }
  m_sample_bytes = bits / kBitsPerByte;
  if (format != kFormatPcm || (bits != 8 && bits != 16) || m_channels < 1 || m_channels > 2) {
    Fail("only PCM of 8 or 16 bits in one or two channels is taken");
  }
  if (m_rate < kMinRate || m_rate > kMaxRate) {
    Fail(std::to_string(m_rate) + " samples a second cannot be");
  }
}

std::int16_t WavReader::SampleAt(const BYTE* bytes) const {
  int sum = 0;
  for (std::size_t channel = 0; channel < m_channels; ++channel, bytes += m_sample_bytes) {
    // 8-bit samples are unsigned with their zero in the middle.
    sum += m_sample_bytes == 1 ? (bytes[0] - 0x80) * 0x100
                               : ByteReader({bytes, kBytesPerSample}).Get<std::int16_t>();
  }
  return static_cast<std::int16_t>(sum / static_cast<int>(m_channels));
}

std::size_t WavReader::Read(std::span<std::int16_t> into) {
  const std::size_t step = m_channels * m_sample_bytes;
  m_bytes.resize(static_cast<std::size_t>(std::min<ULONGLONG>(into.size() * step, m_rest)));
  const std::size_t bytes = m_input.Read(m_bytes);
  m_rest = bytes < m_bytes.size() ? 0 : m_rest - bytes;
  const std::size_t samples = bytes / step;
  for (std::size_t i = 0; i < samples; ++i) into[i] = SampleAt(&m_bytes[i * step]);
  return samples;
}

WavWriter::WavWriter(OutputStream& output) : m_output(output) {
  m_output.Write(FormatHeader(0));
}

void WavWriter::Write(std::span<const std::int16_t> samples) {
  m_bytes.resize(samples.size() * kBytesPerSample);
  ByteWriter writer(m_bytes);
  for (const std::int16_t sample : samples) writer.Put(sample);
  m_output.Write(m_bytes);
  m_samples += samples.size();
}

void WavWriter::Finish() {
  m_output.Rewrite(FormatHeader(m_samples));
}

}  // namespace zebtool
