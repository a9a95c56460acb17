// A player of a recording in memory with a codec that tells which frames it was given.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "capture/show_param.h"
#include "capture/zebx.h"
#include "platform/noxcodec/noxcodec.h"
#include "platform/noxdisplay/display_record.h"
#include "platform/noxdisplay/software/display_control.h"
#include "platform/os/clock.h"
#include "platform/os/windows/windows.h"
#include "playback/decode_wnd.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"

// What codec and display were asked, by whichever thread was at it.
struct Doors {
  static inline std::atomic<int> decoders = 0;
  static inline std::atomic<int> decoders_to_refuse = 0;
  // Of the last calls; changed by one player at a time.
  static inline std::string decoded;
  static inline std::string shown;
  static inline DWORD post_processing = 0;
  static inline bool is_upside_down = false;
  static inline tag_DISPLAYINFO record = {};
};

// The clock stands still unless a test moves it, so that the shared thread sleeps and the test does
// its work, pass by pass.
class FilePlayerTest : public testing::Test {
 protected:
  static constexpr DWORD kBegin = 1000000000;  // of RawRecording, which ends a minute later

  static constexpr DWORD kLong = 100000;  // enough for any frame to be due

  FilePlayerTest() {
    zebxInitZebx(7, nullptr, 0, m_host, "");
    m_show.Create(m_host, 0);
    MakePlayer();
  }
  ~FilePlayerTest() override {
    m_player.reset();
    EXPECT_EQ(Doors::decoders, 0);
    EXPECT_EQ(zebx::noxdisplay::CountStreams(), 0U);
    zebxCloseZebx();
    os::DestroyWindow(m_host);
    zebx::noxdisplay::ResetDisplay();
  }

  void MakePlayer(HWND told = nullptr) {
    m_player = std::make_unique<CDecodeWnd>();
    m_player->OpenDecodeWnd(told != nullptr ? told : m_host, 0, &m_show);
  }
  // Opens a recording with so many frames in its blocks; the last block is the terminating one.
  int Open(const std::vector<int>& blocks, int speed = 0) {
    m_disk.Put("played", RawRecording(blocks));
    return m_player->OpenVideo("played", speed, 1, 0);
  }
  // One pass, `ms` later, and the number of the frame that it shows; "-" for none, with "end" at
  // the end.
  std::string Pass(DWORD ms = kLong, int audio_flag = 0) {
    Doors::shown = "-";
    const bool goes_on = m_player->OnDecode(audio_flag, m_now += ms) != 0;
    return Doors::shown + (goes_on ? "" : " end");
  }
  std::string Passes(std::initializer_list<DWORD> all_ms) {
    std::string shown;
    for (const DWORD ms : all_ms) shown += Pass(ms);
    return shown;
  }
  void Pump() {
    for (os::Message message; os::PeekMessage(&message) != 0;) os::DispatchMessage(message);
  }
  // Lets time pass for the shared thread.
  void RunUntil(const std::function<bool()>& is_over) {
    for (; !is_over(); std::this_thread::yield()) {
      m_clock.Advance(5);
      Pump();
    }
  }

  MemoryFileSystem m_disk;
  os::SteppedClock m_clock{kBegin, 5000};
  std::string m_told;  // the codes, and the frame's number behind each FRAME
  std::function<void(WPARAM code, LPARAM argument)> m_on_told;
  HWND m_host =
      os::CreateWindow(nullptr, "", {0, 0, 32, 24}, [this](HWND, UINT message, WPARAM w, LPARAM l) {
        if (message != ZEBX_MSG_VIDEOPLAY) return LRESULT{0};
        m_told += (m_told.empty() ? "" : " ") + std::to_string(w);
        const auto* const position = reinterpret_cast<const tag_PLAYPOS*>(l);
        if (w == ZEBX_PLAY_FRAME) m_told += ":" + std::to_string(position->m_file_frame);
        if (m_on_told) m_on_told(w, l);
        return LRESULT{0};
      });
  CShowParam m_show;
  std::unique_ptr<CDecodeWnd> m_player;
  DWORD m_now = 0xFFFFFF00;  // about to wrap
};
