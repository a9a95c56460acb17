#include "playback/wave_out.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace {

constexpr os::WaveFormat kFormat;  // 16 bits, one channel, 8 kHz
constexpr int kBuffers = 10;
constexpr DWORD kBufferBytes = 2048;
constexpr DWORD kSampleBytes = 2;

bool IsPrepared(const os::WaveHeader& header) {
  return (os::WaveFlags(header) & os::kWavePrepared) != 0;
}

bool IsDone(const os::WaveHeader& header) {
  return (os::WaveFlags(header) & os::kWaveDone) != 0;
}

}  // namespace

struct CWaveOut::Buffer {
  os::WaveHeader m_header;
  std::vector<std::int16_t> m_block;
};

struct CWaveOut::Ring {
  std::vector<Buffer> m_buffers;
  DWORD m_samples = 0;  // that one buffer holds
  std::unique_ptr<Ring> m_next_kept;

  // Never frees a ring that a device would not give back: it may still mark its buffers.
  static void Keep(std::unique_ptr<Ring> ring);
};

void CWaveOut::Ring::Keep(std::unique_ptr<Ring> ring) {
  struct Kept {
    std::mutex m_mutex;
    std::unique_ptr<Ring> m_first;
  };
  static Kept& kept = *new Kept;
  const std::lock_guard lock(kept.m_mutex);
  ring->m_next_kept = std::move(kept.m_first);
  kept.m_first = std::move(ring);
}

CWaveOut::CWaveOut() = default;

CWaveOut::~CWaveOut() {
  Close();
}

int CWaveOut::Open(HWND notify_window, BYTE decoder_flag) {
  if (m_device != nullptr) return 1;
  if (!OpenDevice(notify_window)) return 0;
  if (AllocBuffers(kBuffers, kBufferBytes) == 0 ||
      nxcCreateAudioDecoder(&m_decoder, decoder_flag) != 0) {
    m_decoder = nullptr;
    CloseDevice();
    return 0;
  }
  return 1;
}

bool CWaveOut::OpenDevice(HWND notify_window) {
  const auto window = reinterpret_cast<std::uintptr_t>(notify_window);
  for (UINT device = 0; device < os::waveOutGetNumDevs(); ++device) {
    if (os::waveOutOpen(nullptr, device, &kFormat, 0, 0, os::kWaveFormatQuery) != 0) continue;
    if (os::waveOutOpen(&m_device, device, &kFormat, window, 0, os::kCallbackWindow) == 0) {
      return true;
    }
    m_device = nullptr;
  }
  return false;
}

void CWaveOut::CloseDevice() {
  os::waveOutClose(std::exchange(m_device, nullptr));
}

int CWaveOut::Close() {
  if (m_device != nullptr) {
    os::waveOutReset(m_device);
    FreeBuffers();
    CloseDevice();
  }
  if (m_decoder != nullptr) nxcDestroyHandle(std::exchange(m_decoder, nullptr));
  return 1;
}

int CWaveOut::AllocBuffers(int count, DWORD size) {
  if (count <= 0 || size == 0) return 0;
  FreeBuffers();
  try {
    auto ring = std::make_unique<Ring>();
    ring->m_samples = size / kSampleBytes;
    ring->m_buffers.resize(static_cast<std::size_t>(count));
    for (Buffer& buffer : ring->m_buffers) {
      buffer.m_block.resize((std::size_t{size} + 1) / kSampleBytes);
      buffer.m_header.m_data = reinterpret_cast<BYTE*>(buffer.m_block.data());
      buffer.m_header.m_length = size;
    }
    m_ring = std::move(ring);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 1;
}

int CWaveOut::FreeBuffers() {
  if (m_ring == nullptr) return 1;
  const auto is_queued = [](const Buffer& buffer) {
    return IsPrepared(buffer.m_header) && !IsDone(buffer.m_header);
  };
  if (std::ranges::any_of(m_ring->m_buffers, is_queued) && os::waveOutReset(m_device) != 0) {
    Ring::Keep(std::move(m_ring));
  }
  m_ring.reset();
  return 1;
}

int CWaveOut::Play(const BYTE* data, int length) {
  if (length <= 0 || data == nullptr || m_device == nullptr || m_ring == nullptr) return 0;
  DWORD announced = 0;
  if (nxcDecodeAudio(m_decoder, nullptr, static_cast<DWORD>(length), nullptr, &announced) != 0) {
    return 0;
  }
  if (announced > m_ring->m_samples) return PlayLong(data, length, announced);
  if (announced == 0) return 1;
  Buffer* const buffer = FindFree();
  if (buffer == nullptr) return 0;
  const std::int64_t samples = Decode(data, length, announced, buffer->m_block);
  if (samples <= 0) return samples == 0 ? 1 : 0;
  return Queue(*buffer, static_cast<std::size_t>(samples)) ? 1 : 0;
}

int CWaveOut::PlayLong(const BYTE* data, int length, DWORD announced) {
  // Not cleared: a count that no packet has would take the memory of the machine.
  const std::unique_ptr<std::int16_t[]> pcm(new (std::nothrow) std::int16_t[announced]);
  if (pcm == nullptr) return 0;
  const std::int64_t samples = Decode(data, length, announced, {pcm.get(), announced});
  if (samples < 0) return 0;
  for (std::int64_t begin = 0; begin < samples;) {
    Buffer* const buffer = FindFree();
    if (buffer == nullptr) return 0;
    const std::int64_t count = std::min<std::int64_t>(samples - begin, m_ring->m_samples);
    std::copy_n(pcm.get() + begin, count, buffer->m_block.data());
    if (!Queue(*buffer, static_cast<std::size_t>(count))) return 0;
    begin += count;
  }
  return 1;
}

std::int64_t CWaveOut::Decode(const BYTE* data, int length, DWORD announced,
                              std::span<std::int16_t> pcm) {
  DWORD samples = announced;
  if (nxcDecodeAudio(m_decoder, data, static_cast<DWORD>(length), pcm.data(), &samples) != 0) {
    return -1;
  }
  return std::min<std::int64_t>(samples, std::ssize(pcm));
}

CWaveOut::Buffer* CWaveOut::FindFree() {
  const auto found = std::ranges::find_if(
      m_ring->m_buffers, [](const Buffer& buffer) { return !IsPrepared(buffer.m_header); });
  return found == m_ring->m_buffers.end() ? nullptr : &*found;
}

bool CWaveOut::Queue(Buffer& buffer, std::size_t samples) {
  os::WaveHeader& header = buffer.m_header;
  header.m_length = static_cast<DWORD>(samples * kSampleBytes);
  header.m_flags = 0;
  if (os::waveOutPrepareHeader(m_device, &header, sizeof header) != 0) return false;
  if (os::waveOutWrite(m_device, &header, sizeof header) == 0) return true;
  os::waveOutUnprepareHeader(m_device, &header, sizeof header);
  return false;
}

int CWaveOut::GetQueuedCount() const {
  if (m_ring == nullptr) return -1;
  return static_cast<int>(std::ranges::count_if(
      m_ring->m_buffers, [](const Buffer& buffer) { return IsPrepared(buffer.m_header); }));
}

int CWaveOut::OnDone(HWAVEOUT device, os::WaveHeader* header) {
  if (device != m_device || m_ring == nullptr) return 0;
  const auto is_it = [&](const Buffer& buffer) { return &buffer.m_header == header; };
  if (std::ranges::none_of(m_ring->m_buffers, is_it) || !IsDone(*header)) return 0;
  os::waveOutUnprepareHeader(m_device, header, sizeof *header);
  header->m_flags = 0;
  return 1;
}
