#include "playback/decode_thread.h"

#include <array>
#include <memory>

#include "capture/show_param.h"
#include "capture/video_data.h"
#include "capture/zebx.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "platform/os/clock.h"
#include "platform/os/sound/sound_control.h"
#include "platform/os/threads/thread.h"
#include "playback/decode_wnd.h"
#include "tests/support/made_recording.h"
#include "tests/support/temp_dir.h"
#include "tests/support/window_fixture.h"

using namespace zebx;

namespace {

// Addresses of players that nobody calls.
CDecodeWnd* Player(int number) {
  static std::array<char, 32> addresses;
  return reinterpret_cast<CDecodeWnd*>(&addresses.at(number));
}

TEST(PlayerTable, KeepsTheOwnerBesideSixteenSlots) {
  PlayerTable table;
  for (int i = 0; i < 16; ++i) EXPECT_TRUE(table.Add({Player(i), 1}));
  EXPECT_FALSE(table.Add({Player(16), 1}));
  EXPECT_FALSE(table.MakeOwner({Player(16), 1})) << "not in a slot";
  EXPECT_FALSE(table.MakeOwner({Player(3), 2})) << "opened again meanwhile";
  EXPECT_TRUE(table.MakeOwner({Player(3), 1}));
  EXPECT_EQ(table.Owner(), Player(3));
  EXPECT_EQ(table.At(3), nullptr);
  EXPECT_EQ(table.Count(), 15);
  EXPECT_TRUE(table.Has({Player(3), 1}));
  EXPECT_FALSE(table.Has({Player(3), 2}));
  EXPECT_FALSE(table.MakeOwner({Player(4), 1})) << "there is one";
  EXPECT_FALSE(table.Add({Player(3), 2})) << "the owner is in no slot, but in here";

  EXPECT_TRUE(table.Add({Player(16), 1}));
  EXPECT_FALSE(table.ReleaseOwner()) << "no free slot";
  EXPECT_EQ(table.Owner(), nullptr);
  EXPECT_FALSE(table.Remove(Player(3))) << "nowhere now";
  EXPECT_TRUE(table.MakeOwner({Player(16), 1}));
  EXPECT_TRUE(table.ReleaseOwner());
  EXPECT_EQ(table.InSlot(Player(16)), (OpenPlayer{Player(16), 1}));
  EXPECT_EQ(table.Count(), 16);
  EXPECT_TRUE(table.MakeOwner({Player(16), 1}));
  EXPECT_TRUE(table.Remove(Player(16)));
  EXPECT_EQ(table.Count(), 14) << "one less than there are, since the owner was in no slot";
}

// A player that ended inside its own call leaves its address to another one, which may end at once.
TEST(PlayerCalls, CountForNobodyOnceTheirPlayerEndedInside) {
  const auto calls = std::make_shared<PlayerCalls>();
  const PlayerCall call(calls, Player(0));
  calls->AwaitEnd(Player(0));
  std::jthread([&] { calls->AwaitEnd(Player(0)); }).join();
}

constexpr DWORD kFrameMs = 40'000;

// Five frames so far apart that none is due while the test does not want it, each with speech of
// 40 ms.
std::vector<TestFrame> Frames() {
  noxcodec::SpeechEncoder encoder;
  const auto packet = encoder.Encode(std::vector<std::int16_t>(320));
  std::vector<TestFrame> frames;
  for (DWORD i = 0; i < 5; ++i) {
    frames.push_back({kIFrame, kFrameVoice, 1000 + i * kFrameMs, "picture", {}});
    frames.back().speech.assign(packet.begin(), packet.end());
  }
  return frames;
}

// The main window belongs to the test's thread, and so does the hidden one.
class DecodeThread : public WindowTest {
 protected:
  void SetUp() override {
    WriteWholeFile(m_file, m_recording);
    os::sound::StartJournal();
    ASSERT_EQ(zebxInitZebx(7, nullptr, 0, m_main, "d:\\dev"), 1);
  }
  void TearDown() override {
    zebxCloseZebx();
    os::sound::ResetControl();
    WindowTest::TearDown();
  }

  // Takes messages and steps the clock at each look, until the condition holds.
  template <typename Condition>
  bool Pump(Condition condition, DWORD step_ms = 5) {
    for (int looks = 0; looks < 1'000'000 && !condition(); ++looks) {
      m_clock.Advance(step_ms);
      os::Message message;
      while (os::PeekMessage(&message) != 0) os::DispatchMessage(message);
      std::this_thread::yield();
    }
    return condition();
  }
  // How many sound devices are open.
  int OpenDevices() {
    for (const CString& call : os::sound::TakeJournal()) {
      m_open_devices += call.starts_with("waveOutOpen") && call.ends_with(" 65536") ? 1 : 0;
      m_open_devices -= call.starts_with("waveOutClose") ? 1 : 0;
    }
    return m_open_devices;
  }
  void Open(CDecodeWnd& player, HWND host) {
    player.OpenDecodeWnd(host, 0, &m_settings);
    ASSERT_EQ(player.OpenVideo(m_file, 0, 1, 0), 1);
  }

