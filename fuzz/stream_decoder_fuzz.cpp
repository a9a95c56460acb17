// Any live frames in the stream decoder, with opening, sound, pictures and lost surfaces between
// them: whatever a frame holds, nothing is read or written outside of the buffers. The input is a
// row of operations of two bytes each; one that shows or plays a frame reads it from what follows.
#include <memory>

#include "capture/video_data.h"
#include "fuzz/player_host.h"
#include "playback/zeb_decode_wnd.h"

namespace {

class StreamHost : public PlayerHost {
 public:
  void Open(BYTE frame_size) {
    m_show.ShowCaption(frame_size & 1);
    m_decoder.OpenDecodeWnd(
        Main(), [](DWORD, void*, DWORD) { return 0; }, nullptr, &m_show, tag_FRAMESIZE{frame_size});
  }
  void Close() {
    m_decoder.CloseDecodeWnd();
    m_decoder.EnableAudio(1);
    TakeMessages();
    LoseLightSurfaces(false);
  }
  void Obey(BYTE what, BYTE how, CVideoData& frame) {
    switch (what % 8) {
      case 0:
        return Open(how);
      case 1:
        return LoseLightSurfaces((how & 1) != 0);
      case 2:
        return m_decoder.EnableAudio(how & 1);
      case 3: {
        CImage image;
        m_decoder.GetPicture(&image);
        return;
      }
      case 4:
        // A buffer of sound takes 128 ms.
        Clock().Advance(how);
        return TakeMessages();
      case 5:
        m_decoder.DecodeAudio(&frame, nullptr, 0);
        return;
      default:
        m_decoder.DecodeOneFrame(&frame);
        return;
    }
  }
  static bool TakesFrame(BYTE what) { return what % 8 >= 5; }

 private:
  CShowParam m_show;
  CZebDecodeWnd m_decoder;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  constexpr BYTE kFrameSize = 135;
  static StreamHost& host = *new StreamHost;
  std::vector<BYTE> input(data, data + size);
  BYTE* cursor = input.data();
  BYTE* const end = cursor + input.size();
  CVideoData frame({1, 2}, 352, 288);
  host.Open(kFrameSize);
  while (end - cursor >= 2) {
    const BYTE what = *cursor++;
    const BYTE how = *cursor++;
    // What is no whole frame plays the one before again.
    if (StreamHost::TakesFrame(what)) frame.Read(cursor, end);
    host.Obey(what, how, frame);
  }
  host.Close();
  return 0;
}
