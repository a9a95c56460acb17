// Players that play the street in real time: recordings of it, screens that keep when each frame
// was shown, and the host's thread.
#pragma once

#include <algorithm>
#include <bit>
#include <filesystem>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "bench/compare.h"
#include "bench/lateness.h"
#include "capture/show_param.h"
#include "capture/zebx.h"
#include "platform/noxcodec/software/video_encoder.h"
#include "platform/os/clock.h"
#include "platform/zebdev/software/street_scene.h"
#include "platform/zebdev/software/virtual_device_plan.h"
#include "playback/decode_wnd.h"
#include "playback/multi_decode_wnd.h"
#include "playback/play_messages.h"
#include "record/zeb_file.h"
#include "record/zeb_frame_data.h"

inline constexpr DWORD kFrameSize = 135;  // coded as 352 x 288
inline constexpr int kWidth = 352;
inline constexpr int kHeight = 288;
inline constexpr DWORD kFrameMs = 40;
inline constexpr int kGroup = 25;
inline constexpr BYTE kEncoder = 1;
inline constexpr DWORD kBegin = 1700000000;

struct Packet {
  WORD m_type = 0;
  std::vector<BYTE> m_bytes;
};

// A second of a street, an I-frame first: it can be played again and again.
inline const std::vector<Packet>& Street() {
  static const std::vector<Packet> packets = [] {
    const zebx::zebdev::StreetScene scene(kWidth, kHeight);
    zebx::noxcodec::VideoEncoder encoder({.width = kWidth, .height = kHeight});
    zebx::noxcodec::Picture picture;
    std::vector<Packet> made;
    for (DWORD frame = 0; frame < kGroup; ++frame) {
      scene.Render(frame, picture);
      const auto packet = encoder.Encode(picture.View());
      made.push_back({packet.frame_type, {packet.data.begin(), packet.data.end()}});
    }
    return made;
  }();
  return packets;
}

// A recording of the street, removed at the end.
class Recording {
 public:
  using Step = std::function<void(CZebFile& file, CZebFrameData& frame)>;

  // `before` may change each frame before it is written.
  Recording(const std::string& name, int frames, const Step& before) : m_path(BenchPath(name)) {
    os::SteppedClock clock(kBegin, 1000);
    CZebFileInfo info;
    info.SetFileName(m_path);
    info.SetFrameSize(tag_FRAMESIZE{kFrameSize});
    info.SetCameraName("Street");
    CZebFile file;
    Require(file.Open(&info, kZebFileWrite) == 1, "cannot create the recording");
    CZebFrameData frame(kWidth, kHeight, 0);
    for (int i = 0; i < frames; ++i) {
      const Packet& packet = Street()[static_cast<std::size_t>(i % kGroup)];
      frame.Reset();
      frame.SetFrameType(packet.m_type);
      frame.SetEncoderType(kEncoder);
      frame.SetTimeStamp(os::GetTickCount());
      std::ranges::copy(packet.m_bytes, frame.GetVideoBuf());
      frame.SetVideoLength(static_cast<DWORD>(packet.m_bytes.size()));
      before(file, frame);
      Require(file.WriteOneFrame(&frame) == zebx::kFrameWritten, "cannot append a frame");
      clock.Advance(kFrameMs);
    }
    file.Close();
  }
  Recording(const std::string& name, int frames)
      : Recording(name, frames, [](CZebFile&, CZebFrameData&) {}) {}
  ~Recording() { std::filesystem::remove(m_path); }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  const std::string& Path() const { return m_path; }

 private:
  std::string m_path;
};

struct Shown {
  BenchClock::time_point m_when;
  tag_PLAYPOS m_position;
};

// A player with its windows, and when each of its frames was shown.
template <typename Player>
struct Screen {
  explicit Screen(HWND main, bool is_drawn = true)
      : m_host(os::CreateWindow(main, "host", {},
                                [this](HWND, UINT message, WPARAM code, LPARAM position) {
                                  if (message == ZEBX_MSG_VIDEOPLAY && code == ZEBX_PLAY_FRAME) {
                                    OnFrame(*std::bit_cast<const tag_PLAYPOS*>(position));
                                  }
                                  return LRESULT{0};
                                })),
        m_screen(os::CreateWindow(main, "screen", {0, 0, kWidth, kHeight},
                                  [](HWND, UINT, WPARAM, LPARAM) { return LRESULT{0}; })) {
    m_show.ShowCaption(1);
    if (is_drawn) m_show.Create(m_screen, 0);
  }
  ~Screen() {
    m_player.CloseVideo(0);
    m_player.CloseDecodeWnd();
    os::DestroyWindow(m_screen);
    os::DestroyWindow(m_host);
  }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  void Open(const std::string& path, int pane = 0) {
    int is_open = 0;
    if constexpr (std::is_same_v<Player, CMultiDecodeWnd>) {
      is_open = m_player.OpenDecodeWnd(m_host, &m_show, pane);
    } else {
      is_open = m_player.OpenDecodeWnd(m_host, pane, &m_show);
    }
    Require(is_open == 1 && m_player.OpenVideo(path, 0, 0, 0) == 1, "cannot play");
  }
  void OnFrame(const tag_PLAYPOS& position) {
    m_shown.push_back({BenchClock::now(), position});
    if (m_on_frame) m_on_frame(m_shown.back());
  }
  // Against the frame before: a player counts from when it showed that one.
  std::vector<double> LateMs() const {
    std::vector<double> late_ms;
    for (std::size_t i = 1; i < m_shown.size(); ++i) {
      late_ms.push_back(MillisecondsBetween(m_shown[i - 1].m_when, m_shown[i].m_when) - kFrameMs);
    }
    return late_ms;
  }

  HWND m_host;
  HWND m_screen;
  CShowParam m_show;
  std::vector<Shown> m_shown;
  std::function<void(const Shown&)> m_on_frame;
  Player m_player;
};

using FileScreen = Screen<CDecodeWnd>;
using PaneScreen = Screen<CMultiDecodeWnd>;

// The host's thread: its main window, and taking messages.
class Host {
 public:
  Host() {
    zebx::zebdev::SetDevicePlan({});
    Require(zebxInitZebx(0, nullptr, 0, m_main, "d:\\dev") == 1, "cannot initialise");
    os::SetTimer(m_main, 1, kWakeMs);
  }
  ~Host() {
    zebxCloseZebx();
    os::DestroyWindow(m_main);
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  HWND Main() const { return m_main; }
  template <typename Condition>
  static void RunUntil(Condition&& condition) {
    os::Message message;
    while (!condition() && os::GetMessage(&message) != 0) os::DispatchMessage(message);
  }
  static void RunFor(double milliseconds) {
    const auto begin = BenchClock::now();
    RunUntil([&] { return MillisecondsBetween(begin, BenchClock::now()) >= milliseconds; });
  }

 private:
  static constexpr UINT kWakeMs = 50;  // so that a condition is looked at when nothing comes
  HWND m_main = os::CreateWindow(nullptr, "main", {},
                                 [](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return 0; });
};
