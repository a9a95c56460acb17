// The paced device behind the wave-out functions, by a clock that is stepped by hand.
#include <array>
#include <list>

#include "platform/os/clock.h"
#include "platform/os/threads/thread.h"
#include "platform/os/windows/window_thread.h"
#include "tests/support/recorded_sound.h"
#include "tests/support/window_fixture.h"

namespace {

using Heard = std::vector<RecordedSound::Heard>;
using os::sound::Function;

constexpr UINT kBytes = sizeof(os::WaveHeader);
constexpr os::WaveFormat kSpeech;
// 90.7 ms for 1000 bytes.
constexpr os::WaveFormat kUneven = {os::kWaveFormatPcm, 1, 11025, 11025, 1, 8};

class WaveOut : public WindowTest {
 protected:
  // Closes what the test has left open.
  void TearDown() override {
    for (HWAVEOUT device : m_devices) {
      os::waveOutReset(device);
      os::waveOutClose(device);
    }
    WindowTest::TearDown();
  }

  HWAVEOUT Open(const os::WaveFormat& format = kSpeech, UINT number = 0) {
    HWAVEOUT device = nullptr;
    EXPECT_EQ(os::waveOutOpen(&device, number, &format, reinterpret_cast<std::uintptr_t>(m_window),
                              0, os::kCallbackWindow),
              0U);
    return m_devices.emplace_back(device);
  }

  // A buffer of bytes of this value, prepared.
  os::WaveHeader* Buffer(HWAVEOUT device, std::size_t bytes, BYTE value = 7) {
    std::vector<BYTE>& data = m_data.emplace_back(bytes, value);
    os::WaveHeader& header = m_headers.emplace_back();
    header.m_data = data.data();
    header.m_length = static_cast<DWORD>(bytes);
    EXPECT_EQ(os::waveOutPrepareHeader(device, &header, kBytes), 0U);
    return &header;
  }
  os::WaveHeader* Write(HWAVEOUT device, std::size_t bytes, BYTE value = 7) {
    os::WaveHeader* const header = Buffer(device, bytes, value);
    EXPECT_EQ(os::waveOutWrite(device, header, kBytes), 0U);
    return header;
  }

  // The header that is reported next.
  const os::WaveHeader* NextDone(HWAVEOUT device) const {
    os::Message message;
    os::GetMessage(&message);
    EXPECT_EQ(message.m_message, os::kMmWomDone);
    EXPECT_EQ(message.m_wparam, reinterpret_cast<WPARAM>(device));
    return reinterpret_cast<const os::WaveHeader*>(message.m_lparam);
  }

