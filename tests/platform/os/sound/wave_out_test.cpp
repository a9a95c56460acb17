// The paced device behind the wave-out functions, by a clock that is stepped by hand.
#include <array>
#include <functional>
#include <list>
#include <utility>

#include "platform/os/clock.h"
#include "platform/os/threads/thread.h"
#include "platform/os/windows/window_thread.h"
#include "tests/support/recorded_sound.h"
#include "tests/support/window_fixture.h"

namespace {

using Heard = std::vector<RecordedSound::Heard>;

constexpr UINT kBytes = sizeof(os::WaveHeader);
constexpr os::WaveFormat kSpeech;
constexpr os::WaveFormat kUneven = {os::kWaveFormatPcm, 1, 11025, 11025, 1, 8};

std::vector<BYTE> Sound(std::size_t bytes) {
  std::vector<BYTE> sound;
  sound.resize(bytes, 7);
  return sound;
}

// Runs once, in its thread, behind the next reading of the clock.
thread_local std::function<void()> g_meanwhile;

class LateClock final : public zebx::Clock {
 public:
  explicit LateClock(const Clock& clock) : m_clock(clock) { SetClock(this); }
  ~LateClock() override { SetClock(&m_clock); }

  DWORD TickMs() const override {
    const DWORD tick = m_clock.TickMs();
    if (const auto run = std::exchange(g_meanwhile, nullptr)) run();
    return tick;
  }
  DWORD WallSeconds() const override { return m_clock.WallSeconds(); }

 private:
  const Clock& m_clock;
};

class WaveOut : public WindowTest {
 protected:
  HWAVEOUT Open(const os::WaveFormat& format = kSpeech) {
    HWAVEOUT device = nullptr;
    const auto window = reinterpret_cast<std::uintptr_t>(m_window);
    EXPECT_EQ(os::waveOutOpen(&device, 0, &format, window, 0, os::kCallbackWindow), 0U);
    return device;
  }

  os::WaveHeader* Write(HWAVEOUT device, std::size_t bytes, UINT result = os::kWaveNoError) {
    os::WaveHeader& header = m_headers.emplace_back();
    header.m_data = m_data.emplace_back(Sound(bytes)).data();
    header.m_length = static_cast<DWORD>(bytes);
    EXPECT_EQ(os::waveOutPrepareHeader(device, &header, kBytes), 0U);
    EXPECT_EQ(os::waveOutWrite(device, &header, kBytes), result);
    return &header;
  }

  // The header that is reported next.
  static const os::WaveHeader* NextDone(HWAVEOUT device) {
    os::Message message;
    os::GetMessage(&message);
    EXPECT_EQ(message.m_message, os::kMmWomDone);
    EXPECT_EQ(message.m_wparam, reinterpret_cast<WPARAM>(device));
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<const os::WaveHeader*>(message.m_lparam);
  }

