// What a host sees and does: notifications, failures, threads, and many openings.
#include <thread>

#include "capture/video_data.h"
#include "image/image.h"
#include "platform/framework/error_report.h"
#include "tests/playback/file_player_fixture.h"
#include "tests/support/counted_memory.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/window_fixture.h"

using namespace zebx;

namespace {

using noxdisplay::Function;

using FilePlayerHost = FilePlayerTest;

TEST_F(FilePlayerHost, IsToldInTheWindowsThreadWhatTheSharedThreadPlays) {
  const auto self = std::this_thread::get_id();
  int closed = 0;
  int frames = 0;
  DWORD last = 0;
  m_on_told = [&](WPARAM code, LPARAM argument) {
    EXPECT_EQ(std::this_thread::get_id(), self);
    closed += code == ZEBX_PLAY_CLOSED;
    if (code == ZEBX_PLAY_OPENED) {
      const auto* const frame = reinterpret_cast<const CVideoData*>(argument);
      EXPECT_EQ(frame->GetFile(), m_player->GetZebFile());
      const int index = frame->GetFrameIndex();
      for (int i = 0; i < 20; ++i, m_clock.Advance(5)) std::this_thread::yield();
      EXPECT_EQ(frame->GetFrameIndex(), index) << "waits while the host is told";
    }
    if (code != ZEBX_PLAY_FRAME) return;
    ++frames;
    const tag_PLAYPOS position = *reinterpret_cast<const tag_PLAYPOS*>(argument);
    EXPECT_GE(position.m_file_frame, last);
    last = position.m_file_frame;
    EXPECT_EQ(position.m_block, last / 30);
    EXPECT_EQ(position.m_frame, last % 30);
    EXPECT_EQ(position.m_time.GetTime(), kBegin + last / 25);
  };
  ASSERT_EQ(Open({30, 30, 0}), 1);
  RunUntil([&] { return closed > 0; });
  EXPECT_EQ(frames, 60);
  EXPECT_EQ(last, 59U);
  EXPECT_TRUE(m_told.starts_with("3 1:"));
  m_player->CloseVideo(0);
  m_player->CloseVideo(1);
  Pump();
  EXPECT_EQ(closed, 2) << "at the end, and when asked for";
  EXPECT_EQ(m_player->GetZebFile(), nullptr);

  // What was posted for an opening is not told of the next one.
  Open({5, 0});
  Pass();
  Pass();
  Open({5, 0});
  m_told.clear();
  Pump();
  EXPECT_EQ(m_told, "");
}

TEST_F(FilePlayerHost, MayEndAndReopenThePlayerInsideEveryNotification) {
  using Action = std::function<void()>;
  const std::vector<Action> actions = {[&] { m_player.reset(); }, [&] { m_player->CloseVideo(1); },
                                       [&] { m_player->OpenVideo("played", 0, 1, 0); },
                                       [&] { m_player->Pause(), m_player->PlayFrom(0, 1); }};
  for (const bool is_elsewhere : {false, true}) {
    for (const Action& action : actions) {
      for (const WPARAM code : {ZEBX_PLAY_OPENED, ZEBX_PLAY_FRAME, ZEBX_PLAY_CLOSED}) {
        std::atomic<bool> is_done = false;
        const auto told = [&](WPARAM told_code) {
          if (told_code == code && !is_done.exchange(true)) action();
        };
        LoopThread elsewhere([&](HWND, UINT message, WPARAM told_code, LPARAM) {
          if (message == ZEBX_MSG_VIDEOPLAY) told(told_code);
          return LRESULT{0};
        });
        m_on_told = [&](WPARAM told_code, LPARAM) { told(told_code); };
        MakePlayer(is_elsewhere ? elsewhere.Window() : nullptr);
        ASSERT_EQ(Open({5, 0}), 1);
        RunUntil([&] { return is_done.load(); });
        for (int i = 0; i < 50; ++i, Pump()) m_clock.Advance(5);
        // The last player may go where it likes.
        std::thread([&] { m_player.reset(); }).join();
      }
    }
  }
}

TEST_F(FilePlayerHost, EndsOrGoesOnWhereSomethingFails) {
  m_disk.Put("played", RawRecording({5, 0}));
  const auto play = [&] {
    if (m_player->OpenVideo("played", 0, 1, 0) == 0) return false;
    for (int i = 0; i < 10 && m_player->OnDecode(0, m_now += 1000) != 0; ++i) continue;
    return true;
  };
  const auto told = [&] {
    m_told.clear();
    if (!play()) return std::string("refused");
    Pump();
    return m_told;
  };
  const std::string all = "3 1:4 1:4 1:4 1:4 1:4 0";
  const struct {
    Function m_function;
    std::vector<DWORD> m_calls;
    std::string m_told;
  } doors[] = {{Function::kCreateStream, {1}, all},
               {Function::kCreateStream, {1, 2}, "refused"},
               {Function::kIsSurfaceLost, {1, 2, 3}, all},
               {Function::kRestoreSurface, {1}, all},
               {Function::kLock, {1, 2}, all},
               {Function::kDisplay, {2, 3}, all}};
  for (const auto& door : doors) {
    for (const DWORD call : door.m_calls) noxdisplay::FailCall(door.m_function, call);
    EXPECT_EQ(told(), door.m_told) << static_cast<int>(door.m_function);
    EXPECT_EQ(m_show.GetDrawStream(), nullptr);
  }
  Doors::decoders_to_refuse = 1;
  EXPECT_EQ(told(), "0");
  EXPECT_EQ(m_player->PlayFrom(0, 1), 0);

  // The disk, call by call; then memory, allocation by allocation.
  for (int call = 1, failures = 1; failures > 0; ++call) {
    FaultyFileSystem disk;
    disk.FailCall(FaultyFileSystem::kAnyCall, static_cast<std::uint64_t>(call));
    const std::string answer = told();
    EXPECT_TRUE(answer == "refused" || answer.ends_with("0")) << call << ": " << answer;
    m_player->CloseVideo(0);
    failures = static_cast<int>(disk.Failures());
  }
  SetErrorSink([](const std::exception&) {});
  for (int call = 0, left = -1; left < 0; ++call) {
    m_told.clear();
    counted_memory::calls_left = call;
    const bool is_open = play();
    left = counted_memory::calls_left.exchange(-1);
    Pump();
    EXPECT_TRUE(is_open ? m_told.ends_with(" 0") || m_told == "0" : m_told.empty()) << call;
  }
  SetErrorSink(nullptr);

  // A file that is gone, and one of an unknown frame size.
  m_disk.Put("played", RawRecording({5, 0}).replace(22, 1, "\x50"));
  EXPECT_EQ(told(), "refused");
  EXPECT_EQ(m_player->OpenVideo("nowhere", 0, 0, 0), 0);
  m_player->CloseDecodeWnd();
  EXPECT_EQ(m_player->OpenVideo("played", 0, 0, 0), 0) << "without settings";
}

TEST_F(FilePlayerHost, TakesSixteenPlayersAndLeaksNothingInAThousandOpenings) {
  m_disk.Put("played", RawRecording({5, 0}));
  std::vector<std::unique_ptr<CDecodeWnd>> players(17);
  int opened = 0;
  for (auto& player : players) {
    player = std::make_unique<CDecodeWnd>();
    player->OpenDecodeWnd(m_host, 0, &m_show);
    opened += player->OpenVideo("played", 0, 1, 0);
  }
  EXPECT_EQ(opened, 16);
  players.clear();
  m_player.reset();
  std::size_t bytes = 0;
  for (int i = 0; i < 1000; ++i) {
    MakePlayer();
    ASSERT_EQ(m_player->OpenVideo("played", 0, 1, 0), 1);
    for (int pass = i % 8; pass > 0; --pass) m_player->OnDecode(0, m_now += 1000);
    if (i % 3 == 0) m_player->CloseVideo(0);
    m_player.reset();
    if (i == 99) bytes = counted_memory::live_bytes;
  }
  EXPECT_LE(counted_memory::live_bytes, bytes + 4096);

  zebxCloseZebx();
  MakePlayer();
  EXPECT_EQ(m_player->OpenVideo("played", 0, 1, 0), 0) << "nobody drives it without a main window";
  zebxInitZebx(7, nullptr, 0, m_host, "");
  const CDecodeWnd next;
  EXPECT_EQ(m_player->OpenVideo("played", 0, 1, 0), 1);
}

TEST_F(FilePlayerHost, ObeysSeveralThreadsWhilePlayersPlayAndEnd) {
  m_disk.Put("played", RawRecording({50, 1, 50, 0}));
  std::atomic<int> frames = 0;
  m_on_told = [&](WPARAM code, LPARAM) { frames += code == ZEBX_PLAY_FRAME; };
  const auto is_enough = [&] { return frames > 300; };
  std::vector<std::thread> hosts;
  for (int host = 0; host < 3; ++host) {
    hosts.emplace_back([&, host] {
      for (int i = 0; !is_enough(); ++i) {
        CDecodeWnd& player = *m_player;
        CImage image;
        switch ((i * 7 + host * 5) % 97) {
          case 0:
            player.OpenVideo("played", 3, 1, 0);
            break;
          case 1:
            player.CloseVideo(i & 1);
            break;
          case 2:
            player.Pause();
            break;
          case 3:
            player.StepNext();
            break;
          case 4:
            player.StepPrev();
            break;
          case 5:
            player.PlayFrom(i % 4, i % 60);
            break;
          case 6:
            player.PlayFrom(CTime(kBegin + static_cast<DWORD>(i % 5)));
            break;
          case 7:
            player.ChangePlaySpeed(i % 4 - 1);
            break;
          case 8:
            player.EnableSound(i & 1);
            break;
          case 9:
            player.ResetPlay();
            break;
          case 10:
            player.GetPicture(&image);
            break;
          case 11:
            player.OpenDecodeWnd(m_host, 0, &m_show);
            break;
          case 12:
            player.CloseDecodeWnd();
            break;
          case 13:
            EXPECT_EQ(player.Lock() + player.Unlock(), 2);
            break;
          case 14:
            std::make_unique<CDecodeWnd>()->OpenVideo("played", 0, 1, 0);
            break;
          case 15:
            player.IsRT8Port();
            break;
          default:
            player.IsPause(), player.GetPlaySpeed(), std::this_thread::yield();
        }
      }
    });
  }
  RunUntil(is_enough);
  for (std::thread& host : hosts) host.join();
}

}  // namespace
