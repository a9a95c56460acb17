// Recordings that are damaged, or change while they play, in both players of recordings: what is
// shown, frame by frame, with the codec and the display that there are.
#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <functional>
#include <optional>
#include <thread>

#include "capture/show_param.h"
#include "capture/zebx.h"
#include "platform/noxcodec/software/video_encoder.h"
#include "platform/os/clock.h"
#include "platform/os/windows/windows.h"
#include "playback/decode_wnd.h"
#include "playback/multi_decode_wnd.h"
#include "tests/support/recording_fixture.h"
#include "tests/support/temp_dir.h"

using namespace zebx;

namespace {

constexpr int kShades = 5;

// A recording of I-frames in blocks of nine and then ten. Their pictures are grey, and the shade
// tells which is which.
struct GreyRecording : CZebFile {
  explicit GreyRecording(const std::string& path) {
    CZebFileInfo info = MakeInfo(path);
    info.SetFrameSize(tag_FRAMESIZE{135});  // 352 x 288
    Open(&info, kZebFileWrite);
  }
  void Append(int frames, int large = -1, std::size_t video_bytes = 0,
              std::size_t speech_bytes = 0) {
    CZebFrameData frame(704, 576, 100000);
    noxcodec::VideoEncoder encoder({.width = m_side, .height = m_side, .gop_length = 1});
    for (; frames > 0; --frames, ++m_frames) {
      noxcodec::Picture picture(m_side, m_side);
      for (int y = 0; y < m_side; ++y) {
        std::fill_n(picture.Plane(noxcodec::kLuma).Row(y), m_side,
                    static_cast<BYTE>(40 * (1 + m_frames % kShades)));
      }
      const auto packet = encoder.Encode(picture.View());
      std::string video(packet.data.begin(), packet.data.end());
      if (m_frames == large && video_bytes != 0) video.resize(video_bytes);
      FillFrame(frame, kIFrame, 1000 + 40 * static_cast<DWORD>(m_frames), video,
                std::string(m_frames == large ? speech_bytes : 0, 's'));
      frame.SetEncoderType(kEncoderTypeRT8Port);
      WriteOneFrame(&frame);
    }
  }
  int m_side = 32;
  int m_frames = 0;
};

template <typename Player>
class PlaybackFaults : public testing::Test {
 protected:
  PlaybackFaults() {
    zebxInitZebx(7, nullptr, 0, m_host, "");
    m_show.Create(m_host, 0);
  }
  ~PlaybackFaults() override {
    zebxCloseZebx();
    os::DestroyWindow(m_host);
  }

  void Until(const std::function<bool()>& holds) {
    constexpr int kEnough = 1'000'000;
    for (int i = 0; i < kEnough && !holds(); ++i, std::this_thread::yield()) {
      m_clock.Advance(5);
      for (os::Message message; os::PeekMessage(&message) != 0;) os::DispatchMessage(message);
    }
    ASSERT_TRUE(holds());
  }
  // Which frame's picture the window shows.
  int Shade() {
    int shade = 0;
    os::WithWindowPicture(m_host, [&](const os::WindowPicture& picture) {
      shade = picture.m_pixels[picture.m_pixels.size() / 2 & ~std::size_t{3}];
    });
    return (shade - 5) / 46;
  }
  // Steps through the recording and returns, for each frame shown, its number and that of the
  // picture seen. `meanwhile` gets each number.
  std::string Play(const std::function<void(DWORD number)>& meanwhile = [](DWORD) {}) {
    Player player;
    if constexpr (std::is_same_v<Player, CDecodeWnd>) {
      // Nothing is shown while the clock stands still.
      player.OpenDecodeWnd(m_host, 0, &m_show);
      EXPECT_EQ(player.OpenVideo(Path(), 0, 0, 0), 1);
      player.StepNext();
    } else {
      // The pane's thread begins when the lock is free.
      player.OpenDecodeWnd(m_host, &m_show, 0);
      player.Lock();
      EXPECT_EQ(player.OpenVideo(Path(), 0, 0, 0), 1);
      player.StepNext();
      player.Unlock();
    }
    std::string all;
    for (m_is_over = false; !m_is_over; player.StepNext()) {
      Until([&] { return m_shown || m_is_over; });
      if (const auto shown = std::exchange(m_shown, {})) {
        all += std::to_string(*shown) + ":" + std::to_string(Shade()) + " ";
        meanwhile(*shown);
      }
    }
    return all;
  }
  std::string Path() const { return m_directory.File("r"); }
  void CutOff(std::uintmax_t bytes) const {
    std::filesystem::resize_file(Path(), std::filesystem::file_size(Path()) - bytes);
  }

