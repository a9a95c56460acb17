#include "playback/multi_decode_wnd.h"

#include <atomic>
#include <bit>
#include <functional>
#include <new>
#include <sstream>

#include "capture/show_param.h"
#include "capture/video_data.h"
#include "image/image.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/os/clock.h"
#include "platform/os/threads/thread.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"
#include "tests/support/window_fixture.h"

using namespace zebx;

// What the one stream thread that there is at a time asks of codec and display.
static struct {
  std::string m_lines;  // dN: frame N decoded, gN: fetched with post-processing N, s: shown
  std::string m_decoder;
  tag_DISPLAYINFO m_shown = {};
  int (*m_on_create)() = [] { return 0; };
} g_journal;  // NOLINT(*-avoid-non-const-global-variables)

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*)
extern "C" {
int __real_nxcCreateVideoDecoder(NxcHandle*, DWORD, DWORD, DWORD, DWORD);
int __real_noxshowDisplay(NoxshowStream, HWND, const tag_DISPLAYINFO*);

int __wrap_nxcCreateVideoDecoder(NxcHandle* decoder, DWORD type, DWORD width, DWORD height,
                                 DWORD post_processing) {
  g_journal.m_decoder = std::to_string(width) + "x" + std::to_string(height);
  if (g_journal.m_on_create() != 0) return 1;
  return __real_nxcCreateVideoDecoder(decoder, type, width, height, post_processing);
}
int __wrap_nxcDecodeVideo(NxcHandle, WORD, const BYTE* data, DWORD length) {
  g_journal.m_lines += "d" + std::string(data + 8, data + length) + " ";  // behind "picture "
  return 0;
}
int __wrap_nxcGetVideo(NxcHandle, BYTE*, DWORD, int, DWORD post_processing) {
  g_journal.m_lines += "g" + std::to_string(post_processing) + " ";
  return 0;
}
int __wrap_noxshowDisplay(NoxshowStream stream, HWND window, const tag_DISPLAYINFO* info) {
  if (info != nullptr) g_journal.m_shown = *info, g_journal.m_lines += "s ";
  return __real_noxshowDisplay(stream, window, info);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl*)

namespace {

struct Settings : CShowParam {
  int Show(CVideoData* frame) override { return m_on_show(), CShowParam::Show(frame); }
  std::function<void()> m_on_show = [] {};
};

// A player in front of a host's window, with a disk and a clock of the test's own.
struct MultiDecodeWndTest : WindowTest {
  static constexpr DWORD kBegin = 1000000000;  // frames are 40 ms apart, and 30 a block

  MultiDecodeWndTest() {
    g_journal = {};
    m_disk.Put("file", RawRecording({30, 30, 30, 0}));
    m_disk.Put("short", RawRecording({3, 0}));
    OpenWindow(0);
  }
  ~MultiDecodeWndTest() override { noxdisplay::ResetDisplay(); }

  int OpenWindow(int pane) { return m_player->OpenDecodeWnd(m_host, &m_settings, pane); }
  int Open(const CString& file, int speed = 0) const {
    return m_player->OpenVideo(file, speed, 0, 0);
  }
  int PlayFromSecond(DWORD second) const { return m_player->PlayFrom(CTime(kBegin + second)); }
  // A copy of a file with one byte changed.
  CString Patch(const std::string& file, std::size_t at, char byte) {
    std::string bytes = m_disk.Get(file);
    bytes[at] = byte;
    m_disk.Put("patched", bytes);
    return "patched";
  }

  static void Pump() {
    for (os::Message message; os::PeekMessage(&message) != 0;) os::DispatchMessage(message);
  }
  // Takes messages until the condition holds.
  static void Until(const std::function<bool()>& holds) {
    for (int i = 0; i < 5'000'000 && !holds(); ++i, std::this_thread::yield()) Pump();
    EXPECT_TRUE(holds());
  }
  // Tick by tick, so that a thread that lags sees no moment between two.
  void MoveTo(ULONGLONG milliseconds) {
    for (; m_now < milliseconds; Pump()) m_clock.MoveTo(m_now += 5);
  }
  // Expects to be told exactly this, each frame as its number @ its moment. Then goes on anew.
  void ExpectTold(const std::string& words) {
    std::istringstream all(words);
    std::string told;
    for (std::string word; all >> word; told += word + " ") {
      if (const auto at = word.find('@') + 1; at != 0) MoveTo(std::stoul(word.substr(at)));
      Until([&] { return m_told.size() > told.size(); });
    }
    Pump();
    EXPECT_EQ(m_told, told);
    m_told.clear();
  }
  void Play(const CString& file, const std::string& told, int speed = 0) {
    EXPECT_EQ(Open(file, speed), 1);
    ExpectTold(told);
  }
  void Hear(WPARAM code, LPARAM what) {
    if (code == ZEBX_PLAY_FRAME) {
      const auto& at = *std::bit_cast<tag_PLAYPOS*>(what);
      EXPECT_EQ(DWORD(at.m_block * 30 + at.m_frame), at.m_file_frame);
      EXPECT_EQ(at.m_time.GetTime(), kBegin + at.m_file_frame * 40 / 1000);
      m_told += std::to_string(at.m_file_frame) + "@" + std::to_string(m_now) + " ";
    } else {
      m_frame = std::bit_cast<const CVideoData*>(what);
      EXPECT_EQ(m_frame == nullptr, code == ZEBX_PLAY_CLOSED);
      m_told += code == ZEBX_PLAY_CLOSED ? "closed " : "opened ";
    }
    m_on_notice(code);
  }

  std::function<void(WPARAM code)> m_on_notice = [](WPARAM) {};
  std::string m_told;  // a space behind each word
  const CVideoData* m_frame = nullptr;
  os::SteppedClock m_clock{kBegin, 0};
  ULONGLONG m_now = 0;
  MemoryFileSystem m_disk;
  Settings m_settings;
  HWND m_host = Make([this](HWND, UINT message, WPARAM code, LPARAM what) {
    if (message == ZEBX_MSG_VIDEOPLAY) Hear(code, what);
    return LRESULT{0};
  });
  std::unique_ptr<CMultiDecodeWnd> m_player = std::make_unique<CMultiDecodeWnd>();
};

TEST_F(MultiDecodeWndTest, PlaysAtEverySpeed) {
  const struct {
    int speed;
    std::string told, journal;
  } cases[] = {
      {0, "0@0 1@40 2@80", "d0 g29 s d1 g29 s d2 g29 s "},
      {1, "0@0 1@20 2@40", "d0 g0 s d1 g0 s d2 g0 s "},
      {2, "3@0 7@40", "d0 g0 d1 d2 d3 s d4 g0 d5 d6 d7 s "},
      // 6 ms, each of which waits for the tick of 5 ms behind it.
      {3, "5@0 11@10", "d0 g0 d1 d2 d3 d4 d5 s d6 g0 d7 d8 d9 d10 d11 s "},
      {4, "0@0 1@5 2@10", "d0 g0 s d1 g0 s d2 g0 s "},
      {-3, "0@0 1@240", "d0 g29 s d1 g29 s "},
  };
  for (const auto& [speed, told, journal] : cases) {
    m_clock.MoveTo(m_now = 0);
    g_journal.m_lines.clear();
    Play("file", "opened " + told, speed);
    m_player->CloseVideo(0);
    EXPECT_EQ(g_journal.m_lines, journal) << speed;
  }
  Play("short", "opened closed", 2);  // frames without the last one of their group are not shown
}

TEST_F(MultiDecodeWndTest, ShowsTimeAndDateOfTheFrame) {
  const ScopedTimeZone zone("UTC");
  m_settings.ShowCaption(1);
  m_settings.SetCaptionColor(0x123456);
  // The second frame's video is lost; the header is of a board that plays frame size 0x87 in 352 x
  // 288, but the frames are not.
  Play(Patch(Patch(Patch("short", 91, 1), 22, '\x87'), 12, 4), "opened 0@0");
  EXPECT_EQ(m_frame->GetFile(), m_player->GetZebFile());
  EXPECT_EQ(m_player->IsRT8Port(), 1);
  EXPECT_EQ(g_journal.m_decoder, "352x288");
  EXPECT_STREQ(g_journal.m_shown.m_clock, "01:46:40");
  EXPECT_STREQ(g_journal.m_shown.m_end_time, "2001 09 09");
  EXPECT_EQ(g_journal.m_shown.m_clock_color, 0x123456U);
  EXPECT_EQ(g_journal.m_shown.m_flags, 0x4410EU);
  m_settings.ShowCaption(0);
  m_settings.SetActive(1);
  m_player->EnableSound(1);
  ExpectTold("1@40");
  EXPECT_EQ(g_journal.m_shown.m_flags, 0x40920U);
  EXPECT_EQ(g_journal.m_lines, "d0 g29 s s ");
  CImage image;
  EXPECT_EQ(m_player->GetPicture(&image), 1);
  m_player->CloseVideo(0);
  EXPECT_EQ(m_player->GetPicture(&image) + m_player->IsRT8Port(), 0);
}

TEST_F(MultiDecodeWndTest, StepsPausesAndSeeks) {
  CMultiDecodeWnd& player = *m_player;
  EXPECT_EQ(player.IsPause() + player.StepNext() + player.PlayFrom(1, 2), 0);
  const struct {
    ULONGLONG called_at;  // 0: before the file is ready
    std::function<int()> call;
    int result;
    const char* told;
  } cases[] = {
      {0, [&] { return PlayFromSecond(2); }, 1, "opened 60@0"},
      {0, [&] { return player.PlayFrom(0, 5); }, 1, "opened 0@0"},
      {0, [&] { return player.PlayFrom(2, 0); }, 1, "opened 60@0"},
      {5, [&] { return player.PlayFrom(1, 30); }, 1, "59@40 60@80 61@120"},
      {120, [&] { return player.StepPrev(); }, 0, "60@160"},
      // A step from a pause comes at once: the interval is over.
      {1000, [&] { return player.StepPrev(); }, 0, "57@1000"},
      {1100, [&] { return player.StepNext(); }, 1, "58@1100"},
      {1200, [&] { return PlayFromSecond(60) + player.IsPause(); }, 1, ""},
      // The search keeps single steps.
      {1300, [&] { return PlayFromSecond(-1U); }, 1, "0@1300"},
      {1400, [&] { return player.StepPrev(); }, 0, ""},
      // Steps leave frames out, too.
      {1500, [&] { return player.ChangePlaySpeed(2), player.StepNext(); }, 1, "4@1500"},
  };
  for (const auto& [called_at, call, result, told] : cases) {
    MoveTo(called_at);
    player.Lock();
    if (called_at == 0) Open("file");
    EXPECT_EQ(call(), result);
    player.Unlock();
    ExpectTold(told);
  }
  EXPECT_TRUE(g_journal.m_lines.ends_with("d1 g29 d2 d3 d4 s "));
  const std::function<int()> go_on[] = {
      [&] { return player.Pause(), player.GetPlaySpeed() - 1; },
      [&] { return player.StepNext() & player.PlayFrom(1, 1); },
      [&] { return player.ResetPlay(), player.GetPlaySpeed() + 1; },
  };
  for (const auto& call : go_on) {
    player.Lock();
    EXPECT_EQ(call(), 1);
    player.Unlock();
    Until([&] { return m_clock.MoveTo(m_now += 5), m_told.size() > 20; });
    player.Pause();
    Pump();
    m_told.clear();
  }
  player.CloseVideo(0);
  EXPECT_EQ(player.IsPause(), 1);
}

TEST_F(MultiDecodeWndTest, FollowsTheTimeThatItIsTold) {
  OpenWindow(3);
  Play("file", "opened");
  m_player->ChangePlaySpeed(4);
  m_player->SetPlayTime(CTime(kBegin - 1));
  MoveTo(1000);
  EXPECT_EQ(m_settings.GetDrawStream(), nullptr);
  m_player->Pause();
  m_player->SetPlayTime(CTime(kBegin + 1));
  MoveTo(2000);
  ExpectTold("");
  m_player->Pause();
  // The first frame is played at the speed of the opening; the last tick was at the opening, too.
  Until([&] { return m_told.size() == 14; });
  m_told.clear();
  EXPECT_EQ(g_journal.m_lines, "d0 g29 s d1 g0 s ");
  EXPECT_NE(m_settings.GetDrawStream(), nullptr);
  ExpectTold("2@2005");
  // A second is not too far; more is, and goes before a seek.
  m_player->ChangePlaySpeed(0);
  m_player->PlayFrom(2, 1);
  ExpectTold("60@2010 61@2050");
  m_player->SetPlayTime(CTime(kBegin));
  m_player->PlayFrom(1, 5);
  ExpectTold("0@2090");
  m_player->SetPlayTime(CTime(kBegin + 2));
  ExpectTold("60@2130");
  // A search before its time comes: the first frame does not stay for as long as the search leads.
  Play("file", "opened");
  EXPECT_EQ(PlayFromSecond(2), 1);
  m_player->SetPlayTime(CTime(kBegin + 1));
  ExpectTold("0@2130 60@2135");
}

TEST_F(MultiDecodeWndTest, OpensNothingWhereSomethingIsMissing) {
  EXPECT_EQ(OpenWindow(-1) + OpenWindow(4), 0);
  EXPECT_EQ(Open("missing") + Open(Patch("short", 22, 99)), 0);
  for (const DWORD nth : {1U, 2U}) noxdisplay::FailCall(noxdisplay::Function::kCreateStream, nth);
  EXPECT_EQ(Open("short"), 0);
  os::FailThreadStart(1);
  EXPECT_EQ(Open("short") + m_player->StepNext(), 0);
  EXPECT_EQ(m_player->IsPause(), 1);
  m_player->CloseVideo(1);
  ExpectTold("closed");

  FaultyFileSystem disk;  // keeps silent about errors, too
  for (const auto refuse : {+[] { return 1; }, +[]() -> int { throw std::bad_alloc(); }}) {
    g_journal.m_on_create = refuse;
    Play("short", "closed");
  }
  g_journal.m_on_create = [] { return 0; };
  Play("file", "opened 0@0");
  disk.FailCall(FaultyFileSystem::kRead, 1, 0, 1000);
  m_player->PlayFrom(1, 1);
  MoveTo(40);
  ExpectTold("closed");
  disk.Heal();
  EXPECT_EQ(m_player->OpenDecodeWnd(nullptr, &m_settings, 0) + Open("short"), 0);
  EXPECT_EQ(m_player->OpenDecodeWnd(m_host, nullptr, 0) + Open("short"), 1);
  m_player.reset();
}

TEST_F(MultiDecodeWndTest, TellsNothingOfAnOpeningThatIsOver) {
  const auto open_and_take = [&](WPARAM code) {
    Open("short");
    for (os::Message message; os::GetMessage(&message) != 0; os::DispatchMessage(message)) {
      if (message.m_message == ZEBX_MSG_VIDEOPLAY && message.m_wparam == code) return message;
      m_clock.MoveTo(m_now += 5);
    }
    return os::Message();
  };
  for (const WPARAM code : {ZEBX_PLAY_OPENED, ZEBX_PLAY_FRAME, ZEBX_PLAY_CLOSED}) {
    const os::Message stale = open_and_take(code);
    m_player->CloseVideo(0);
    m_told.clear();
    ExpectTold("");
    Open("file");
    os::DispatchMessage(stale);
    ExpectTold("opened 0@" + std::to_string(m_now));
  }
  // The host's window, and the player's with it.
  os::DestroyWindow(m_host);
  m_player->CloseVideo(1);
  EXPECT_EQ(OpenWindow(0), 0);
}

TEST_F(MultiDecodeWndTest, MayBeClosedOpenedAndDeletedInsideANotification) {
  m_on_notice = [&](WPARAM code) {
    if (code == ZEBX_PLAY_FRAME) m_player->CloseVideo(1);
  };
  // In the midst of an opening there is no other, and no closing.
  m_settings.m_on_show = [&] { EXPECT_EQ(Open("file"), 0), m_player->CloseDecodeWnd(); };
  Play("short", "opened 0@0 closed");
  int openings = 0;
  m_on_notice = [&](WPARAM code) {
    if (code == ZEBX_PLAY_OPENED && ++openings < 3) Open("short");
    if (code == ZEBX_PLAY_CLOSED) m_player.reset();
  };
  Play("short", "opened opened opened 0@0 1@40 2@80 closed");
  EXPECT_EQ(noxdisplay::CountStreams(), 0U);
}

TEST_F(MultiDecodeWndTest, BearsEveryOperationFromSeveralThreads) {
  const std::function<void()> control = [&] {
    CImage image;
    for (int i = 0; i < 200; ++i) {
      m_player->PlayFrom(i % 4, i % 35);
      m_player->GetPicture(&image);
      m_player->Pause();
      PlayFromSecond(static_cast<DWORD>(i % 5));
      m_player->ChangePlaySpeed(i % 6);
      m_player->SetPlayTime(CTime(kBegin + static_cast<DWORD>(i % 4)));
      m_settings.ShowCaption(i % 2);
      m_player->Lock();
      const CZebFile* const file = m_player->GetZebFile();
      EXPECT_TRUE(file == nullptr || file->GetTotalBlock() == 4);
      m_player->Unlock();
    }
  };
  const std::function<void()> open = [&] {
    for (int i = 0; i < 500; ++i) {
      EXPECT_EQ(Open("file"), 1);
      if (i % 3 == 0) m_player->CloseVideo(i % 2);
    }
  };
  m_on_notice = [&](WPARAM) { m_player->StepPrev(); };
  for (const int pane : {0, 1}) {
    OpenWindow(pane);
    std::atomic<int> running = 4;
    std::vector<std::jthread> threads;
    for (const auto& call : {control, control, open, open}) {
      threads.emplace_back([&running, call] { call(), --running; });
    }
    Until([&] { return m_clock.MoveTo(m_now += 5), running == 0; });
  }
  std::thread([&] { m_player.reset(); }).join();
  EXPECT_EQ(noxdisplay::CountStreams(), 0U);
}

}  // namespace
