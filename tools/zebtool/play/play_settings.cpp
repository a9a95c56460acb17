#include "tools/zebtool/play/play_settings.h"

#include <cstdlib>
#include <sstream>

#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/files/host_paths.h"
#include "tools/zebtool/files/output_file.h"

namespace zebtool {
namespace {

constexpr Bounds kPictures = {1, 100};
constexpr std::size_t kUsualPictures = 12;
constexpr std::size_t kUsualPicturesOfPanes = 6;
constexpr char kPlaceForm[] = R"(BLOCK:INDEX, "YYYY-MM-DD HH:MM:SS", "HH:MM:SS" or "+SECONDS")";

std::optional<int> ParseSpeed(const std::string& text) {
  const bool is_negative = text.starts_with('-');
  const auto number = ParseNumber(text.substr(is_negative ? 1 : 0));
  if (!number || *number > static_cast<DWORD>(kFastest)) return std::nullopt;
  const auto speed = static_cast<int>(*number);
  return is_negative ? -speed : speed;
}

std::optional<std::vector<Step>> ParseSteps(const std::string& text) {
  std::vector<Step> steps;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (word != "n" && word != "p") return std::nullopt;
    steps.push_back(word == "n" ? Step::kNext : Step::kPrevious);
  }
  return steps.empty() ? std::nullopt : std::optional(std::move(steps));
}

std::optional<PlayLimit> ParseLimit(const std::string& text) {
  if (text == "end") return ToTheEnd();
  if (text.ends_with('s')) {
    const auto seconds = ParseNumber(text.substr(0, text.size() - 1));
    return seconds ? std::optional<PlayLimit>(SecondsOfPlaying{*seconds}) : std::nullopt;
  }
  const auto place = ParsePlace(text);
  return place ? std::optional<PlayLimit>(*place) : std::nullopt;
}

}  // namespace

void AddPlayOptions(const Command& command, PlayOptions& options) {
  command.Arguments("FILE", options.files, "one recording, or up to four that play together");
  command.Option("--speed", "N", options.speed, ParseSpeed, "-16 to 16",
                 "0 plays as recorded (default), N so many times twice as fast, -N slower; several "
                 "files at 2: every fourth picture, at 3: every sixth");
  command.Option("--from", "PLACE", options.from, ParsePlace, kPlaceForm, "begins there");
  command.Option("--until", "PLACE", options.until, ParseLimit,
                 std::string("end, SECONDSs or ") + kPlaceForm,
                 "ends with the first picture from there on; \"10s\" ends after 10 seconds of "
                 "playing; default: end");
  command.Option("--pause-at", "PLACE", options.pause_at, ParsePlace, kPlaceForm,
                 "pauses there: with keys until one is pressed, otherwise for a second");
  command.Option("--steps", "\"n n p ...\"", options.steps, ParseSteps,
                 "n and p, such as \"n n p\"",
                 "pauses at the first picture, steps to the next (n) or the previous one (p), and "
                 "ends");
  command.Flag("--no-captions", options.has_no_captions, "pictures without names and times");
  command.Flag("--json", options.json, "the report at the end as JSON, and nothing before");

  command.Heading("what was shown and heard");
  command.Option("--sound", "OUT.wav", options.sound, "the sound that was played, of one file");
  command.Option("--frames-dir", "DIR", options.frames_directory,
                 "every picture as BLOCK-INDEX.png, shown step by step so that none is missed, and "
                 "without sound; a new or empty directory");
  command.Option("--sheet", "OUT.png", options.sheet, "pictures of all the time as one");
  command.Option("--pictures", "N", options.pictures, kPictures,
                 "at most so many on the sheet, 1 to 100; default 12, or 6 of several files");
  AddForceOption(command, options.replaces);
}

void CheckOptions(const PlayOptions& options) {
  if (options.files.size() > kMostPanes) {
    throw UsageError("at most " + std::to_string(kMostPanes) + " files play together, not " +
                     std::to_string(options.files.size()));
  }
  if (options.sheet && options.frames_directory) {
    throw UsageError("--sheet or --frames-dir, not both");
  }
  if (options.pictures && !options.sheet) throw UsageError("--pictures is for --sheet");
  if (options.steps && (options.until || options.pause_at)) {
    throw UsageError("--steps ends by itself, without --until and --pause-at");
  }
  if (options.sound && options.files.size() > 1) {
    throw UsageError("several files play without sound; --sound is for one");
  }
  if (options.sound && (options.steps || options.frames_directory)) {
    throw UsageError("steps have no sound; leave out --sound, or --steps and --frames-dir");
  }
  if (options.sound && options.speed.value_or(0) != 0) {
    throw UsageError("sound is played at speed 0 only");
  }
  for (const std::string& file : options.files) {
    if (options.sound) RefuseSameFile(file, *options.sound);
    if (options.sheet) RefuseSameFile(file, *options.sheet);
  }
}

std::size_t PicturesOf(const PlayOptions& options) {
  if (options.pictures) return *options.pictures;
  return options.files.size() > 1 ? kUsualPicturesOfPanes : kUsualPictures;
}

}  // namespace zebtool
