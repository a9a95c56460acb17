#include "tools/zebtool/play/play_session.h"

#include <algorithm>
#include <cstdlib>

#include "platform/os/clock.h"
#include "platform/os/windows/windows.h"
#include "playback/play_messages.h"
#include "record/zeb_file.h"
#include "tools/zebtool/console/stop_signals.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/media/picture_sizes.h"
#include "tools/zebtool/recordings/recording_file.h"
#include "tools/zebtool/screen/status_marks.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr UINT kLookTimer = 1;
constexpr DWORD kLookEveryMs = 10;
constexpr DWORD kPauseMs = 1000;
constexpr LONGLONG kMsPerSecond = 1000;

// Wakes the loop every now and then for as long as it lives.
class LookTimer {
 public:
  LookTimer()
      : m_window(os::CreateWindow(nullptr, "look around", CRect(),
                                  [](HWND, UINT, WPARAM, LPARAM) -> LRESULT { return 0; })) {
    os::SetTimer(m_window, kLookTimer, kLookEveryMs);
  }
  ~LookTimer() { os::DestroyWindow(m_window); }
  LookTimer(const LookTimer&) = delete;
  LookTimer& operator=(const LookTimer&) = delete;

 private:
  HWND m_window;
};

bool IsOver(DWORD tick, DWORD now) {
  return static_cast<LONG>(now - tick) >= 0;
}

}  // namespace

std::string TextOf(const Shown& shown) {
  return NameOf(shown.position) + "  " + FormatTime(shown.time);
}

PlaySession::PlaySession(const PlayOptions& options, Console& console)
    : m_options(options),
      m_console(console),
      m_pictures(options),
      m_speed(options.speed.value_or(0)) {
  const CSize picture = LookAtRecordings();
  if (options.sound) m_sound.emplace(*options.sound, Existing{options.replaces});
  RegisterStatusMarks();
  MakePanes(picture);
}

PlaySession::~PlaySession() = default;

CSize PlaySession::LookAtRecordings() {
  CSize picture;
  for (const std::string& path : m_options.files) {
    CZebFile recording;
    OpenRecording(recording, path);
    const PictureSize size = ShowSizeOf(recording);
    if (size.width == 0) {
      throw JobError("the frame size " + std::to_string(recording.GetFrameSize()) + " of '" + path +
                     "' does not exist; 'zebtool salvage' repairs its header");
    }
    if (&path != &m_options.files.front()) continue;
    picture = {static_cast<LONG>(size.width), static_cast<LONG>(size.height)};
    m_begin = recording.GetBeginTime();
    if (m_options.from) CheckPlace(recording, *m_options.from);
  }
  return picture;
}

void PlaySession::CheckPlace(const CZebFile& recording, const Place& place) const {
  if (const auto* position = std::get_if<FramePosition>(&place)) {
    RequireFrame(recording, *position);
  } else {
    std::get<Moment>(place).MsFrom(m_begin);  // a day without that hour
  }
}

void PlaySession::MakePanes(CSize picture) {
  const std::size_t count = m_options.files.size();
  m_grid = m_pictures.PlacePanes(count, picture);
  for (std::size_t at = 0; at < count; ++at) {
    Pane::Settings settings;
    settings.path = m_options.files[at];
    if (count > 1) settings.follows = static_cast<int>(at);
    settings.window = m_grid.windows.at(at);
    settings.has_captions = !m_options.has_no_captions;
    m_panes.push_back(std::make_unique<Pane>(settings, [this, at](WPARAM code, const Shown& shown) {
      m_events.push_back({at, code, shown});
    }));
    m_windows.push_back(m_panes.back()->Window());
  }
  m_together.resize(count);
}

void PlaySession::Run() {
  const LookTimer timer;
  m_keys.emplace(m_console.keys);
  if (m_keys->AreThere()) {
    m_console.err << "space pauses, left and right step, up and down change the speed, q ends\n"
                  << std::flush;
  }
  m_progress.emplace(m_console, "play");
  for (const auto& pane : m_panes) pane->Open(m_speed);
  os::Message message;
  while (!m_end && os::GetMessage(&message) != 0) {
    os::DispatchMessage(message);
    while (!m_end && !m_events.empty()) {
      const Event event = m_events.front();
      m_events.pop_front();
      Handle(event);
    }
    if (!m_end) LookAround();
  }
  m_progress.reset();
  m_keys.reset();
}

void PlaySession::Close() {
  for (const auto& pane : m_panes) pane->Close();
  m_pictures.Finish();
  if (m_sound) m_recorded = m_sound->Finish();
}

void PlaySession::Handle(const Event& event) {
  const bool leads = event.pane == 0;
  Pane& pane = *m_panes[event.pane];
  if (event.code == ZEBX_PLAY_CLOSED) {
    if (!pane.GetState().is_opened) {
      throw JobError("'" + pane.Path() + "' cannot be played: its first frame cannot be read");
    }
    if (leads) m_end = End::kRecording;
  }
  if (event.code != ZEBX_PLAY_FRAME) {
    if (!m_end) StartWhenAllAreOpen();
  } else if (leads) {
    HandleLeadersFrame(event.shown);
  } else {
    const auto& last = m_panes.front()->GetState().last;
    const LONGLONG apart = last ? LONGLONG{last->time.GetTime()} - event.shown.time.GetTime() : 0;
    if (std::abs(apart) <= 1) ++m_together[event.pane];
  }
}

