// Where a player of a single file goes and when, and what its host sees and may do.
#include "playback/decode_wnd.h"

#include "capture/show_param.h"
#include "capture/video_data.h"
#include "capture/zebx.h"
#include "image/image.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/os/clock.h"
#include "platform/os/sound/sound_control.h"
#include "platform/os/windows/window_table.h"
#include "tests/support/counted_memory.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"
#include "tests/support/window_fixture.h"

using namespace zebx;
using noxdisplay::Function;

namespace {

// What codec and display were given last. Frames of these tests tell their number.
std::string g_decoded;
DWORD g_post_processing;
int g_pitch;
std::string g_shown;
tag_DISPLAYINFO g_record;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" int __wrap_nxcDecodeVideo(NxcHandle, WORD, const BYTE* data, DWORD length) {
  g_decoded.assign(data, data + length);
  return 0;
}
extern "C" int __wrap_nxcGetVideo(NxcHandle, BYTE*, DWORD, int pitch, DWORD post_processing) {
  g_pitch = pitch;
  g_post_processing = post_processing;
  return 0;
}
extern "C" int __real_noxshowDisplay(NoxshowStream, HWND, const tag_DISPLAYINFO*);
extern "C" int __wrap_noxshowDisplay(NoxshowStream stream, HWND window,
                                     const tag_DISPLAYINFO* info) {
  if (info != nullptr) {
    g_shown = g_decoded.substr(g_decoded.find(' ') + 1);
    g_record = *info;
  }
  return __real_noxshowDisplay(stream, window, info);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace {

constexpr DWORD kBegin = 1000000000;  // of RawRecording, which ends a minute later

// The clock stands still unless a test moves it: the shared thread sleeps, and the test does its
// work, pass by pass.
class FilePlayer : public WindowTest {
 protected:
  FilePlayer() {
    zebxInitZebx(7, nullptr, 0, m_host, "");
    m_show.Create(m_host, 0);
    MakePlayer();
  }
  ~FilePlayer() override {
    m_player.reset();
    EXPECT_EQ(noxdisplay::CountStreams(), 0U);
    zebxCloseZebx();
    noxdisplay::ResetDisplay();
  }

  void MakePlayer(HWND told = nullptr) {
    m_player = std::make_unique<CDecodeWnd>();
    m_player->OpenDecodeWnd(told != nullptr ? told : m_host, 0, &m_show);
  }
  // A recording with so many frames in its blocks.
  int Open(const std::vector<int>& blocks, int speed = 0) {
    m_disk.Put("played", RawRecording(blocks));
    return m_player->OpenVideo("played", speed, 1, 0);
  }
  // The number of the frame that a pass so much later shows; "-" for none, "end" at the end.
  std::string After(DWORD ms, int audio_flag = 0) {
    g_shown = "-";
    const bool goes_on = m_player->OnDecode(audio_flag, m_now += ms) != 0;
    return g_shown + (goes_on ? "" : "end");
  }
  // The same for several passes in which every frame is due.
  std::string Show(int passes) {
    const std::string shown = After(100000);
    return passes > 1 ? shown + " " + Show(passes - 1) : shown;
  }
  static void Pump() {
    for (os::Message message; os::PeekMessage(&message) != 0;) os::DispatchMessage(message);
  }
  // Lets time pass for the shared thread.
  void RunUntil(const std::function<bool()>& is_over) {
    for (; !is_over(); Pump(), std::this_thread::yield()) m_clock.Advance(5);
  }

  MemoryFileSystem m_disk;
  os::SteppedClock m_clock{kBegin, 5000};
  std::string m_told;  // codes, with the number of the frame behind FRAME
  std::function<void(WPARAM code, LPARAM argument)> m_on_told = [](WPARAM, LPARAM) {};
  HWND m_host = Make(
      [this](HWND, UINT message, WPARAM code, LPARAM argument) {
        if (message != ZEBX_MSG_VIDEOPLAY) return LRESULT{0};
        m_told += " " + std::to_string(code);
        const auto* const position = reinterpret_cast<const tag_PLAYPOS*>(argument);
        if (code == ZEBX_PLAY_FRAME) m_told += ":" + std::to_string(position->m_file_frame);
        m_on_told(code, argument);
        return LRESULT{0};
      },
      nullptr, {0, 0, 32, 24});
  CShowParam m_show;
  std::unique_ptr<CDecodeWnd> m_player;
  DWORD m_now = 0xFFFFFF00;  // about to wrap
};

TEST_F(FilePlayer, KeepsTheRecordedPaceTimesItsSpeed) {
  for (const auto& [speed, interval_ms, post_processing] :
       std::vector<std::tuple<int, DWORD, DWORD>>{{0, 40, 0x1D}, {3, 6, 0}, {-1, 80, 0x1D}}) {
    ASSERT_EQ(Open({50, 0}, speed), 1);
    EXPECT_EQ(After(0), "-") << "opens the file";
    EXPECT_EQ(After(0), "0");
    EXPECT_EQ(g_post_processing, post_processing);
    EXPECT_EQ(After(interval_ms - 1), "-");
    EXPECT_EQ(After(1), "1");
    EXPECT_EQ(After(1, 1), "2") << "the sound does not wait";
    m_player->ChangePlaySpeed(2);
    EXPECT_EQ(After(interval_ms), "3") << "by the speed before";
    m_player->StepNext();
    EXPECT_EQ(After(10), "4");
    EXPECT_EQ(g_post_processing, 0x1DU) << "in single steps";
    m_player->ResetPlay();
    EXPECT_EQ(After(10), "5");
    EXPECT_EQ(After(39), "-") << "no steps, no speed";
  }
}

TEST_F(FilePlayer, StepsOverBlocksAndSeeks) {
  ASSERT_EQ(Open({4, 3, 1, 3, 0}), 1);
  EXPECT_EQ(m_player->PlayFrom(0, 3) + m_player->StepPrev(), 1) << "lost, and no file yet";
  EXPECT_EQ(Show(2), "- 0");
  // After each frame but the last, a step back; one, and then a pause.
  int number = 0;
  for (const char* before : {"-", "0", "1", "2", "1", "4", "5", "7", "7", "8"}) {
    m_player->PlayFrom(0, ++number);
    EXPECT_EQ(m_player->StepNext(), 1);
    EXPECT_EQ(Show(2), std::to_string(number - 1) + " -");
    EXPECT_EQ(m_player->IsPause(), 1);
    EXPECT_EQ(m_player->StepPrev(), 0);
    EXPECT_EQ(Show(2), before + std::string(" -"));
  }
  m_player->PlayFrom(1, 1);
  EXPECT_EQ(Show(1), "4");
  m_player->PlayFrom(3, -1);
  EXPECT_EQ(After(1), "-") << "waits until a frame is due";
  EXPECT_EQ(Show(3), "8 9 10end");
  EXPECT_EQ(m_player->StepNext() + m_player->PlayFrom(0, 1) + m_player->PlayFrom(CTime(5)), 0);
  Open({5, 0});
  m_player->PlayFrom(1, 1);
  EXPECT_EQ(Show(2), "- -end") << "nothing is there";
}

TEST_F(FilePlayer, SeeksMomentsBeforeAndAfterTheFileIsReady) {
  using Case = std::tuple<bool, DWORD, int, std::string>;
  for (const auto& [is_finished, time, result, shown] :
       {Case{true, kBegin - 1, 1, "0"}, Case{true, kBegin + 5, 1, "124"},
        Case{false, kBegin + 5, 0, "-"}, Case{true, kBegin + 60, 0, "-"}}) {
    Open(is_finished ? std::vector<int>{50, 50, 50, 0} : std::vector<int>{50, 50, 50});
    EXPECT_EQ(m_player->PlayFrom(CTime(time)), time < kBegin + 60 ? 1 : 0) << "kept, or not";
    EXPECT_EQ(Show(2), "- " + (result != 0 ? shown : "0"));
    m_player->StepNext();
    Show(1);
    EXPECT_EQ(m_player->PlayFrom(CTime(time)), result);
    EXPECT_EQ(Show(2), shown + " -") << "still in single steps";
  }
}

TEST_F(FilePlayer, PausesAndShowsWhatItsSettingsSay) {
  m_show.ShowCaption(1);
  m_show.SetCaptionColor(0x010203);
  std::string bytes = RawRecording({5, 0});
  bytes.replace(bytes.find("picture 1") - 10, 2, {0, 0x40});  // real time
  bytes.replace(bytes.find("picture 2") - 10, 2, {1, 0});     // without video
  m_disk.Put("played", bytes);
  ASSERT_EQ(m_player->OpenVideo("played", 0, 0, 0), 1);
  EXPECT_EQ(Show(2), "- 0");
  EXPECT_LT(g_pitch, 0);
  EXPECT_EQ(&g_record.m_end_time[0], CTime(kBegin + 60).Format("%H:%M:%S"));
  EXPECT_EQ(g_record.m_clock_color, 0x010203U);
  EXPECT_EQ(g_record.m_flags, 0x4610EU);
  EXPECT_EQ(Show(1), "1");
  EXPECT_GT(g_pitch, 0);
  m_player->Pause();
  EXPECT_EQ(Show(1), "-");
  m_player->Pause();
  m_show.ShowCaption(0);
  EXPECT_EQ(Show(1), "1") << "the picture before";
  EXPECT_EQ(g_record.m_flags, 0x40900U);
  CImage image;
  EXPECT_EQ(m_player->GetPicture(&image), 1);
  m_player->CloseDecodeWnd();
  EXPECT_EQ(Show(2), "- -end") << "goes on unseen";
  Pump();
  EXPECT_EQ(m_told, " 3 1:4 1:4 1:4 1:4 1:4 0") << "where it stood when each was told";
  EXPECT_EQ(m_player->OpenVideo("played", 0, 0, 0), 0) << "without settings";
}

TEST_F(FilePlayer, HasTheSoundWhileItPlaysVoicedFramesAtTheirPace) {
  // Every packet fills three buffers, which is enough: the player is not asked for more.
  noxcodec::SpeechEncoder encoder;
  const auto packet = encoder.Encode(std::vector<std::int16_t>(3 * 1024));
  CZebFileInfo info = MakeInfo("played");
  CZebFile file;
  file.Open(&info, kZebFileWrite);
  CZebFrameData data;
  for (DWORD i = 0; i < 50; ++i) {
    const std::string speech = i < 40 ? std::string(packet.begin(), packet.end()) : "";
    FillFrame(data, i == 0 ? 0 : 1, i * 40, "picture", speech);
    file.WriteOneFrame(&data);
  }
  file.Close();
  ASSERT_EQ(m_player->OpenVideo("played", 0, 1, 0), 1);
  // How many frames are shown until one has the mark of sound, or has none. The host is told of
  // those before.
  const auto frames_until = [&](bool is_on) {
    for (int frames = 1;; ++frames, Pump()) {
      Show(1);
      if (frames == 5 || ((g_record.m_flags & noxdisplay::kShowAudio) != 0) == is_on) return frames;
    }
  };
  Show(1);
  const std::function<void()> changes[][2] = {
      {[&] { m_player->ChangePlaySpeed(1); }, [&] { m_player->ResetPlay(); }},
      {[&] { m_player->EnableSound(0); }, [&] { m_player->EnableSound(1); }},
      {[&] { m_player->Pause(), m_player->Pause(); }, [] {}},
      {[&] { m_player->StepNext(); }, [&] { m_player->Pause(); }},
      {[&] { m_player->StepPrev(); }, [&] { m_player->ResetPlay(); }}};
  for (int i = 0; const auto& [stop, undo] : changes) {
    EXPECT_EQ(frames_until(true), 2) << "begins when the host is told of a frame";
    stop();
    EXPECT_EQ(frames_until(false), i++ < 2 ? 2 : 1) << "at once, or when the host is told";
    undo();
  }
  EXPECT_EQ(frames_until(true), 2);
  os::sound::StartJournal();
  Show(1);
  EXPECT_FALSE(os::sound::TakeJournal().empty()) << "it is heard";
  m_player->PlayFrom(0, 40);
  EXPECT_EQ(frames_until(false), 2) << "the frame read ahead is not voiced";
}

TEST_F(FilePlayer, TellsInTheWindowsThreadWhatTheSharedThreadPlays) {
  int told_closed = 0;
  DWORD last = 0;
  m_on_told = [&, self = std::this_thread::get_id()](WPARAM code, LPARAM argument) {
    EXPECT_EQ(std::this_thread::get_id(), self);
    told_closed += code == ZEBX_PLAY_CLOSED ? 1 : 0;
    if (code == ZEBX_PLAY_OPENED) {
      EXPECT_EQ(reinterpret_cast<CVideoData*>(argument)->GetFile(), m_player->GetZebFile());
      EXPECT_EQ(After(100000), "-") << "waits while the host is told";
    }
    if (code != ZEBX_PLAY_FRAME) return;
    const tag_PLAYPOS position = *reinterpret_cast<const tag_PLAYPOS*>(argument);
    EXPECT_GE(position.m_file_frame, last);
    last = position.m_file_frame;
    EXPECT_EQ(position.m_block * 30 + position.m_frame, static_cast<int>(last));
    EXPECT_EQ(position.m_time.GetTime(), kBegin + last / 25);
  };
  ASSERT_EQ(Open({30, 30, 0}), 1);
  RunUntil([&] { return told_closed > 0; });
  EXPECT_EQ(std::ranges::count(m_told, ':'), 60);
  EXPECT_EQ(last, 59U);
  EXPECT_TRUE(m_told.starts_with(" 3 1:"));
  m_player->CloseVideo(1);
  Pump();
  EXPECT_EQ(told_closed, 2) << "once at the end, once when asked for";
  Open({5, 0});
  const DWORD opening = m_player->GetOpening();
  m_player->CloseVideo(0);
  m_player->OnVideoPlay(ZEBX_PLAY_CLOSED, opening);
  EXPECT_EQ(told_closed, 2) << "that opening has ended";
}

// On the window's thread and on another one; the last player goes on any thread.
TEST_F(FilePlayer, MayBeControlledAndEndInsideEveryNotification) {
  for (const std::function<void()>& action : std::vector<std::function<void()>>{
           [&] { m_player.reset(); }, [&] { m_player->CloseVideo(1); },
           [&] { m_player->OpenVideo("played", 0, 1, 0); },
           [&] { m_player->Pause(), m_player->PlayFrom(0, 1); }}) {
    for (const WPARAM code : {ZEBX_PLAY_OPENED, ZEBX_PLAY_FRAME, ZEBX_PLAY_CLOSED}) {
      for (const bool is_elsewhere : {false, true}) {
        std::atomic<bool> has_begun = false, is_done = false;
        m_on_told = [&](WPARAM told, LPARAM) {
          if (told != code || has_begun.exchange(true)) return;
          action();
          is_done = true;
        };
        LoopThread elsewhere([&](HWND, UINT message, WPARAM told, LPARAM) {
          if (message == ZEBX_MSG_VIDEOPLAY) m_on_told(told, 0);
          return LRESULT{0};
        });
        MakePlayer(is_elsewhere ? elsewhere.Window() : nullptr);
        ASSERT_EQ(Open({5, 0}), 1);
        RunUntil([&] { return is_done.load(); });
        for (int i = 0; i < 50; ++i, Pump()) m_clock.Advance(5);
        std::jthread([&] { m_player.reset(); });
        os::WindowTable::Get().Visit(
            m_host, [](const auto& host) { EXPECT_TRUE(host.m_children.empty()); });
      }
    }
  }
}

TEST_F(FilePlayer, EndsOrGoesOnWhereSomethingFails) {
  m_disk.Put("played", RawRecording({5, 0}));
  // What the host is told; memory runs out after so many allocations.
  int left = -1;
  const auto told = [&](int allocations = -1) {
    m_told.clear();
    counted_memory::calls_left = allocations;
    const bool is_open = m_player->OpenVideo("played", 0, 1, 0) != 0;
    for (int i = 0; is_open && i < 10 && m_player->OnDecode(0, m_now += 1000) != 0; ++i) continue;
    left = counted_memory::calls_left.exchange(-1);
    Pump();
    return is_open ? m_told : "refused" + m_told;
  };
  const std::string all = " 3 1:4 1:4 1:4 1:4 1:4 0";
  for (const auto& [function, calls, expected] :
       std::vector<std::tuple<Function, std::vector<DWORD>, std::string>>{
           {Function::kCreateStream, {1}, all},
           {Function::kCreateStream, {1, 2}, "refused"},
           {Function::kIsSurfaceLost, {1, 2, 3}, all},
           {Function::kLock, {1, 2}, all},
           {Function::kDisplay, {2, 3}, all}}) {
    for (const DWORD call : calls) noxdisplay::FailCall(function, call);
    EXPECT_EQ(told(), expected) << static_cast<int>(function);
    EXPECT_EQ(m_show.GetDrawStream(), nullptr);
  }

  // The disk, call by call; then memory, allocation by allocation.
  for (std::uint64_t call = 1, failures = 1; failures > 0; ++call) {
    FaultyFileSystem disk;
    disk.FailCall(FaultyFileSystem::kAnyCall, call);
    const std::string answer = told();
    EXPECT_TRUE(answer.ends_with(" 0") || answer == "refused") << call;
    m_player->CloseVideo(0);
    failures = disk.Failures();
  }
  SetErrorSink([](const std::exception&) {});
  for (int call = 0; call == 0 || left < 0; ++call) {
    const std::string answer = told(call);
    EXPECT_TRUE(answer.ends_with(" 0") || answer == "refused") << call;
  }
  m_player.reset();
  MakePlayer();
  Open({5, 0});
  counted_memory::calls_left = 0;  // of the thread: in its first wait or before its first call
  for (int i = 0; i < 1'000'000 && m_player->GetZebFile() == nullptr; ++i) {
    m_clock.Advance(5);
    std::this_thread::yield();
  }
  EXPECT_NE(m_player->GetZebFile(), nullptr) << "the thread goes on";
  SetErrorSink(nullptr);
  m_disk.Put("played", RawRecording({5, 0}).replace(22, 1, "\x50"));
  EXPECT_EQ(told(), "refused") << "a frame size that there is not";
}

TEST_F(FilePlayer, OpensWhileItsSettingsAskAThreadThatWaitsForItsTurn) {
  struct Asking : CShowParam {
    int Show(CVideoData*) override { return static_cast<int>(os::SendMessage(m_asked, 1, 0, 0)); }
    HWND m_asked = nullptr;
  } settings;
  m_disk.Put("played", RawRecording({5, 0}));
  {
    LoopThread elsewhere([&](HWND, UINT message, WPARAM, LPARAM) {
      return LRESULT{message == 1 ? m_player->OpenDecodeWnd(m_host, 0, &settings) : 0};
    });
    settings.m_asked = elsewhere.Window();
    m_player->OpenDecodeWnd(m_host, 0, &settings);
    EXPECT_EQ(m_player->OpenVideo("played", 0, 1, 0), 1);
  }
  m_player->CloseVideo(0);
}

TEST_F(FilePlayer, LeaksNothingInAThousandOpeningsAndNeedsTheMainWindow) {
  m_disk.Put("played", RawRecording({5, 0}));
  m_player.reset();
  std::size_t bytes = 0;
  for (int i = 0; i < 1000; ++i) {
    if (i % 20 == 0) MakePlayer();
    ASSERT_EQ(m_player->OpenVideo("played", 0, 1, 0), 1);
    for (int pass = i % 8; pass > 0; --pass) m_player->OnDecode(0, m_now += 1000);
    if (i % 20 == 19) m_player.reset();
    if (i == 99) bytes = counted_memory::live_bytes;
  }
  EXPECT_LE(counted_memory::live_bytes, bytes + 4096);
  zebxCloseZebx();
  MakePlayer();
  EXPECT_EQ(m_player->OpenVideo("played", 0, 1, 0), 0);
  zebxInitZebx(7, nullptr, 0, m_host, "");
  int opened = 0;
  for (CDecodeWnd& player : std::vector<CDecodeWnd>(17)) {
    player.OpenDecodeWnd(m_host, 0, &m_show);
    opened += player.OpenVideo("played", 0, 1, 0);
  }
  EXPECT_EQ(opened, 16);
}

TEST_F(FilePlayer, ObeysSeveralThreadsWhileItPlaysAndEnds) {
  m_disk.Put("played", RawRecording({50, 1, 50, 0}));
  std::atomic<int> frames = 0, running = 3;
  m_on_told = [&](WPARAM code, LPARAM) { frames += code == ZEBX_PLAY_FRAME ? 1 : 0; };
  CDecodeWnd& player = *m_player;
  const auto act = [&](std::size_t action, int i) {
    CImage image;
    if (action == 0) player.OpenVideo("played", 3, 1, 0);
    if (action == 1) player.CloseVideo(i & 1);
    if (action == 2) player.Pause(), player.GetPicture(&image), player.IsRT8Port();
    if (action == 3) player.StepNext(), player.StepPrev();
    if (action == 4) player.PlayFrom(i % 4, i % 60), player.ResetPlay();
    if (action == 5) player.PlayFrom(CTime(kBegin + static_cast<DWORD>(i % 5)));
    if (action == 6) player.ChangePlaySpeed(i % 4 - 1), player.EnableSound(i & 1);
    if (action == 7) player.CloseDecodeWnd(), player.OpenDecodeWnd(m_host, 0, &m_show);
    if (action == 8) player.Lock(), player.GetZebFile(), player.CloseVideo(0), player.Unlock();
    if (action == 9) CDecodeWnd().OpenVideo("played", 0, 1, 0);
  };
  const auto run = [&](std::size_t first) {
    for (std::size_t i = first; frames < 150; i += 7, std::this_thread::yield()) {
      act(i % 397, static_cast<int>(i));
    }
    --running;
  };
  const std::jthread a(run, 0U), b(run, 1U), c(run, 2U);
  RunUntil([&] { return running == 0; });
}

}  // namespace
