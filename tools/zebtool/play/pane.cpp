#include "tools/zebtool/play/pane.h"

#include "platform/os/windows/windows.h"
#include "playback/play_messages.h"
#include "record/zeb_file.h"
#include "tools/zebtool/console/console.h"

namespace zebtool {
namespace {

constexpr int kMsPerSecond = 1000;

// Keeps a player from going on for as long as it lives.
template <class Player>
class PlayerLock {
 public:
  explicit PlayerLock(Player& player) : m_player(player) { m_player.Lock(); }
  ~PlayerLock() { m_player.Unlock(); }
  PlayerLock(const PlayerLock&) = delete;
  PlayerLock& operator=(const PlayerLock&) = delete;

 private:
  Player& m_player;
};

template <class Player>
bool Seek(Player& player, const Place& place) {
  if (const auto* position = std::get_if<FramePosition>(&place)) {
    // A player shows the frame before the one that it is told.
    return player.PlayFrom(position->block, position->index + 1) != 0;
  }
  const CZebFile* const file = player.GetZebFile();
  if (file == nullptr) return false;
  const CTime begin = file->GetBeginTime();
  const LONGLONG seconds = std::get<Moment>(place).MsFrom(begin) / kMsPerSecond;
  return player.PlayFrom(CTime(static_cast<DWORD>(begin.GetTime() + seconds))) != 0;
}

template <class Player>
void StepPlayer(Player& player, Step step) {
  if (step == Step::kNext) {
    player.StepNext();
  } else {
    player.StepPrev();
  }
}

}  // namespace

Pane::Pane(const Settings& settings, Listener listener)
    : m_path(settings.path),
      m_listener(std::move(listener)),
      m_player(settings.follows ? Player(std::in_place_type<CMultiDecodeWnd>)
                                : Player(std::in_place_type<CDecodeWnd>)) {
  m_window = os::CreateWindow(nullptr, m_path, settings.window,
                              [this](HWND, UINT message, WPARAM code, LPARAM word) -> LRESULT {
                                if (message == ZEBX_MSG_VIDEOPLAY) OnPlayer(code, word);
                                return 0;
                              });
  m_show.ShowCaption(settings.has_captions ? 1 : 0);
  m_show.SetMonitor(1);
  m_show.Create(m_window, 0);
  if (auto* const alone = std::get_if<CDecodeWnd>(&m_player)) {
    alone->OpenDecodeWnd(m_window, 0, &m_show);
  } else {
    std::get<CMultiDecodeWnd>(m_player).OpenDecodeWnd(m_window, &m_show, *settings.follows);
  }
}

Pane::~Pane() {
  Close();
  With([](auto& player) { player.CloseDecodeWnd(); });
  os::DestroyWindow(m_window);
}

void Pane::Open(int speed) {
  constexpr int kWithSound = 1;
  const bool is_open = With([&](auto& player) {
    if (player.OpenVideo(m_path, speed, kWithSound, 0) == 0) return false;
    player.Pause();
    return true;
  });
  if (!is_open) throw JobError("'" + m_path + "' cannot be played");
}

void Pane::Close() {
  With([](auto& player) { player.CloseVideo(0); });
  m_state.is_closed = true;
}

// Words carry addresses here.
// NOLINTBEGIN(performance-no-int-to-ptr)
void Pane::OnPlayer(WPARAM code, LPARAM word) {
  Shown shown;
  if (code == ZEBX_PLAY_FRAME) {
    const auto& position = *reinterpret_cast<const tag_PLAYPOS*>(word);
    shown = {{position.m_block, position.m_frame}, position.m_time};
    ++m_state.frames;
    if (!m_state.first) m_state.first = shown;
    m_state.last = shown;
  }
  m_state.is_opened = m_state.is_opened || code == ZEBX_PLAY_OPENED;
  m_state.is_closed = m_state.is_closed || code == ZEBX_PLAY_CLOSED;
  m_listener(code, shown);
}

// NOLINTEND(performance-no-int-to-ptr)

void Pane::TogglePause() {
  With([](auto& player) { player.Pause(); });
}

bool Pane::IsPaused() {
  return With([](auto& player) { return player.IsPause() != 0; });
}

void Pane::SetSpeed(int speed) {
  With([&](auto& player) { player.ChangePlaySpeed(speed); });
}

void Pane::SetPlayTime(CTime time) {
  if (auto* const player = std::get_if<CMultiDecodeWnd>(&m_player)) player->SetPlayTime(time);
}

bool Pane::Begin(const std::optional<Place>& place, bool only_one_picture) {
  return With([&](auto& player) {
    const PlayerLock lock(player);
    if (place && !Seek(player, *place)) return false;
    if (only_one_picture) {
      player.StepNext();
    } else if (player.IsPause() != 0) {
      player.Pause();
    }
    return true;
  });
}

template <class AnyPlayer>
bool Pane::HasReadOn(AnyPlayer& player) const {
  const CZebFile* const file = player.GetZebFile();
  if (file == nullptr || !m_state.last) return false;
  const FramePosition shown = m_state.last->position;
  FramePosition next;
  if (file->GetFilePos(next.block, next.index) == 0) return true;  // up to the end
  return next.block > shown.block ? next.index > 0 : next.index > shown.index + 1;
}

Pane::Stepped Pane::TakeStep(Step step) {
  return With([&](auto& player) {
    const PlayerLock lock(player);
    if (m_state.is_closed || player.IsPause() == 0 || !HasReadOn(player)) return Stepped::kNotYet;
    FramePosition next;
    const CZebFile* const file = player.GetZebFile();
    file->GetFilePos(next.block, next.index);
    StepPlayer(player, step);
    const bool is_at_beginning = next.block == 0 && next.index <= 2;
    return step == Step::kPrevious && is_at_beginning ? Stepped::kNothingEarlier : Stepped::kDone;
  });
}

void Pane::StepAtOnce(Step step) {
  With([&](auto& player) { StepPlayer(player, step); });
}

}  // namespace zebtool
