// The ring of buffers, with a decoder that tells as many samples as the test says.
#include "playback/wave_out.h"

#include <gtest/gtest.h>

#include <numeric>

#include "platform/os/clock.h"
#include "tests/support/recorded_sound.h"
#include "tests/support/window_fixture.h"

namespace {

using os::sound::Function;

// What the decoder says before and after decoding, and gives; and how many of them there are.
DWORD g_announced = 0;
DWORD g_decoded = 0;
int g_fails_at = 0;  // of the next calls, counted from 1
int g_decoders = 0;

int Answer() {
  return --g_fails_at == 0 ? 1 : 0;
}

}  // namespace

extern "C" {

int __wrap_nxcCreateAudioDecoder(NxcHandle* decoder, BYTE /*flag*/) {
  static int made = 0;
  if (Answer() != 0) return 1;
  *decoder = reinterpret_cast<NxcHandle>(&made);
  ++g_decoders;
  return 0;
}

int __wrap_nxcDecodeAudio(NxcHandle, const BYTE* data, DWORD, std::int16_t* pcm, DWORD* samples) {
  if (Answer() != 0) return 1;
  *samples = data == nullptr ? g_announced : g_decoded;
  // Never more than was announced: what a decoder says is one thing, what it writes another.
  if (pcm != nullptr) std::iota(pcm, pcm + std::min(g_announced, g_decoded), std::int16_t{0});
  return 0;
}

int __wrap_nxcDestroyHandle(NxcHandle) {
  --g_decoders;
  return 0;
}
}

namespace {

class WaveOutRing : public WindowTest {
 protected:
  void SetUp() override { g_fails_at = g_decoders = 0; }

  // Plays one packet of 7 bytes.
  int Play(DWORD announced, DWORD decoded) {
    g_announced = announced;
    g_decoded = decoded;
    const BYTE packet[7] = {};
    return m_out.Play(packet, 7);
  }

  // Hands the next report to the ring.
  int TakeDone() {
    os::GetMessage(&m_report);
    return m_out.OnDone(reinterpret_cast<HWAVEOUT>(m_report.m_wparam),
                        reinterpret_cast<os::WaveHeader*>(m_report.m_lparam));
  }

