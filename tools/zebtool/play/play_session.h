// Recordings that play together: their panes, and the loop that lets them play, pause, step and
// end.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/zebtool/console/console.h"
#include "tools/zebtool/console/keys.h"
#include "tools/zebtool/console/progress.h"
#include "tools/zebtool/disks/library_session.h"
#include "tools/zebtool/play/pane.h"
#include "tools/zebtool/play/shown_pictures.h"
#include "tools/zebtool/play/sound_recorder.h"

namespace zebtool {

// One at a time, in the thread that made it. The first pane leads: the others are told its time,
// and its end is that of all.
class PlaySession {
 public:
  // Looks at the recordings and the outputs. Throws JobError, with nothing played.
  PlaySession(const PlayOptions& options, Console& console);
  ~PlaySession();
  PlaySession(const PlaySession&) = delete;
  PlaySession& operator=(const PlaySession&) = delete;

  // Plays until the end that was asked for, a key or a StopSignal. Throws JobError.
  void Run();
  // Closes the panes and finishes the files. Throws JobError.
  void Close();

  enum class End { kRecording, kLimit, kSteps, kStopped };
  End HowItEnded() const { return m_end.value_or(End::kStopped); }
  const std::vector<std::unique_ptr<Pane>>& Panes() const { return m_panes; }
  // What was on the screen after each step, the first picture before them.
  const std::vector<Shown>& Steps() const { return m_stepped; }
  // Pictures of other panes than the first one, by pane, that were at most a second away from it.
  const std::vector<ULONGLONG>& Together() const { return m_together; }
  const ShownPictures& Pictures() const { return m_pictures; }
  // Nothing before Close and without a sound file.
  const std::optional<SoundRecorder::Recorded>& Sound() const { return m_recorded; }

 private:
  struct Event {
    std::size_t pane;
    WPARAM code;
    Shown shown;
  };

  // What is known of the recordings before they play.
  CSize LookAtRecordings();
  void CheckPlace(const CZebFile& recording, const Place& place) const;
  void MakePanes(CSize picture);

  void Handle(const Event& event);
  void StartWhenAllAreOpen();
  void HandleLeadersFrame(const Shown& shown);
  bool HasReached(const Place& place, const Shown& shown) const;
  // What happens without anybody telling: keys, signals, the end of a pause or of the time.
  void LookAround();
  void Press(Key key);
  void TogglePause();
  void StepByHand(Step step);
  // Takes the next step that was asked for once the leader has done the one before.
  void StepOn();
  void Say(const Shown& shown);
  // Steps from picture to picture, at the recorded pace.
  bool PlaysByStepping() const { return m_options.steps || m_options.frames_directory; }

  const PlayOptions& m_options;
  Console& m_console;
  ShownPictures m_pictures;
  CTime m_begin;  // of the first recording
  LibrarySession m_library;
  WindowGrid m_grid;
  std::vector<HWND> m_windows;
  std::vector<std::unique_ptr<Pane>> m_panes;
  std::optional<SoundRecorder> m_sound;
  std::optional<Keys> m_keys;
  std::optional<Progress> m_progress;

  std::deque<Event> m_events;
  std::optional<End> m_end;
  std::optional<DWORD> m_start_tick;      // once all panes are open
  std::optional<DWORD> m_pause_end_tick;  // of a pause that ends by itself
  bool m_has_paused = false;              // where it was asked for
  bool m_waits_to_step = false;           // a picture was shown, and the next step is to come
  bool m_is_held = false;                 // no next step until a key
  int m_speed = 0;
  std::optional<CTime> m_said;  // the second of the last line
  std::vector<Shown> m_stepped;
  std::vector<ULONGLONG> m_together;
  std::optional<SoundRecorder::Recorded> m_recorded;
};

// "0:12  2024-05-01 08:30:00"
std::string TextOf(const Shown& shown);

}  // namespace zebtool
