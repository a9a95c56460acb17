#include "playback/multi_decode_wnd.h"

#include <atomic>
#include <functional>
#include <sstream>
#include <stdexcept>

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

namespace {

// What the one stream thread that there is at a time asks of codec and display.
struct Journal {
  std::string m_lines;  // dN: frame N decoded, gN: fetched with post-processing N, s: shown
  std::string m_decoder;
  tag_DISPLAYINFO m_shown = {};
  bool m_refuses = false;
  bool m_throws = false;
};
Journal g_journal;  // NOLINT(*-avoid-non-const-global-variables)

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*)
extern "C" {
int __real_nxcCreateVideoDecoder(NxcHandle*, DWORD, DWORD, DWORD, DWORD);
int __real_noxshowDisplay(NoxshowStream, HWND, const tag_DISPLAYINFO*);

int __wrap_nxcCreateVideoDecoder(NxcHandle* decoder, DWORD type, DWORD width, DWORD height,
                                 DWORD post_processing) {
  if (g_journal.m_refuses && g_journal.m_throws) throw std::runtime_error("no decoder");
  if (g_journal.m_refuses) return 1;
  g_journal.m_decoder = std::to_string(width) + "x" + std::to_string(height);
  return __real_nxcCreateVideoDecoder(decoder, type, width, height, post_processing);
}
int __wrap_nxcDecodeVideo(NxcHandle, WORD, const BYTE* data, DWORD length) {
  if (g_journal.m_throws) throw std::runtime_error("decoder");
  constexpr DWORD kNumberAt = 8;
  g_journal.m_lines += "d" + std::string(data + kNumberAt, data + length) + " ";
  return 0;
}
int __wrap_nxcGetVideo(NxcHandle, BYTE*, DWORD, int, DWORD post_processing) {
  g_journal.m_lines += "g" + std::to_string(post_processing) + " ";
  return 0;
}
int __wrap_noxshowDisplay(NoxshowStream stream, HWND window, const tag_DISPLAYINFO* info) {
  if (info != nullptr) {
    g_journal.m_shown = *info;
    g_journal.m_lines += "s ";
  }
  return __real_noxshowDisplay(stream, window, info);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl*)

namespace {

// Display settings that a host may derive.
struct Settings : CShowParam {
  int Show(CVideoData* frame) override { return m_on_show(), CShowParam::Show(frame); }
  std::function<void()> m_on_show = [] {};
};

// A player in front of a host's window, with a disk and a clock of the test's own.
class MultiDecodeWndTest : public WindowTest {
 protected:
  static constexpr int kFramesOfBlock = 30;  // 40 ms each, from kBegin on
  static constexpr DWORD kBegin = 1000000000;

  MultiDecodeWndTest() {
    g_journal = {};
    m_disk.Put("file", RawRecording({kFramesOfBlock, kFramesOfBlock, kFramesOfBlock, 0}));
    m_disk.Put("short", RawRecording({3, 0}));
    OpenWindow(0);
  }
  ~MultiDecodeWndTest() override { noxdisplay::ResetDisplay(); }

  int OpenWindow(int pane) { return m_player->OpenDecodeWnd(m_host, &m_settings, pane); }
  int Open(const CString& file, int speed = 0) { return m_player->OpenVideo(file, speed, 0, 0); }
  // The thread gets the file when `calls` is done.
  void OpenAfter(const std::function<void()>& calls) {
    m_player->Lock();
    ASSERT_EQ(Open("file"), 1);
    calls();
    m_player->Unlock();
  }
  // A copy of a file with one byte changed.
  CString Patch(const std::string& file, std::size_t at, char byte) {
    std::string bytes = m_disk.Get(file);
    bytes[at] = byte;
    m_disk.Put("patched", bytes);
    return "patched";
  }

  // Takes messages until the condition holds.
  static void Until(const std::function<bool()>& holds) {
    constexpr int kEnough = 5'000'000;
    for (int i = 0; i < kEnough && !holds(); ++i) {
      os::Message message;
      while (os::PeekMessage(&message) != 0) os::DispatchMessage(message);
      std::this_thread::yield();
    }
    EXPECT_TRUE(holds());
  }
  static void Pump() {
    Until([calls = 0]() mutable { return calls++ > 0; });
  }
  // Tick by tick, so that a thread that lags sees no moment between two.
  void MoveTo(ULONGLONG milliseconds) {
    for (; m_now < milliseconds; Pump()) m_clock.MoveTo(m_now += 5);
  }
  // Expects to be told exactly this, each frame as its number @ its moment. Then goes on anew.
  void ExpectTold(const std::string& words) {
    std::istringstream all(words);
    std::size_t count = 0;
    for (std::string word; all >> word; ++count) {
      if (const auto at = word.find('@'); at != std::string::npos) {
        MoveTo(std::stoul(word.substr(at + 1)));
      }
      Until([&] { return m_told.size() > count; });
    }
    Pump();
    std::string told;
    for (const std::string& word : m_told) told += (told.empty() ? "" : " ") + word;
    EXPECT_EQ(told, words);
    m_told.clear();
  }
  std::function<void(WPARAM code)> m_on_notice = [](WPARAM) {};
  std::vector<std::string> m_told;
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

 private:
  void Hear(WPARAM code, LPARAM what) {
    if (code == ZEBX_PLAY_FRAME) {
      const auto& at = *reinterpret_cast<tag_PLAYPOS*>(what);
      EXPECT_EQ(DWORD(at.m_block * kFramesOfBlock + at.m_frame), at.m_file_frame);
      EXPECT_EQ(at.m_time.GetTime(), kBegin + at.m_file_frame * 40 / 1000);
      m_told.push_back(std::to_string(at.m_file_frame) + "@" + std::to_string(m_now));
    } else {
      m_frame = reinterpret_cast<const CVideoData*>(what);
      EXPECT_EQ(m_frame == nullptr, code == ZEBX_PLAY_CLOSED);
      m_told.emplace_back(code == ZEBX_PLAY_CLOSED ? "closed" : "opened");
    }
    m_on_notice(code);
  }
};

TEST_F(MultiDecodeWndTest, PlaysAtEverySpeed) {
  const struct {
    int m_speed;
    const char* m_told;
    const char* m_journal;
  } kCases[] = {
      {0, "0@0 1@40 2@80", "d0 g29 s d1 g29 s d2 g29 s "},
      {1, "0@0 1@20 2@40", "d0 g0 s d1 g0 s d2 g0 s "},
      {2, "3@0 7@40", "d0 g0 d1 d2 d3 s d4 g0 d5 d6 d7 s "},
      // 6 ms, each of which waits for the tick of 5 ms behind it.
      {3, "5@0 11@10 17@20",
       "d0 g0 d1 d2 d3 d4 d5 s d6 g0 d7 d8 d9 d10 d11 s d12 g0 d13 d14 d15 d16 d17 s "},
      {4, "0@0 1@5 2@10", "d0 g0 s d1 g0 s d2 g0 s "},
      {-3, "0@0 1@240", "d0 g29 s d1 g29 s "},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.m_speed);
    m_clock.MoveTo(m_now = 0);
    g_journal.m_lines.clear();
    ASSERT_EQ(Open("file", test.m_speed), 1);
    ExpectTold(std::string("opened ") + test.m_told);
    m_player->CloseVideo(0);
    EXPECT_EQ(g_journal.m_lines, test.m_journal);
  }
  // Frames without the last one of their group are not shown. The file that the host is told of is
  // there all the same.
  m_on_notice = [&](WPARAM code) {
    EXPECT_EQ(code == ZEBX_PLAY_OPENED ? m_frame->GetFile() : nullptr, m_player->GetZebFile());
  };
  Open("short", 2);
  ExpectTold("opened closed");
  EXPECT_EQ(m_player->GetZebFile(), nullptr);
}

TEST_F(MultiDecodeWndTest, ShowsTimeAndDateOfTheFrame) {
  const ScopedTimeZone zone("UTC");
  m_settings.ShowCaption(1);
  m_settings.SetCaptionColor(0x123456);
  // The second frame's video is lost; the header is of a board that plays frame size 0x87 in 352 x
  // 288, but the frames are not.
  Open(Patch(Patch(Patch("short", 91, 1), 22, '\x87'), 12, 4));
  EXPECT_EQ(m_player->IsRT8Port(), 1);
  ExpectTold("opened 0@0");
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
  // What is asked for before the file is ready.
  OpenAfter([&] { EXPECT_EQ(player.PlayFrom(CTime(kBegin + 2)), 1); });
  ExpectTold("opened 60@0");
  OpenAfter([&] { EXPECT_EQ(player.PlayFrom(2, 0), 1); });
  ExpectTold("opened 60@0");
  OpenAfter([&] { EXPECT_EQ(player.PlayFrom(0, 5), 1); });
  ExpectTold("opened 0@0");
  // A step from a pause comes at once: the interval is over.
  const struct {
    ULONGLONG m_called_at;
    std::function<int()> m_call;
    int m_result;
    const char* m_told;
  } kCases[] = {
      {0, [&] { return player.PlayFrom(1, 30); }, 1, "59@40 60@80 61@120"},
      {120, [&] { return player.StepPrev(); }, 0, "60@160"},
      {1000, [&] { return player.StepPrev(); }, 0, "57@1000"},
      {1100, [&] { return player.StepNext(); }, 1, "58@1100"},
      {1200, [&] { return player.PlayFrom(CTime(kBegin + 60)) + player.IsPause(); }, 1, ""},
      // The search keeps single steps.
      {1300, [&] { return player.PlayFrom(CTime(kBegin - 1)); }, 1, "0@1300"},
      {1400, [&] { return player.StepPrev(); }, 0, ""},
      // Steps leave frames out, too.
      {1500, [&] { return player.ChangePlaySpeed(2), player.StepNext(); }, 1, "4@1500"},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.m_told);
    MoveTo(test.m_called_at);
    EXPECT_EQ(test.m_call(), test.m_result);
    ExpectTold(test.m_told);
  }
  const auto expect_to_play = [&](int speed) {
    Until([&] { return m_clock.MoveTo(m_now += 5), m_told.size() > 2; });
    EXPECT_EQ(player.GetPlaySpeed(), speed);
    player.Pause();
    EXPECT_EQ(player.IsPause(), 1);
    m_told.clear();
  };
  player.Pause();
  expect_to_play(2);
  player.ResetPlay();
  expect_to_play(0);
  player.CloseVideo(0);
  EXPECT_EQ(player.IsPause(), 1);
}