void PlaySession::StartWhenAllAreOpen() {
  const auto is_waited_for = [](const auto& pane) {
    return !pane->GetState().is_opened && !pane->GetState().is_closed;
  };
  if (m_start_tick || std::any_of(m_panes.begin(), m_panes.end(), is_waited_for)) return;
  m_start_tick = os::GetTickCount();
  for (const auto& pane : m_panes) {
    const bool leads = pane == m_panes.front();
    if (!pane->Begin(leads ? m_options.from : std::nullopt, PlaysByStepping())) {
      throw JobError("playing cannot begin there: the recording goes from " + FormatTime(m_begin) +
                     " on, and its end, or the last block of one that is still being written, is "
                     "not searched");
    }
  }
}

void PlaySession::HandleLeadersFrame(const Shown& shown) {
  for (const auto& pane : m_panes) pane->SetPlayTime(shown.time);
  m_pictures.Take(shown, m_grid.screen, m_windows);
  Say(shown);
  if (m_options.steps) m_stepped.push_back(shown);
  const auto* const limit = m_options.until ? std::get_if<Place>(&*m_options.until) : nullptr;
  if (limit != nullptr && HasReached(*limit, shown)) {
    m_end = End::kLimit;
  } else if (m_options.steps && m_stepped.size() > m_options.steps->size()) {
    m_end = End::kSteps;
  } else if (m_options.pause_at && !m_has_paused && HasReached(*m_options.pause_at, shown)) {
    m_has_paused = true;
    TogglePause();
    if (!m_keys->AreThere()) m_pause_end_tick = os::GetTickCount() + kPauseMs;
  }
  m_waits_to_step = PlaysByStepping();
}

bool PlaySession::HasReached(const Place& place, const Shown& shown) const {
  if (const auto* position = std::get_if<FramePosition>(&place))
    return !(shown.position < *position);
  const LONGLONG at_ms = std::get<Moment>(place).MsFrom(m_begin);
  return (LONGLONG{shown.time.GetTime()} - m_begin.GetTime()) * kMsPerSecond >= at_ms;
}

void PlaySession::LookAround() {
  const DWORD now = os::GetTickCount();
  if (StopSignals::HasCome()) m_end = End::kStopped;
  for (const Key key : m_keys->Read()) Press(key);
  if (!m_start_tick) return;
  if (m_console.show_progress && m_panes.front()->GetState().last) {
    Say(*m_panes.front()->GetState().last);  // a pause, or another speed
  }
  if (m_pause_end_tick && IsOver(*m_pause_end_tick, now)) TogglePause();
  const auto* const time =
      m_options.until ? std::get_if<SecondsOfPlaying>(&*m_options.until) : nullptr;
  if (time != nullptr && now - *m_start_tick >= time->seconds * kMsPerSecond) m_end = End::kLimit;
  if (!m_end) StepOn();
}

void PlaySession::Press(Key key) {
  if (key == Key::kQuit) {
    m_end = End::kStopped;
    return;
  }
  if (!m_start_tick || m_options.steps) return;
  switch (key) {
    case Key::kSpace:
      TogglePause();
      break;
    case Key::kLeft:
      StepByHand(Step::kPrevious);
      break;
    case Key::kRight:
      StepByHand(Step::kNext);
      break;
    case Key::kUp:
    case Key::kDown:
      m_speed = std::clamp(m_speed + (key == Key::kUp ? 1 : -1), -kFastest, kFastest);
      for (const auto& pane : m_panes) pane->SetSpeed(m_speed);
      break;
    case Key::kQuit:
      break;
  }
}

void PlaySession::TogglePause() {
  m_pause_end_tick.reset();
  if (PlaysByStepping()) {
    m_is_held = !m_is_held;
    return;
  }
  const bool is_paused = m_panes.front()->IsPaused();
  for (const auto& pane : m_panes) {
    if (pane->IsPaused() == is_paused) pane->TogglePause();
  }
}

void PlaySession::StepByHand(Step step) {
  m_is_held = true;
  for (const auto& pane : m_panes) {
    if (pane->IsPaused()) {
      pane->TakeStep(step);
    } else {
      pane->StepAtOnce(step);
    }
  }
}

void PlaySession::StepOn() {
  if (!m_waits_to_step || m_is_held) return;
  const Step step = m_options.steps ? m_options.steps->at(m_stepped.size() - 1) : Step::kNext;
  const Pane::Stepped taken = m_panes.front()->TakeStep(step);
  if (taken == Pane::Stepped::kNotYet) return;
  m_waits_to_step = false;
  for (std::size_t at = 1; at < m_panes.size(); ++at) m_panes[at]->TakeStep(step);
  // No picture comes: the one that is shown counts once more.
  if (taken == Pane::Stepped::kNothingEarlier) HandleLeadersFrame(m_stepped.back());
}

void PlaySession::Say(const Shown& shown) {
  if (m_options.json) return;
  std::string line = TextOf(shown);
  for (std::size_t at = 1; at < m_panes.size(); ++at) {
    const auto& last = m_panes[at]->GetState().last;
    line += "  |  " + (last ? NameOf(last->position) + last->time.Format("  %H:%M:%S") : "-");
  }
  if (m_console.show_progress) {
    if (m_speed != 0) line += "  speed " + std::to_string(m_speed);
    if (m_panes.front()->IsPaused()) line += "  paused";
    m_progress->ShowText(line);
  } else if (m_options.steps || m_said != shown.time) {
    m_said = shown.time;
    m_console.out << line << '\n' << std::flush;
  }
}

}  // namespace zebtool