  os::SteppedClock m_clock{1000, 0xFFFFFF00};  // close to where the tick counter wraps
  RecordedSound m_sound;
  HWND m_window = Make();
  std::vector<HWAVEOUT> m_devices;
  std::list<std::vector<BYTE>> m_data;
  std::list<os::WaveHeader> m_headers;
};

TEST_F(WaveOut, PlaysBackToBackWithoutDrift) {
  for (const auto& [format, bytes] : {std::pair(kSpeech, 2048U), std::pair(kUneven, 1000U)}) {
    HWAVEOUT device = Open(format);
    Write(device, bytes);
    Write(device, bytes);
    ULONGLONG end_ms = 0;
    for (ULONGLONG buffer = 1; buffer <= 100; ++buffer) {
      const ULONGLONG begin_ms = end_ms;
      end_ms = (buffer * bytes * 1000 + format.m_bytes_per_second - 1) / format.m_bytes_per_second;
      m_clock.Advance(end_ms - begin_ms - 1);
      const os::WaveHeader& current = *std::next(m_headers.begin(), std::ssize(m_headers) - 2);
      EXPECT_EQ(os::waveOutClose(device), UINT{os::kWaveStillPlaying});
      EXPECT_EQ(os::WaveFlags(current), DWORD{os::kWavePrepared | os::kWaveQueued}) << buffer;
      m_clock.Advance(1);
      EXPECT_EQ(NextDone(device), &current);
      EXPECT_EQ(os::WaveFlags(current), DWORD{os::kWavePrepared | os::kWaveDone});
      EXPECT_EQ(m_sound.TakeHeard(), (Heard{{begin_ms, 0, std::vector<BYTE>(bytes, 7)}}));
      Write(device, bytes);
    }
    os::waveOutReset(device);
    NextDone(device);
    NextDone(device);
  }
}

TEST_F(WaveOut, BeginsAtTheWriteWhenItRanDry) {
  HWAVEOUT device = Open();
  const auto play = [&](std::size_t bytes) {
    Write(device, bytes);
    m_clock.Advance(bytes / 16);
    NextDone(device);
    const Heard heard = m_sound.TakeHeard();
    return heard.empty() ? std::pair(0ULL, 0ULL)
                         : std::pair(heard[0].m_begin_ms + 0ULL, heard[0].m_silence_ms + 0ULL);
  };
  m_clock.Advance(5);
  EXPECT_EQ(play(160), (std::pair(5ULL, 5ULL)));
  EXPECT_EQ(play(1600), (std::pair(15ULL, 0ULL)));
  m_clock.Advance(20);
  EXPECT_EQ(play(0), (std::pair(0ULL, 0ULL)));
  m_clock.Advance(30);
  EXPECT_EQ(play(160), (std::pair(165ULL, 50ULL)));
  m_clock.Advance(100000);
  EXPECT_EQ(play(160), (std::pair(100175ULL, 100000ULL)));
  // A clock that is set back counts on from there.
  Write(device, 1600);
  m_clock.MoveTo(0);
  EXPECT_EQ(os::waveOutClose(device), UINT{os::kWaveStillPlaying});
  m_clock.Advance(100);
  NextDone(device);
}

TEST_F(WaveOut, GivesEverythingBackAtAReset) {
  HWAVEOUT device = Open();
  std::array<os::WaveHeader*, 3> headers;
  for (os::WaveHeader*& header : headers) header = Write(device, 2048);
  for (BYTE& byte : m_data.front()) byte = 9;  // too late: it was written
  m_clock.Advance(128 + 60);
  EXPECT_EQ(os::waveOutReset(device), 0U);
  for (os::WaveHeader* header : headers) {
    EXPECT_EQ(os::WaveFlags(*header), DWORD{os::kWavePrepared | os::kWaveDone});
    EXPECT_EQ(os::waveOutUnprepareHeader(device, header, kBytes), 0U);
    EXPECT_EQ(header->m_flags, DWORD{os::kWaveDone});
    EXPECT_EQ(NextDone(device), header);
  }
  Write(device, 32);
  m_clock.Advance(1);
  EXPECT_EQ(os::waveOutReset(device), 0U);
  EXPECT_EQ(m_sound.TakeHeard(), (Heard{{0, 0, std::vector<BYTE>(2048, 7)},
                                        {128, 0, std::vector<BYTE>(960, 7)},
                                        {188, 0, std::vector<BYTE>(16, 7)}}));
  EXPECT_EQ(m_sound.TakeClosed(), std::vector<HWAVEOUT>());
  EXPECT_EQ(os::waveOutClose(device), 0U);
  EXPECT_EQ(m_sound.TakeClosed(), std::vector{device});
}

TEST_F(WaveOut, RefusesWhatItDoesNotPlay) {
  const auto open = [&](UINT number, const os::WaveFormat* format, DWORD flags, HWND window) {
    HWAVEOUT device = nullptr;
    const UINT result = os::waveOutOpen(&device, number, format,
                                        reinterpret_cast<std::uintptr_t>(window), 0, flags);
    EXPECT_EQ(device, nullptr);
    return result;
  };
  const os::WaveFormat stereo = {os::kWaveFormatPcm, 2, 48000, 192000, 4, 16};
  EXPECT_EQ(open(0, &kSpeech, os::kWaveFormatQuery, nullptr), 0U);
  EXPECT_EQ(open(0, &stereo, os::kWaveFormatQuery, nullptr), 0U);
  EXPECT_EQ(open(1, &kSpeech, os::kWaveFormatQuery, nullptr), UINT{os::kWaveBadDevice});
  for (const os::WaveFormat& format : std::vector<os::WaveFormat>{{2},
                                                                  {1, 3, 8000, 48000, 6},
                                                                  {1, 1, 8000, 24000, 3, 24},
                                                                  {1, 1, 3999, 7998},
                                                                  {1, 1, 192001, 384002},
                                                                  {1, 1, 8000, 16001},
                                                                  {1, 1, 8000, 16000, 4},
                                                                  {1, 0, 8000, 0, 0}}) {
    EXPECT_EQ(open(0, &format, os::kWaveFormatQuery, nullptr), UINT{os::kWaveBadFormat});
  }
  HWND gone = Make();
  os::DestroyWindow(gone);
  EXPECT_EQ(open(0, &kSpeech, os::kCallbackWindow, gone), UINT{os::kWaveBadParameter});
  EXPECT_EQ(open(0, nullptr, 0, nullptr), UINT{os::kWaveBadParameter});
  EXPECT_EQ(open(0, &kSpeech, 0x30000, nullptr), UINT{os::kWaveBadParameter});
  EXPECT_EQ(os::waveOutOpen(nullptr, 0, &kSpeech, 0, 0, 0), UINT{os::kWaveBadParameter});
  os::FailThreadStart(1);
  EXPECT_EQ(open(0, &kSpeech, 0, nullptr), UINT{os::kWaveNoMemory});

  HWAVEOUT device = Open();
  os::WaveHeader raw;
  EXPECT_EQ(os::waveOutWrite(device, &raw, kBytes), UINT{os::kWaveUnprepared});
  EXPECT_EQ(os::waveOutUnprepareHeader(device, &raw, kBytes), 0U);
  EXPECT_EQ(os::waveOutPrepareHeader(device, &raw, kBytes - 1), UINT{os::kWaveBadParameter});
  EXPECT_EQ(os::waveOutPrepareHeader(device, nullptr, kBytes), UINT{os::kWaveBadParameter});
  EXPECT_EQ(os::waveOutWrite(device, Buffer(device, 3), kBytes), UINT{os::kWaveBadParameter});
  os::WaveHeader* const queued = Write(device, 2048);
  EXPECT_EQ(os::waveOutWrite(device, queued, kBytes), UINT{os::kWaveStillPlaying});
  EXPECT_EQ(os::waveOutUnprepareHeader(device, queued, kBytes), UINT{os::kWaveStillPlaying});
  EXPECT_EQ(os::waveOutClose(device) + os::waveOutReset(device), UINT{os::kWaveStillPlaying});
  EXPECT_EQ(os::waveOutClose(device), 0U);
  EXPECT_NE(Open(), device);
  EXPECT_EQ(os::waveOutWrite(device, queued, kBytes), UINT{os::kWaveBadHandle});
  EXPECT_EQ(os::waveOutReset(device), UINT{os::kWaveBadHandle});
  EXPECT_EQ(os::waveOutClose(device), UINT{os::kWaveBadHandle});
}

TEST_F(WaveOut, FailsTheCallsItIsToldTo) {
  os::sound::SetDeviceCount(2);
  for (int function = 0; function < os::sound::kFunctions; ++function) {
    os::sound::FailCall(static_cast<Function>(function), 2);
  }
  os::sound::StartJournal();
  EXPECT_EQ(os::waveOutGetNumDevs(), 2U);
  EXPECT_EQ(os::waveOutGetNumDevs(), 0U);
  HWAVEOUT device = Open(kUneven, 1);
  HWAVEOUT none = nullptr;
  EXPECT_EQ(os::waveOutOpen(&none, 0, nullptr, 0, 0, 0), UINT{os::kWaveFailed});
  os::WaveHeader* const header = Buffer(device, 100);
  for (const auto call : {&os::waveOutPrepareHeader, &os::waveOutUnprepareHeader}) {
    call(device, header, kBytes);
  }
  EXPECT_EQ(os::waveOutWrite(device, header, kBytes), UINT{os::kWaveUnprepared});
  EXPECT_EQ(os::waveOutReset(device) + os::waveOutClose(device), 0U);
  EXPECT_EQ(os::waveOutReset(device) + os::waveOutClose(device), UINT{2 * os::kWaveFailed});
  const CString handle = " " + std::to_string(reinterpret_cast<std::uintptr_t>(device));
  EXPECT_EQ(os::sound::TakeJournal(),
            (std::vector<CString>{
                "waveOutGetNumDevs", "waveOutGetNumDevs failed", "waveOutOpen 1 11025 1 8 65536",
                "waveOutOpen 0 0 1 16 0 failed", "waveOutPrepareHeader" + handle + " 100",
                "waveOutPrepareHeader" + handle + " 100 failed",
                "waveOutUnprepareHeader" + handle + " 100", "waveOutWrite" + handle + " 100 failed",
                "waveOutReset" + handle, "waveOutClose" + handle,
                "waveOutReset" + handle + " failed", "waveOutClose" + handle + " failed"}));
}

// The machine's clock here: what counts is who touches what.
TEST(WaveOutThreads, ShareDevicesAndTheSink) {
  RecordedSound sound;
  const auto play = [&] {
    std::array<std::array<BYTE, 16>, 4> data = {};
    for (int round = 0; round < 20; ++round) {
      HWAVEOUT device = nullptr;
      ASSERT_EQ(os::waveOutOpen(&device, 0, &kSpeech, 0, 0, 0), 0U);
      std::array<os::WaveHeader, 4> headers;
      for (std::size_t i = 0; i < headers.size(); ++i) {
        headers[i].m_data = data[i].data();
        headers[i].m_length = 16;
        os::waveOutPrepareHeader(device, &headers[i], kBytes);
        EXPECT_EQ(os::waveOutWrite(device, &headers[i], kBytes), 0U);
      }
      // Half of them are played to the end.
      while (round % 2 == 0 && (os::WaveFlags(headers[3]) & os::kWaveDone) == 0) {
        std::this_thread::yield();
      }
      EXPECT_EQ(os::waveOutReset(device), 0U);
      for (os::WaveHeader& header : headers) header.m_length = header.m_flags = 0;
      EXPECT_EQ(os::waveOutClose(device), 0U);
    }
  };
  {
    const std::array<std::jthread, 4> threads = {std::jthread(play), std::jthread(play),
                                                 std::jthread(play), std::jthread(play)};
  }
  EXPECT_EQ(sound.TakeClosed().size(), 80U);
  EXPECT_GE(sound.TakeHeard().size(), 160U);
}

// Players close their sound while they hold their locks.
TEST_F(WaveOut, RunsNoProcedureWhileADeviceCloses) {
  bool has_run = false;
  HWND window = Make([&](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return has_run = true; });
  std::jthread sender([&] { os::SendMessage(window, os::kWmUser, 0, 0); });
  while (os::ThisThreadQueue()->CountSent() == 0) std::this_thread::yield();
  for (int i = 0; i < 20; ++i) EXPECT_EQ(os::waveOutClose(Open()), 0U);
  EXPECT_FALSE(has_run);
  os::Message message;
  os::PeekMessage(&message);
  os::DestroyWindow(window);
}

}  // namespace