 private:
  TempDir m_directory;
  os::SteppedClock m_clock{1000000000, 1000};
  bool m_is_over = false;
  std::optional<DWORD> m_shown;
  HWND m_host = os::CreateWindow(
      nullptr, "", {0, 0, 32, 24}, [this](HWND, UINT message, WPARAM code, LPARAM position) {
        if (message != ZEBX_MSG_VIDEOPLAY) return LRESULT{0};
        if (code == ZEBX_PLAY_CLOSED) m_is_over = true;
        if (code == ZEBX_PLAY_FRAME) {
          m_shown = std::bit_cast<const tag_PLAYPOS*>(position)->m_file_frame;
        }
        return LRESULT{0};
      });
  CShowParam m_show;
};

using Players = testing::Types<CDecodeWnd, CMultiDecodeWnd>;
TYPED_TEST_SUITE(PlaybackFaults, Players);

TYPED_TEST(PlaybackFaults, KeepThePictureBeforeForFramesThatAreNotWhole) {
  const struct {
    const char* m_what;
    std::function<void(GreyRecording&)> m_append;
    std::uintmax_t m_cut_bytes;
    std::string m_shown;
  } cases[] = {
      {"whole", [](auto& file) { file.Append(4); }, 0, "0:0 1:1 2:2 3:3 "},
      {"a stream larger than its header says",
       [](auto& file) { file.m_side = 704, file.Append(3); }, 1, "0:0 1:1 2:2 "},
      {"pictures larger than the buffer", [](auto& file) { file.Append(4, 1, 352 * 288 * 2 + 1); },
       0, "0:0 1:0 2:2 3:3 "},
      {"speech larger than the buffer", [](auto& file) { file.Append(4, 1, 0, 65537); }, 0,
       "0:0 1:0 2:2 3:3 "},
      {"cut in the middle of the third frame", [](auto& file) { file.Append(4); }, 16 + 29 + 10,
       "0:0 1:1 2:1 3:1 "},
  };
  for (const auto& [what, append, cut_bytes, shown] : cases) {
    GreyRecording file(this->Path());
    append(file);
    file.Close();
    this->CutOff(cut_bytes);
    EXPECT_EQ(this->Play(), shown) << what;
  }
}

TYPED_TEST(PlaybackFaults, ComeToAnEndInFilesThatChangeMeanwhile) {
  GreyRecording file(this->Path());
  file.Append(25);
  std::string until_growing;
  for (int i = 0; i < 19; ++i) {
    until_growing += std::to_string(i) + ":" + std::to_string(i % kShades) + " ";
  }
  EXPECT_EQ(this->Play([&](DWORD number) {
    if (number == 3) file.Append(20);
  }),
            until_growing);
  file.Close();
  EXPECT_TRUE(this->Play([&](DWORD number) {
                    if (number == 3) std::filesystem::remove(this->Path());
                  })
                  .ends_with("43:3 44:4 "));
  GreyRecording cut(this->Path());
  cut.Append(6);
  cut.Close();
  EXPECT_EQ(this->Play([&](DWORD number) {
    if (number == 1) std::filesystem::resize_file(this->Path(), 0);
  }),
            "0:0 1:1 2:2 3:2 4:2 5:2 ");
}

}  // namespace
