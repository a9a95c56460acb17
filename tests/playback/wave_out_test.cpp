// The ring of buffers, with a decoder that says how many samples there are as the test wants it.
#include "playback/wave_out.h"

#include <numeric>

#include "platform/os/clock.h"
#include "tests/support/recorded_sound.h"
#include "tests/support/window_fixture.h"

namespace {

using os::sound::Function;

// What the decoder says before and after decoding.
DWORD g_announced = 0;
DWORD g_decoded = 0;
int g_fails_at = 0;  // of its next calls, counted from 1
int g_decoders = 0;

bool IsToFail() {
  return --g_fails_at == 0;
}

}  // namespace

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
int __wrap_nxcCreateAudioDecoder(NxcHandle* decoder, BYTE /*flag*/) {
  if (IsToFail()) return 1;
  *decoder = reinterpret_cast<NxcHandle>(&g_decoders);
  ++g_decoders;
  return 0;
}

int __wrap_nxcDecodeAudio(NxcHandle, const BYTE* data, DWORD, std::int16_t* pcm, DWORD* samples) {
  if (IsToFail()) return 1;
  *samples = data == nullptr ? g_announced : g_decoded;
  // It says what it likes, but writes no more than there is room for.
  if (pcm != nullptr) std::iota(pcm, pcm + std::min(g_announced, g_decoded), std::int16_t{0});
  return 0;
}

int __wrap_nxcDestroyHandle(NxcHandle) {
  return --g_decoders, 0;
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
}

namespace {

class WaveOutRing : public WindowTest {
 protected:
  int Play(DWORD announced, DWORD decoded) {
    g_announced = announced;
    g_decoded = decoded;
    const BYTE packet = 0;
    return m_out.Play(&packet, 1);
  }

  // Hands the next report to the ring.
  int TakeDone() {
    os::Message message;
    os::GetMessage(&message);
    // NOLINTBEGIN(performance-no-int-to-ptr)
    m_device = reinterpret_cast<HWAVEOUT>(message.m_wparam);
    m_header = reinterpret_cast<os::WaveHeader*>(message.m_lparam);
    // NOLINTEND(performance-no-int-to-ptr)
    return m_out.OnDone(m_device, m_header);
  }