  os::SteppedClock m_clock{1000, 0xFFFFFF00};  // close to where the tick counter wraps
  RecordedSound m_sound;
  HWND m_window = Make();
  std::list<std::vector<BYTE>> m_data;
  std::list<os::WaveHeader> m_headers;
};

TEST_F(WaveOut, PlaysBackToBackWithoutDrift) {
  for (const auto& [format, bytes] : {std::pair(kSpeech, 2048U), std::pair(kUneven, 1000U)}) {
    HWAVEOUT device = Open(format);
    const os::WaveHeader* next = Write(device, bytes);
    ULONGLONG end_ms = 0;
    for (ULONGLONG buffer = 1; buffer <= 100; ++buffer) {
      const os::WaveHeader* current = std::exchange(next, Write(device, bytes));
      const ULONGLONG begin_ms = end_ms;
      end_ms = (buffer * bytes * 1000 + format.m_bytes_per_second - 1) / format.m_bytes_per_second;
      m_clock.Advance(end_ms - begin_ms - 1);
      EXPECT_EQ(os::waveOutClose(device), UINT{os::kWaveStillPlaying});
      EXPECT_EQ(os::WaveFlags(*current), DWORD{os::kWavePrepared | os::kWaveQueued}) << buffer;
      m_clock.Advance(1);
      EXPECT_EQ(NextDone(device), current);
      EXPECT_EQ(os::WaveFlags(*current), DWORD{os::kWavePrepared | os::kWaveDone});
      EXPECT_EQ(m_sound.TakeHeard(), (Heard{{begin_ms, 0, Sound(bytes)}}));
    }
    EXPECT_EQ(os::waveOutReset(device) + os::waveOutClose(device), 0U);
    EXPECT_EQ(NextDone(device), next);
  }
}

TEST_F(WaveOut, BeginsAtTheWriteWhenItRanDry) {
  HWAVEOUT device = Open();
  // After a pause; 16 bytes are a millisecond.
  for (const auto& [pause_ms, bytes, heard] : std::vector<std::tuple<DWORD, std::size_t, Heard>>{
           {5, 160, {{5, 5, Sound(160)}}},
           {0, 1600, {{15, 0, Sound(1600)}}},
           {20, 0, {}},
           {30, 160, {{165, 50, Sound(160)}}},
           {100000, 160, {{100175, 100000, Sound(160)}}}}) {
    m_clock.Advance(pause_ms);
    Write(device, bytes);
    m_clock.Advance(bytes / 16);
    NextDone(device);
    EXPECT_EQ(m_sound.TakeHeard(), heard);
  }
  // A clock that is set back, by much and by little, counts on from there.
  for (const ULONGLONG moment : {0, 50}) {
    const os::WaveHeader* const header = Write(device, 1600);
    m_clock.MoveTo(moment);
    EXPECT_EQ(os::waveOutClose(device), UINT{os::kWaveStillPlaying});
    m_clock.Advance(100);
    EXPECT_EQ(os::waveOutReset(device), 0U);
    EXPECT_EQ(NextDone(device), header);
  }
  EXPECT_EQ(m_sound.TakeHeard().back().m_bytes, Sound(1600));
  EXPECT_EQ(os::waveOutClose(device), 0U);
}

// What one thread has read of the clock may be used after another has read it again.
TEST_F(WaveOut, IsNotMovedTwiceByAThreadThatIsLate) {
  const LateClock clock(m_clock);
  HWAVEOUT device = Open();
  g_meanwhile = [&] {
    m_clock.Advance(2000);
    Write(device, 1600);
  };
  Write(device, 1600);
  EXPECT_EQ(g_meanwhile, nullptr);
  m_clock.Advance(199);
  EXPECT_EQ(os::waveOutClose(device), UINT{os::kWaveStillPlaying});
  EXPECT_EQ(os::waveOutReset(device) + os::waveOutClose(device), 0U);
}

TEST_F(WaveOut, GivesEverythingBackAtAReset) {
  HWAVEOUT device = Open();
  const std::array headers = {Write(device, 2048), Write(device, 2048), Write(device, 2048)};
  m_data.front().assign(2048, 9);  // too late: it was written
  m_clock.Advance(128 + 60);
  EXPECT_EQ(os::waveOutReset(device), 0U);
  for (os::WaveHeader* header : headers) {
    EXPECT_EQ(os::waveOutUnprepareHeader(device, header, kBytes), 0U);
    EXPECT_EQ(header->m_flags, DWORD{os::kWaveDone});
    EXPECT_EQ(NextDone(device), header);
  }
  EXPECT_EQ(m_sound.TakeHeard(), (Heard{{0, 0, Sound(2048)}, {128, 0, Sound(960)}}));
  EXPECT_EQ(m_sound.Closed(), 0U);
  EXPECT_EQ(os::waveOutClose(device), 0U);
  EXPECT_EQ(m_sound.Closed(), 1U);
}

TEST_F(WaveOut, RefusesWhatItDoesNotPlay) {
  const auto open = [&](UINT number, const os::WaveFormat* format, DWORD flags, HWND window) {
    HWAVEOUT device = nullptr;
    const auto callback = reinterpret_cast<std::uintptr_t>(window);
    const UINT result = os::waveOutOpen(&device, number, format, callback, 0, flags);
    EXPECT_EQ(device, nullptr);
    return result;
  };
  const os::WaveFormat stereo = {1, 2, 48000, 192000, 4, 16};
  EXPECT_EQ(open(0, &stereo, os::kWaveFormatQuery, nullptr), 0U);
  for (const os::WaveFormat& format :
       std::vector<os::WaveFormat>{{2},
                                   {1, 3, 8000, 48000, 6},
                                   {1, 1, 8000, 24000, 3, 24},
                                   {1, 1, 3999, 7998},
                                   {1, 1, 8000, 16001},
                                   {1, 0xFFFF, 8000, 0, 0, 0xFFFF}}) {
    EXPECT_EQ(open(0, &format, 0, nullptr), UINT{os::kWaveBadFormat});
  }
  EXPECT_EQ(open(1, &kSpeech, os::kWaveFormatQuery, nullptr), UINT{os::kWaveBadDevice});
  EXPECT_EQ(open(0, &kSpeech, os::kCallbackWindow, nullptr), UINT{os::kWaveBadParameter});
  EXPECT_EQ(open(0, nullptr, 0, nullptr), UINT{os::kWaveBadParameter});
  EXPECT_EQ(os::waveOutOpen(nullptr, 0, &kSpeech, 0, 0, 0), UINT{os::kWaveBadParameter});
  os::FailThreadStart(1);
  EXPECT_EQ(open(0, &kSpeech, 0, nullptr), UINT{os::kWaveNoMemory});

  HWAVEOUT device = Open();
  os::WaveHeader raw;
  EXPECT_EQ(os::waveOutWrite(device, &raw, kBytes), UINT{os::kWaveUnprepared});
  EXPECT_EQ(os::waveOutPrepareHeader(device, &raw, kBytes - 1), UINT{os::kWaveBadParameter});
  Write(device, 3, os::kWaveBadParameter);
  os::WaveHeader* const queued = Write(device, 2048);
  EXPECT_EQ(os::waveOutWrite(device, queued, kBytes), UINT{os::kWaveStillPlaying});
  EXPECT_EQ(os::waveOutUnprepareHeader(device, queued, kBytes), UINT{os::kWaveStillPlaying});
  EXPECT_EQ(os::waveOutReset(device) + os::waveOutClose(device), 0U);
  HWAVEOUT other = Open();
  EXPECT_NE(other, device);
  EXPECT_EQ(os::waveOutWrite(device, queued, kBytes), UINT{os::kWaveBadHandle});
  EXPECT_EQ(os::waveOutClose(device), UINT{os::kWaveBadHandle});
  EXPECT_EQ(os::waveOutClose(other), 0U);
}

// The machine's clock here: what counts is who touches what. Half of the buffers are played to the
// end.
TEST(WaveOutThreads, ShareDevicesAndTheSink) {
  RecordedSound sound;
  const auto play = [] {
    BYTE data[16] = {};
    for (int round = 0; round < 40; ++round) {
      HWAVEOUT device = nullptr;
      ASSERT_EQ(os::waveOutOpen(&device, 0, &kSpeech, 0, 0, 0), 0U);
      os::WaveHeader header = {.m_data = data, .m_length = sizeof data};
      os::waveOutPrepareHeader(device, &header, kBytes);
      EXPECT_EQ(os::waveOutWrite(device, &header, kBytes), 0U);
      while (round % 2 == 0 && (os::WaveFlags(header) & os::kWaveDone) == 0) {
        std::this_thread::yield();
      }
      EXPECT_EQ(os::waveOutReset(device), 0U);
      header.m_length = header.m_flags = 0;
      EXPECT_EQ(os::waveOutClose(device), 0U);
    }
  };
  {
    const std::jthread beside(play);
    play();
  }
  EXPECT_EQ(sound.Closed(), 80U);
  EXPECT_GE(sound.TakeHeard().size(), 40U);
}

// Players close their sound while they hold their locks.
TEST_F(WaveOut, RunsNoProcedureWhileADeviceCloses) {
  bool has_run = false;
  HWND window = Make([&](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return has_run = true; });
  std::jthread sender([&] { os::SendMessage(window, os::kWmUser, 0, 0); });
  while (os::ThisThreadQueue()->CountSent() == 0) std::this_thread::yield();
  for (int i = 0; i < 20; ++i) EXPECT_EQ(os::waveOutClose(Open()), 0U);
  EXPECT_FALSE(has_run);
  os::DestroyWindow(window);  // which ends the sending, too
}

}  // namespace