TEST_F(MultiDecodeWndTest, FollowsTheTimeThatItIsTold) {
  OpenWindow(3);
  Open("file");
  ExpectTold("opened");
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
  Until([&] { return m_told.size() == 2; });
  EXPECT_EQ(g_journal.m_lines, "d0 g29 s d1 g0 s ");
  EXPECT_NE(m_settings.GetDrawStream(), nullptr);
  m_told.clear();
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
  Open("file");
  ExpectTold("opened");
  EXPECT_EQ(m_player->PlayFrom(CTime(kBegin + 2)), 1);
  m_player->SetPlayTime(CTime(kBegin + 1));
  ExpectTold("0@2130 60@2135");
}

TEST_F(MultiDecodeWndTest, OpensNothingWhereSomethingIsMissing) {
  using Function = noxdisplay::Function;
  EXPECT_EQ(OpenWindow(-1) + OpenWindow(4), 0);
  EXPECT_EQ(Open("missing") + Open(Patch("short", 22, 99)), 0);
  noxdisplay::FailCall(Function::kCreateStream, 1);
  noxdisplay::FailCall(Function::kCreateStream, 2);
  EXPECT_EQ(Open("short"), 0);
  os::FailThreadStart(1);
  EXPECT_EQ(Open("short"), 0);
  EXPECT_EQ(noxdisplay::CountStreams(), 1U);
  EXPECT_EQ(m_player->IsPause() + m_player->StepNext(), 1);
  m_player->CloseVideo(1);
  ExpectTold("closed");
  for (const auto function : {Function::kCreateStream, Function::kIsSurfaceLost,
                              Function::kRestoreSurface, Function::kLock, Function::kDisplay}) {
    noxdisplay::FailCall(function, 1);
    Open("short");
    ExpectTold("opened 0@" + std::to_string(m_now) + " 1@" + std::to_string(m_now + 40));
  }
  FaultyFileSystem disk;  // keeps silent about errors, too
  g_journal.m_throws = true;
  Open("short");
  ExpectTold("opened closed");
  for (const bool throws : {true, false}) {
    g_journal.m_refuses = true;
    g_journal.m_throws = throws;
    EXPECT_EQ(Open("short"), 1);
    ExpectTold("closed");
  }
  g_journal.m_refuses = false;
  Open("file");
  ExpectTold("opened 0@" + std::to_string(m_now));
  disk.FailCall(FaultyFileSystem::kRead, 1, 0, 1000);
  m_player->PlayFrom(1, 1);
  MoveTo(m_now + 40);
  ExpectTold("closed");
  EXPECT_EQ(m_player->OpenDecodeWnd(nullptr, &m_settings, 0) + Open("short"), 0);
  EXPECT_EQ(m_player->OpenDecodeWnd(m_host, nullptr, 0), 1);
  EXPECT_EQ(Open("short"), 0);
  m_player.reset();
}

