// One recording that plays in a window of its own.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "capture/show_param.h"
#include "platform/framework/geometry.h"
#include "playback/decode_wnd.h"
#include "playback/multi_decode_wnd.h"
#include "tools/zebtool/play/play_settings.h"

namespace zebtool {

// A picture that was on the screen.
struct Shown {
  FramePosition position;
  CTime time;
};

// Made, used and ended by one thread, which takes the messages of its windows. A pane that plays
// alone has the player with sound, panes that play together have the player that keeps them so.
class Pane {
 public:
  // What the player tells: ZEBX_PLAY_OPENED, ZEBX_PLAY_FRAME with a position, ZEBX_PLAY_CLOSED.
  using Listener = std::function<void(WPARAM code, const Shown& shown)>;
  struct Settings {
    std::string path;
    std::optional<int> follows;  // its number among panes that play together, the first one's 0
    CRect window;
    bool has_captions = true;
  };

  Pane(const Settings& settings, Listener listener);
  // Closes.
  ~Pane();
  Pane(const Pane&) = delete;
  Pane& operator=(const Pane&) = delete;

  // Opens the recording and pauses before its first picture. Throws JobError.
  void Open(int speed);
  void Close();

  // Pauses, or goes on.
  void TogglePause();
  bool IsPaused();
  void SetSpeed(int speed);
  // What panes that follow another one follow.
  void SetPlayTime(CTime time);

  // Begins to play, at a place or where it stands: on and on, or one picture. False when the
  // recording has no such place.
  bool Begin(const std::optional<Place>& place, bool only_one_picture);
  enum class Stepped { kDone, kNotYet, kNothingEarlier };
  // One picture on or back. kNotYet while the player is still busy with the one before.
  Stepped TakeStep(Step step);
  // The same for one that plays: it pauses with the picture.
  void StepAtOnce(Step step);

  HWND Window() const { return m_window; }
  const std::string& Path() const { return m_path; }

  // What has been told of it.
  struct State {
    bool is_opened = false;
    bool is_closed = false;
    ULONGLONG frames = 0;
    std::optional<Shown> first;
    std::optional<Shown> last;
  };
  const State& GetState() const { return m_state; }

 private:
  using Player = std::variant<CDecodeWnd, CMultiDecodeWnd>;

  void OnPlayer(WPARAM code, LPARAM word);
  // Whether the player has read on behind the last picture, which steps go by.
  template <class AnyPlayer>
  bool HasReadOn(AnyPlayer& player) const;
  template <class Use>
  auto With(const Use& use) {
    if (auto* const alone = std::get_if<CDecodeWnd>(&m_player)) return use(*alone);
    return use(*std::get_if<CMultiDecodeWnd>(&m_player));
  }

  std::string m_path;
  Listener m_listener;
  State m_state;
  CShowParam m_show;
  HWND m_window = nullptr;
  Player m_player;
};

}  // namespace zebtool
