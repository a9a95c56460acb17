// A host of players of recordings that may be damaged: it does what comes to its mind, and looks at
// everything it is given.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <numeric>
#include <span>

#include "capture/show_param.h"
#include "capture/video_data.h"
#include "capture/zebx.h"
#include "fuzz/light_pictures.h"
#include "fuzz/sparse_disk.h"
#include "image/image.h"
#include "platform/framework/byte_order.h"
#include "platform/os/clock.h"
#include "platform/os/windows/windows.h"
#include "platform/zebdev/software/virtual_device_plan.h"
#include "playback/play_messages.h"
#include "record/zeb_file.h"
#include "tests/support/recording_fixture.h"

class PlayerHost {
 public:
  PlayerHost() {
    zebx::zebdev::SetDevicePlan({});
    m_main = os::CreateWindow(nullptr, "main", {0, 0, 48, 36},
                              [](HWND, UINT message, WPARAM code, LPARAM what) -> LRESULT {
                                if (message == ZEBX_MSG_VIDEOPLAY) OnVideoPlay(code, what);
                                return 0;
                              });
    Require(zebxInitZebx(0, nullptr, 0, m_main, "d:\\dev") == 1);
  }

  static void Require(bool condition) {
    if (!condition) std::abort();
  }
  static void TakeMessages() {
    os::Message message;
    while (os::PeekMessage(&message) != 0) os::DispatchMessage(message);
  }

  HWND Main() const { return m_main; }
  os::SteppedClock& Clock() { return m_clock; }

  // One of the first eight kinds of operations; false for another.
  template <typename Player>
  static bool Control(Player& player, unsigned what, BYTE how) {
    switch (what) {
      case 0:
        player.Pause();
        return true;
      case 1:
        player.PlayFrom((how & 7) - 1, (how >> 3) - 1);
        return true;
      case 2:
        player.PlayFrom(CTime(kBeginSeconds - 4 + how % 32));
        return true;
      case 3:
        player.StepNext();
        return true;
      case 4:
        player.StepPrev();
        return true;
      case 5:
        player.ChangePlaySpeed(static_cast<signed char>(how));
        return true;
      case 6:
        if (how == 0) player.ResetPlay();
        player.EnableSound(how & 1);
        return true;
      case 7: {
        CImage image;
        player.GetPicture(&image);
        return true;
      }
      default:
        return false;
    }
  }

  static constexpr DWORD kBeginSeconds = 1000000000;

 private:
  static void Look(std::span<const BYTE> bytes) {
    static_cast<void>(std::accumulate(bytes.begin(), bytes.end(), 0U));
  }
  static void OnVideoPlay(WPARAM code, LPARAM what) {
    if (code == ZEBX_PLAY_FRAME) {
      const auto& position = *std::bit_cast<const tag_PLAYPOS*>(what);
      Require(position.m_block >= 0 && position.m_frame >= 0);
    } else if (code == ZEBX_PLAY_OPENED) {
      const auto& frame = *std::bit_cast<const CVideoData*>(what);
      Require(frame.IsWritable() && frame.GetFile() != nullptr);
      Look({frame.GetVideoBuf(), frame.GetVideoLength()});
      if (frame.IsVoice() != 0) Look({frame.GetSpeechBuf(), frame.GetSpeechLength()});
    } else {
      Require(code == ZEBX_PLAY_CLOSED && what == 0);
    }
  }

  os::SteppedClock m_clock{kBeginSeconds, 1000};
  HWND m_main = nullptr;
};

// Takes an input apart, and opens and controls with it: the number of operations, a byte for
// opening, two bytes for each operation, and then the bytes of the recording "r". `open` takes the
// second byte and answers whether there was a good header, `obey` an operation.
template <typename Open, typename Obey>
void PlayInput(std::span<const BYTE> bytes, SparseDisk& disk, Open&& open, Obey&& obey) {
  zebx::ByteReader input(bytes);
  const std::size_t count = input.Get<BYTE>();
  const auto how_to_open = input.Get<BYTE>();
  zebx::ByteReader script(input.Take(std::min(2 * count, input.Remaining())));
  const SparseBytes file = SparseBytes::Of(input.Take(input.Remaining()), kSmallGapBytes);
  disk.PutSparse("r", file);
  if (!open(how_to_open)) {
    // Behind a good header, for an input whose own is damaged.
    static const std::string header = RawRecording({});
    disk.PutSparse("r", file.Behind(header));
    open(how_to_open);
  }
  while (script.Remaining() >= 2) {
    const auto what = script.Get<BYTE>();
    obey(what, script.Get<BYTE>());
  }
}