TEST_F(MultiDecodeWndTest, TellsNothingOfAnOpeningThatIsOver) {
  const auto take = [](WPARAM code) {
    os::Message message;
    while (os::GetMessage(&message) != 0) {
      if (message.m_message == ZEBX_MSG_VIDEOPLAY && message.m_wparam == code) break;
      os::DispatchMessage(message);
    }
    return message;
  };
  Open("short");
  const os::Message opened = take(ZEBX_PLAY_OPENED);
  m_player->CloseVideo(0);
  ExpectTold("");
  Open("short");
  os::DispatchMessage(opened);
  ExpectTold("opened 0@0 1@40");
  m_clock.MoveTo(m_now += 40);
  const os::Message closed = take(ZEBX_PLAY_CLOSED);
  m_told.clear();
  Open("short");
  os::DispatchMessage(closed);
  ExpectTold("opened 0@80 1@120 2@160 closed");
  // The host's window, and the player's with it.
  Open("file");
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
  EXPECT_EQ(Open("short"), 1);
  ExpectTold("opened 0@0 closed");
  int openings = 0;
  m_on_notice = [&](WPARAM code) {
    if (code == ZEBX_PLAY_OPENED && ++openings < 3) Open("short");
    if (code == ZEBX_PLAY_CLOSED) m_player.reset();
  };
  Open("short");
  ExpectTold("opened opened opened 0@0 1@40 2@80 closed");
  EXPECT_EQ(noxdisplay::CountStreams(), 0U);
}

