// Any bytes as a recording in a master pane and in a follower, under any control operations:
// nothing is read or written outside of the buffers, and closing always ends the panes' threads.
// Ticks come as the operations say; how far the threads get between is up to the machine.
#include <array>
#include <memory>
#include <thread>

#include "fuzz/player_host.h"
#include "playback/multi_decode_wnd.h"

namespace {

class PanesHost : public PlayerHost {
 public:
  PanesHost() {
    for (int pane = 0; pane < kPanes; ++pane) {
      Require(Player(pane).OpenDecodeWnd(Main(), &m_show, pane) == 1);
    }
  }

  bool Open(BYTE how) {
    m_show.ShowCaption(how & 1);
    int opened = 0;
    for (int pane = 0; pane < kPanes; ++pane) {
      opened += Player(pane).OpenVideo("r", static_cast<signed char>(how) / 16, 0, 0);
    }
    return opened == kPanes;
  }
  void Close() {
    for (int pane = 0; pane < kPanes; ++pane) Player(pane).CloseVideo(1);
    TakeMessages();
    LoseLightSurfaces(false);
  }
  void Obey(BYTE what, BYTE how) {
    const unsigned kind = what % 16;
    if (Control(Player(what / 128), kind, how)) return;
    if (kind == 8) return LoseLightSurfaces((how & 1) != 0);
    if (kind == 9) return Player(1).SetPlayTime(CTime(kBeginSeconds - 4 + how % 32));
    Clock().Advance(how * 8U);
    TakeMessages();
    std::this_thread::yield();
  }

 private:
  static constexpr int kPanes = 2;

  CMultiDecodeWnd& Player(int pane) { return *m_players.at(static_cast<std::size_t>(pane)); }

  CShowParam m_show;
  std::array<std::unique_ptr<CMultiDecodeWnd>, kPanes> m_players{
      std::make_unique<CMultiDecodeWnd>(), std::make_unique<CMultiDecodeWnd>()};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  static PanesHost& host = *new PanesHost;
  SparseDisk disk;
  PlayInput(
      {data, size}, disk, [](BYTE how) { return host.Open(how); },
      [](BYTE what, BYTE how) { host.Obey(what, how); });
  host.Close();
  return 0;
}
