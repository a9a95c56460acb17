// zebtool play: recordings in windows, with sound, up to four together.
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/stop_signals.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/play/play_session.h"

namespace zebtool {
namespace {

constexpr ULONGLONG kSamplesPerSecond = kSpeechRate;

const char* WordOf(PlaySession::End end) {
  switch (end) {
    case PlaySession::End::kRecording:
      return "end";
    case PlaySession::End::kLimit:
      return "until";
    case PlaySession::End::kSteps:
      return "steps";
    case PlaySession::End::kStopped:
      break;
  }
  return "stopped";
}

Json JsonOf(const Shown& shown) {
  return {{"frame", NameOf(shown.position)},
          {"time", FormatTime(shown.time)},
          {"time_seconds", shown.time.GetTime()}};
}

Json JsonOf(const PlaySession& session, const PlayOptions& options) {
  Json report;
  report["files"] = Json::array();
  for (std::size_t at = 0; at < session.Panes().size(); ++at) {
    const Pane& pane = *session.Panes()[at];
    const Pane::State& state = pane.GetState();
    Json& file = report["files"].emplace_back();
    file["path"] = pane.Path();
    file["frames_shown"] = state.frames;
    if (at > 0) file["frames_together"] = session.Together()[at];
    if (!state.first) continue;
    file["first"] = JsonOf(*state.first);
    file["last"] = JsonOf(*state.last);
  }
  if (options.steps) {
    report["steps"] = Json::array();
    for (const Shown& shown : session.Steps()) report["steps"].push_back(JsonOf(shown));
  }
  if (session.Sound()) {
    Json& sound = report["sound"];
    sound["path"] = *options.sound;
    sound["samples"] = session.Sound()->samples;
    sound["gaps"] = Json::array();
    for (const SoundRecorder::Gap& gap : session.Sound()->gaps) {
      sound["gaps"].push_back({{"at_sample", gap.at}, {"samples", gap.length}});
    }
  }
  report["pictures"] = session.Pictures().Count();
  report["ended"] = WordOf(session.HowItEnded());
  return report;
}

void PrintSound(const SoundRecorder::Recorded& sound, const std::string& path, std::ostream& out) {
  out << path << ": " << FormatDecimals(static_cast<double>(sound.samples) / kSamplesPerSecond, 1)
      << " s of sound";
  if (!sound.gaps.empty()) out << ", " << Plural(sound.gaps.size(), "gap");
  out << '\n';
}

void Print(const PlaySession& session, const PlayOptions& options, std::ostream& out) {
  for (const auto& pane : session.Panes()) {
    const Pane::State& state = pane->GetState();
    out << pane->Path() << ": " << Plural(state.frames, "frame") << " shown";
    if (state.first) {
      out << ", from " << NameOf(state.first->position) << " to " << NameOf(state.last->position)
          << ", " << FormatTime(state.first->time) << state.last->time.Format(" to %H:%M:%S");
    }
    out << '\n';
  }
  if (session.Sound()) PrintSound(*session.Sound(), *options.sound, out);
  const auto& pictures = options.sheet ? options.sheet : options.frames_directory;
  if (pictures) out << *pictures << ": " << Plural(session.Pictures().Count(), "picture") << '\n';
}

int Play(const PlayOptions& options, Console& console) {
  CheckOptions(options);
  const StopSignals signals;
  PlaySession session(options, console);
  session.Run();
  session.Close();
  if (options.json) {
    console.out << JsonText(JsonOf(session, options)) << '\n';
  } else {
    Print(session, options, console.out);
  }
  return kExitGood;
}

}  // namespace

void AddPlay(const Command& root) {
  const auto options = std::make_shared<PlayOptions>();
  const Command command = root.Sub("play", "play recordings, with sound or up to four together");
  command.Usage({"FILE [options]", "FILE FILE2 [FILE3 [FILE4]] [options]"});
  command.Describe(
      "Plays a recording at its recorded pace into a window that is not shown, and tells where it "
      "is: on a terminal in a line that renews itself, elsewhere in a line for each second of the "
      "recording. What the window showed and what was to be heard can be saved. Several files play "
      "together, without sound: the first one leads, and the others begin when it reaches their "
      "beginning, keep to its time, and end with it.");
  AddPlayOptions(command, *options);
  command.Explain(
      "On a terminal space pauses and goes on, left and right step to the previous and the next "
      "picture, up and down change the speed, and q ends, as Ctrl-C does.");
  ExplainMoments(command);
  command.Explain(
      "PLACE is BLOCK:INDEX, counted from 0, or a TIME in whole seconds. --from TIME begins with "
      "the last picture before that second, or with the last block that begins in it. A recording "
      "that is still being written plays the blocks that were finished when it was opened; the "
      "last of them is not searched for a TIME.");
  command.Does([options](Console& console) { return Play(*options, console); });
}

}  // namespace zebtool