  const std::string m_recording = MakeRecording(Frames());
  os::SteppedClock m_clock{kTestBeginSeconds, 1000};
  TempDir m_directory;
  const std::string m_file = m_directory.File("recording");
  HWND m_main = Make();
  CShowParam m_settings;
  int m_open_devices = 0;
};

TEST_F(DecodeThread, GivesTheSoundToOnePlayerInASlot) {
  CDecodeWnd a, b;
  CDecodeThread decode_thread;
  os::FailThreadStart(1);
  EXPECT_EQ(decode_thread.Create(), 0);
  EXPECT_EQ(decode_thread.Create(), 1) << "nothing was left of the first time";
  CVideoData silent({0, 0}, 352, 288), frame({0, 0}, 352, 288);
  Fill(frame, Frames()[0]);

  EXPECT_EQ(decode_thread.Register(&a), 1);
  EXPECT_EQ(decode_thread.SetAudioOwner(&b, &frame), 0) << "in no slot";
  EXPECT_EQ(decode_thread.Register(&b), 1);
  os::sound::SetDeviceCount(0);
  EXPECT_EQ(decode_thread.SetAudioOwner(&a, &frame), 0);
  EXPECT_EQ(decode_thread.GetCount(), 2) << "still in its slot";
  os::sound::SetDeviceCount(1);
  EXPECT_EQ(decode_thread.SetAudioOwner(&a, &frame), 1);
  EXPECT_EQ(decode_thread.SetAudioOwner(&a, &frame), 1);
  EXPECT_EQ(decode_thread.SetAudioOwner(&b, &frame), 0) << "first come, first served";
  EXPECT_EQ(decode_thread.ReleaseAudioOwner(&b), 1);
  EXPECT_EQ(decode_thread.IsAudioOwner(&a), 1);
  EXPECT_EQ(decode_thread.ReleaseAudioOwner(&a), 1);
  EXPECT_EQ(decode_thread.SetAudioOwner(&b, &frame), 1);

  EXPECT_EQ(OpenDevices(), 1);
  EXPECT_EQ(decode_thread.PlayAudio(&a, &frame), 1);
  EXPECT_EQ(decode_thread.PlayAudio(&b, &silent), 0);
  EXPECT_EQ(decode_thread.PlayAudio(&b, nullptr), 0);
  EXPECT_TRUE(os::sound::TakeJournal().empty()) << "nothing is queued";
  EXPECT_EQ(decode_thread.PlayAudio(&b, &frame), 1);
  EXPECT_EQ(os::sound::TakeJournal().size(), 2U) << "one buffer is prepared and written";
  EXPECT_EQ(decode_thread.Unregister(&b), 1);
  EXPECT_EQ(decode_thread.SetAudioOwner(&a, &frame), 1);
  EXPECT_EQ(decode_thread.Destroy(), 1);
  EXPECT_EQ(decode_thread.SetAudioOwner(&b, &frame), 0);
  EXPECT_EQ(decode_thread.ReleaseAudioOwner(&b), 0);
  EXPECT_EQ(decode_thread.Unregister(&b), 0);
  EXPECT_EQ(OpenDevices(), 0);
}

TEST_F(DecodeThread, AsksTheAudioOwnerWhenSoundRunsShortAndTheOthersWhenDue) {
  int shown = 0;
  int other_shown = 0;
  const auto count = [](int& frames) {
    return [&frames](HWND, UINT message, WPARAM code, LPARAM) -> LRESULT {
      if (message == ZEBX_MSG_VIDEOPLAY && code == ZEBX_PLAY_FRAME) ++frames;
      return 0;
    };
  };
  CDecodeWnd player, other;
  Open(player, Make(count(shown)));
  ASSERT_TRUE(Pump([&] { return shown == 1; }));  // and has the sound now
  Open(other, Make(count(other_shown)));
  ASSERT_TRUE(Pump([&] { return other_shown == 1; }));
  m_clock.Advance(kFrameMs);
  EXPECT_TRUE(Pump([&] { return shown == 3 && other_shown == 2; }, 0)) << "two buffers are queued";
  m_clock.Advance(40);
  EXPECT_TRUE(Pump([&] { return shown == 4; }, 0)) << "one of them is done";
  EXPECT_EQ(other_shown, 2);
}

TEST_F(DecodeThread, GoesOnWithoutItsWindow) {
  CDecodeWnd player;
  Open(player, Make());
  while (player.GetZebFile() == nullptr) m_clock.Advance(5);
  os::DestroyWindow(m_main);
  const auto position = [&] {
    player.Lock();
    std::pair<int, int> found;
    player.GetZebFile()->GetFilePos(found.first, found.second);
    player.Unlock();
    return found;
  };
  const auto before = position();
  EXPECT_TRUE(Pump([&] { return position() != before; }, kFrameMs));
}

}  // namespace
