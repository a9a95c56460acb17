// Any bytes as a recording in the player of single files, under any control operations: nothing is
// read or written outside of the buffers. The clock stands still, so that the decode thread leaves
// the player alone: the operations drive it.
#include <memory>

#include "fuzz/player_host.h"
#include "playback/decode_wnd.h"

namespace {

class FileHost : public PlayerHost {
 public:
  FileHost() {
    m_show.Create(Main(), 0);
    Require(m_player->OpenDecodeWnd(Main(), 0, &m_show) == 1);
  }

  bool Open(BYTE how) {
    m_now = os::GetTickCount();
    m_show.ShowCaption(how & 1);
    return m_player->OpenVideo("r", static_cast<signed char>(how) / 16, how & 2, 0) == 1;
  }
  void Close() {
    m_player->CloseVideo(1);
    TakeMessages();
    LoseLightSurfaces(false);
  }
  void Obey(BYTE what, BYTE how) {
    const unsigned kind = what % 16;
    if (Control(*m_player, kind, how)) return;
    if (kind == 8) return LoseLightSurfaces((how & 1) != 0);
    if (kind == 9) return TakeMessages();
    constexpr unsigned kSoundRunsShort = 10;
    if (kind != kSoundRunsShort) m_now += how * 8U;
    m_player->OnDecode(kind == kSoundRunsShort ? 1 : 0, m_now);
  }

 private:
  CShowParam m_show;
  std::unique_ptr<CDecodeWnd> m_player = std::make_unique<CDecodeWnd>();
  DWORD m_now = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const BYTE* data, std::size_t size) {
  static FileHost& host = *new FileHost;
  SparseDisk disk;
  PlayInput(
      {data, size}, disk, [](BYTE how) { return host.Open(how); },
      [](BYTE what, BYTE how) { host.Obey(what, how); });
  host.Close();
  return 0;
}