  os::SteppedClock m_clock{1000, 0};
  RecordedSound m_sound;
  HWND m_window = Make();
  CWaveOut m_out;
  HWAVEOUT m_device = nullptr;  // of the last report
  os::WaveHeader* m_header = nullptr;
};

TEST_F(WaveOutRing, SplitsPacketsAndNeverLeavesTheBuffer) {
  // Announced, decoded; the result, the buffers and the samples queued.
  constexpr DWORD kRows[][5] = {
      {0, 9, 1, 0, 0},          {1024, 1024, 1, 1, 1024},     {1025, 1025, 1, 2, 1025},
      {1024, 0, 1, 0, 0},       {10241, 10241, 0, 10, 10240}, {100, 0xFFFFFFFF, 1, 1, 1024},
      {2000, 3000, 1, 2, 2000}, {0xFFFFFFFF, 5, 1, 1, 5},
  };
  for (const auto& [announced, decoded, result, buffers, samples] : kRows) {
    SCOPED_TRACE(announced);
    ASSERT_EQ(m_out.Open(m_window, 0), 1);
    EXPECT_EQ(Play(announced, decoded), static_cast<int>(result));
    EXPECT_EQ(m_out.GetQueuedCount(), static_cast<int>(buffers));
    m_clock.Advance(2000);
    for (DWORD buffer = 0; buffer < buffers; ++buffer) EXPECT_EQ(TakeDone(), 1);
    EXPECT_EQ(m_out.GetQueuedCount(), 0);
    std::vector<BYTE> bytes;
    for (const auto& heard : m_sound.TakeHeard()) {
      bytes.insert(bytes.end(), heard.m_bytes.begin(), heard.m_bytes.end());
    }
    EXPECT_EQ(bytes.size(), samples * 2);
    for (std::size_t i = 0; i < std::min(announced, samples); ++i) {
      ASSERT_EQ(bytes[2 * i] + 256U * bytes[2 * i + 1], i);
    }
    m_out.Close();
  }
}

TEST_F(WaveOutRing, ReleasesOnlyItsOwnFinishedBuffers) {
  auto* const nowhere = reinterpret_cast<os::WaveHeader*>(8);
  EXPECT_EQ(m_out.OnDone(nullptr, nowhere) + Play(5, 5), 0);
  EXPECT_EQ(m_out.GetQueuedCount(), -1);
  m_out.Open(m_window, 0);
  EXPECT_EQ(m_out.Open(nullptr, 0), 1);
  for (int buffer = 0; buffer < 10; ++buffer) EXPECT_EQ(Play(1024, 1024), 1);
  EXPECT_EQ(Play(1, 1), 0);
  m_clock.Advance(128);
  EXPECT_EQ(TakeDone(), 1);
  EXPECT_EQ(m_out.OnDone(m_device, m_header), 0);
  EXPECT_EQ(m_out.GetQueuedCount(), 9);
  EXPECT_EQ(Play(1, 1), 1);  // in that buffer
  EXPECT_EQ(m_out.OnDone(m_device, m_header) + m_out.OnDone(m_device, nowhere), 0);
  m_out.Close();
  m_out.Open(m_window, 0);
  // The closed device has reported ten.
  for (int report = 0; report < 10; ++report) EXPECT_EQ(TakeDone(), 0);
  // Buffers that are exchanged while one of them is played.
  Play(1024, 1024);
  EXPECT_EQ(m_out.AllocBuffers(0, 4) + m_out.AllocBuffers(3, 0), 0);
  EXPECT_EQ(m_out.GetQueuedCount(), 1);
  EXPECT_EQ(m_out.AllocBuffers(1, 5), 1);
  EXPECT_EQ(Play(3, 3), 0);
  EXPECT_EQ(m_out.GetQueuedCount(), 1);
}

TEST_F(WaveOutRing, LeavesNothingBehindWhenCallsFail) {
  os::sound::SetDeviceCount(0);
  EXPECT_EQ(m_out.Open(m_window, 0), 0);
  os::sound::SetDeviceCount(2);
  g_fails_at = 1;
  EXPECT_EQ(m_out.Open(m_window, 0), 0);
  EXPECT_EQ(m_sound.Closed(), 1U);
  EXPECT_EQ(Play(1, 1) + m_out.GetQueuedCount(), 0);
  for (const DWORD nth : {1U, 2U}) {  // the question, and the opening, of device 0
    os::sound::StartJournal();
    os::sound::FailCall(Function::kOpen, nth);
    EXPECT_EQ(m_out.Open(m_window, 0), 1);
    EXPECT_EQ(os::sound::TakeJournal().back(), "waveOutOpen 1 8000 1 16 65536");
    m_out.Close();
  }
  for (const Function function : {Function::kPrepareHeader, Function::kWrite}) {
    m_out.Close();
    m_out.Open(m_window, 0);
    os::sound::FailCall(function, 2);
    EXPECT_EQ(Play(3000, 3000), 0);
    EXPECT_EQ(m_out.GetQueuedCount(), 1);
  }
  for (const int nth : {1, 2}) {
    for (const DWORD samples : {10U, 2000U}) {
      g_fails_at = nth;
      EXPECT_EQ(Play(samples, samples), 0);
    }
  }
  EXPECT_EQ(m_out.GetQueuedCount(), 1);
  os::RemoveMessages(m_window, os::kMmWomDone, os::kMmWomDone);
  // A device that does not give its buffers back may still touch them.
  for (const DWORD nth : {1U, 2U}) os::sound::FailCall(Function::kReset, nth);
  EXPECT_EQ(m_out.Close(), 1);
  m_clock.Advance(1000);
  EXPECT_EQ(TakeDone() + g_decoders, 0);
  EXPECT_EQ(os::waveOutClose(m_device), 0U);
}

}  // namespace