  os::SteppedClock m_clock{1000, 0};
  RecordedSound m_sound;
  HWND m_window = Make();
  CWaveOut m_out;
  os::Message m_report;
};

TEST_F(WaveOutRing, SplitsPacketsAndNeverLeavesTheBuffer) {
  struct Row {
    DWORD m_announced;
    DWORD m_decoded;
    int m_result;
    int m_buffers;
    DWORD m_samples;
  };
  for (const Row& row : std::vector<Row>{{0, 9, 1, 0, 0},
                                         {1, 1, 1, 1, 1},
                                         {1024, 1024, 1, 1, 1024},
                                         {1025, 1025, 1, 2, 1025},
                                         {10240, 10240, 1, 10, 10240},
                                         {10241, 10241, 0, 10, 10240},
                                         {100, 0xFFFFFFFF, 1, 1, 1024},
                                         {1024, 0, 1, 0, 0},
                                         {2000, 3000, 1, 2, 2000},
                                         {2000, 10, 1, 1, 10},
                                         {0xFFFFFFFF, 5, 1, 1, 5}}) {
    SCOPED_TRACE(row.m_announced);
    ASSERT_EQ(m_out.Open(m_window, 0), 1);
    EXPECT_EQ(Play(row.m_announced, row.m_decoded), row.m_result);
    EXPECT_EQ(m_out.GetQueuedCount(), row.m_buffers);
    m_clock.Advance(2000);
    for (int buffer = 0; buffer < row.m_buffers; ++buffer) EXPECT_EQ(TakeDone(), 1);
    EXPECT_EQ(m_out.GetQueuedCount(), 0);
    std::vector<BYTE> bytes;
    for (const auto& heard : m_sound.TakeHeard()) {
      bytes.insert(bytes.end(), heard.m_bytes.begin(), heard.m_bytes.end());
    }
    EXPECT_EQ(bytes.size(), row.m_samples * 2);
    for (std::size_t i = 0; i < std::min(row.m_announced, row.m_samples); ++i) {
      ASSERT_EQ(bytes[2 * i] + 256 * bytes[2 * i + 1], static_cast<int>(i));
    }
    m_out.Close();
  }
}

TEST_F(WaveOutRing, ReleasesOnlyItsOwnFinishedBuffers) {
  auto* const nowhere = reinterpret_cast<os::WaveHeader*>(8);
  EXPECT_EQ(m_out.OnDone(nullptr, nowhere), 0);
  EXPECT_EQ(m_out.GetQueuedCount(), -1);
  EXPECT_EQ(Play(5, 5), 0);
  m_out.Open(m_window, 0);
  EXPECT_EQ(m_out.Open(nullptr, 0), 1);
  for (int buffer = 0; buffer < 10; ++buffer) EXPECT_EQ(Play(1024, 1024), 1);
  EXPECT_EQ(Play(1, 1), 0);
  m_clock.Advance(128);
  EXPECT_EQ(TakeDone(), 1);
  EXPECT_EQ(m_out.GetQueuedCount(), 9);
  auto* const device = reinterpret_cast<HWAVEOUT>(m_report.m_wparam);
  auto* const header = reinterpret_cast<os::WaveHeader*>(m_report.m_lparam);
  EXPECT_EQ(m_out.OnDone(device, header), 0);
  EXPECT_EQ(Play(1, 1), 1);  // in that buffer
  EXPECT_EQ(m_out.OnDone(device, header), 0);
  EXPECT_EQ(m_out.OnDone(device, nowhere) + m_out.OnDone(device, nullptr), 0);
  m_clock.Advance(128);
  os::GetMessage(&m_report);
  EXPECT_EQ(m_out.OnDone(nullptr, reinterpret_cast<os::WaveHeader*>(m_report.m_lparam)), 0);
  EXPECT_EQ(m_out.GetQueuedCount(), 10);
  // Reports of a device that was closed meanwhile lead nowhere.
  m_out.Close();
  m_out.Open(m_window, 0);
  for (int report = 0; report < 9; ++report) EXPECT_EQ(TakeDone(), 0);
  // Buffers that are taken away under way.
  EXPECT_EQ(Play(1024, 1024), 1);
  EXPECT_EQ(m_out.AllocBuffers(0, 4) + m_out.AllocBuffers(-1, 4) + m_out.AllocBuffers(3, 0), 0);
  EXPECT_EQ(m_out.GetQueuedCount(), 1);
  EXPECT_EQ(m_out.AllocBuffers(1, 5), 1);
  EXPECT_EQ(Play(3, 3), 0);
  EXPECT_EQ(m_out.GetQueuedCount(), 1);
  EXPECT_EQ(m_out.FreeBuffers(), 1);
  EXPECT_EQ(m_out.GetQueuedCount(), -1);
  m_clock.Advance(1000);
}

TEST_F(WaveOutRing, LeavesNothingBehindWhenCallsFail) {
  os::sound::StartJournal();
  const auto opens = [&] {
    const int result = m_out.Open(m_window, 0);
    const auto journal = os::sound::TakeJournal();
    // Without the handle that was closed.
    return std::tuple(result, m_out.GetQueuedCount(), journal.back().substr(0, 13));
  };
  os::sound::SetDeviceCount(0);
  EXPECT_EQ(opens(), (std::tuple(0, -1, "waveOutGetNum")));
  os::sound::SetDeviceCount(2);
  g_fails_at = 1;
  EXPECT_EQ(opens(), (std::tuple(0, 0, "waveOutClose ")));
  EXPECT_EQ(Play(1, 1) + m_out.Close(), 1);
  for (const DWORD nth : {1, 2}) {  // the question, and the opening, of device 0
    os::sound::FailCall(Function::kOpen, nth);
    EXPECT_EQ(opens(), (std::tuple(1, 0, "waveOutOpen 1")));
    m_out.Close();
    os::sound::TakeJournal();
  }
  for (const Function function : {Function::kPrepareHeader, Function::kWrite}) {
    m_out.Close();
    m_out.Open(m_window, 0);
    os::sound::FailCall(function, 2);
    EXPECT_EQ(Play(3000, 3000), 0);
    EXPECT_EQ(m_out.GetQueuedCount(), 1);
  }
  for (const int nth : {1, 2}) {
    for (const DWORD samples : {10, 2000}) {
      g_fails_at = nth;
      EXPECT_EQ(Play(samples, samples), 0);
    }
  }
  EXPECT_EQ(m_out.GetQueuedCount(), 1);
  os::RemoveMessages(m_window, os::kMmWomDone, os::kMmWomDone);
  // A device that does not give its buffers back may still touch them.
  for (const DWORD nth : {1, 2}) os::sound::FailCall(Function::kReset, nth);
  EXPECT_EQ(m_out.Close(), 1);
  m_clock.Advance(1000);
  EXPECT_EQ(TakeDone(), 0);
  EXPECT_EQ(os::waveOutClose(reinterpret_cast<HWAVEOUT>(m_report.m_wparam)), 0U);
  EXPECT_EQ(g_decoders, 0);
}

}  // namespace