TEST_F(MultiDecodeWndTest, BearsEveryOperationFromSeveralThreads) {
  const auto control = [&] {
    CImage image;
    for (int i = 0; i < 200; ++i) {
      m_player->PlayFrom(i % 4, i % 35);
      m_player->GetPicture(&image);
      m_player->Pause();
      m_player->PlayFrom(CTime(kBegin + static_cast<DWORD>(i % 5)));
      m_player->ChangePlaySpeed(i % 6);
      if (i % 3 == 0) m_player->StepNext();
      m_player->SetPlayTime(CTime(kBegin + static_cast<DWORD>(i % 4)));
      m_settings.ShowCaption(i % 2);
      m_player->ResetPlay();
      m_player->Lock();
      const CZebFile* const file = m_player->GetZebFile();
      EXPECT_TRUE(file == nullptr || file->GetTotalBlock() == 4);
      m_player->Unlock();
    }
  };
  const auto open = [&] {
    for (int i = 0; i < 500; ++i) {
      EXPECT_EQ(Open("file", i % 4), 1);
      if (i % 3 == 0) m_player->CloseVideo(i % 2);
    }
  };
  // At once, while this thread takes messages and time goes on.
  const auto run = [&](const std::vector<std::function<void()>>& calls) {
    std::atomic<std::size_t> done = 0;
    std::vector<std::future<void>> threads;
    for (const auto& call : calls) {
      threads.push_back(std::async(std::launch::async, [&] { call(), ++done; }));
    }
    Until([&] { return m_clock.MoveTo(m_now += 5), done == calls.size(); });
  };
  for (const int pane : {0, 1}) {
    m_on_notice = [&](WPARAM) { m_player->StepPrev(); };
    OpenWindow(pane);
    run({control, control, open, open});
  }
  m_on_notice = [](WPARAM) {};
  run({[&] { m_player.reset(); }});
  EXPECT_EQ(noxdisplay::CountStreams(), 0U);
}

}  // namespace
