#include "tools/zebtool/live/live_settings.h"

#include <array>

#include "platform/noxdisplay/display_record.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/files/output_file.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr Bounds kSeconds = {1, 30 * 24 * 3600};
constexpr Bounds kMinutes = {1, 1440};
constexpr Bounds kSpeed = {1, 30};
constexpr Bounds kQuality = {0, 10};
constexpr Bounds kSensitivity = {0, 16};
constexpr Bounds kAlarmFrames = {1, 1000};
constexpr DWORD kPercent = 100;
constexpr std::size_t kMostMasks = noxdisplay::kDisplayMasks;

// The frame sizes that the first board of a device opens with.
std::optional<DWORD> ParseOpeningFrameSize(const std::string& text) {
  const auto number = ParseNumber(text);
  const bool opens = number && (*number == 3 || *number == 7 || *number == 131 || *number == 135);
  return opens ? number : std::nullopt;
}

std::vector<zebdev::VirtualDevice> ParsePlan(const std::string& text) {
  CString fault;
  auto plan = zebdev::ParseDevicePlan(text, &fault);
  if (!plan) {
    throw UsageError("--devices takes a plan such as 6:8,10:4@/srv/clips, not '" + text +
                     "': " + fault);
  }
  return std::move(*plan);
}

// "3=Gate": the number before the mark, and what follows it.
std::optional<std::pair<DWORD, std::string>> ParseNumbered(const std::string& text, char mark) {
  const std::size_t at = text.find(mark);
  if (at == std::string::npos) return std::nullopt;
  const auto number = ParseNumber(text.substr(0, at));
  if (!number || *number == 0) return std::nullopt;
  return std::pair(*number, text.substr(at + 1));
}

void TakeName(const std::string& text, std::map<DWORD, std::string>& names) {
  const auto name = ParseNumbered(text, '=');
  if (!name) {
    throw UsageError(
        "--name takes the number of a camera from 1 on and a text, such as "
        "3=Gate, not '" +
        text + "'");
  }
  names.insert_or_assign(name->first, name->second);
}

std::optional<CRect> ParsePercentRect(const std::string& text) {
  std::array<LONG, 4> sides{};
  std::size_t begin = 0;
  for (std::size_t side = 0; side < sides.size(); ++side) {
    const bool is_last = side + 1 == sides.size();
    const std::size_t end = is_last ? text.size() : text.find(',', begin);
    if (end == std::string::npos) return std::nullopt;
    const auto number = ParseNumber(text.substr(begin, end - begin));
    if (!number || *number > kPercent) return std::nullopt;
    sides.at(side) = static_cast<LONG>(*number);
    begin = end + 1;
  }
  const CRect rect = {sides[0], sides[1], sides[2], sides[3]};
  return rect.IsEmpty() ? std::nullopt : std::optional(rect);
}

void TakeMask(const std::string& text, std::map<DWORD, std::vector<CRect>>& masks) {
  const auto numbered = ParseNumbered(text, ':');
  const auto rect = ParsePercentRect(numbered ? numbered->second : text);
  if (!rect) {
    throw UsageError(
        "--mask takes left, top, right and bottom in percent of the picture, such as "
        "0,60,100,95 or, for camera 3 alone, 3:0,60,100,95, not '" +
        text + "'");
  }
  masks[numbered ? numbered->first : 0].push_back(*rect);
}

}  // namespace

void AddLiveOptions(const Command& command, LiveOptions& options) {
  command.Option("--seconds", "N", options.seconds, kSeconds,
                 "ends after so many seconds; default: on Ctrl-C");
  command.Option("--sheet", "OUT.png", options.sheet,
                 "saves all windows, as they are at the end, as one picture");
  command.Flag("--json", options.json, "no table; the report at the end as JSON");

  command.Heading("cameras");
  command.Options(
      "--devices", "PLAN",
      [&options](const std::string& text) { options.devices = ParsePlan(text); },
      "the devices: type code (0 to 11), colon, number of cameras, with commas between devices; "
      "@DIR behind all for their films; default: ZEBX_DEVICES, else 6:4");
  command.Option(
      "--device-dir", "DIR", options.device_directory,
      "where films are looked for: camera0.y4m, with sound in camera0.wav, is what camera 1 "
      "sees, and so on; a camera without a film sees a generated street");
  command.Option("--frame-size", "N", options.frame_size, ParseOpeningFrameSize,
                 "3 or 7 (NTSC), 131 or 135 (PAL)",
                 "3 or 7 (NTSC), 131 or 135 (PAL); default 135: 352 x 288");
  command.Option("--speed", "N", options.speed, kSpeed,
                 "frames a second, 1 to 30; default: 25, or 30 for NTSC");
  command.Option("--quality", "N", options.quality, kQuality, "0 to 10, the best; default 5");
  command.Option("--sensitivity", "N", options.sensitivity, kSensitivity,
                 "of the search for motion, 0 to 16; default 8");
  command.Option(
      "--alarm-frames", "N", options.alarm_frames, kAlarmFrames,
      "so many pictures with motion on end are an alarm, 1 to 1000; default 1, as a film "
      "of fewer pictures than the camera sends stands still in between");
  command.Flag("--no-sound", options.is_silent, "no sound, also where a camera has any");
  command.Options(
      "--name", "N=TEXT", [&options](const std::string& text) { TakeName(text, options.names); },
      "a camera's name; cameras are numbered from 1 over all boards; may be repeated; default: "
      "\"Camera N\"");
  command.Options(
      "--mask", "[N:]L,T,R,B",
      [&options](const std::string& text) { TakeMask(text, options.masks); },
      "looks for motion in this part of the picture, in percent of its width and height, of "
      "camera N or of all; may be repeated, up to 5 for a camera");

  AddDatabaseOptions(command, options.database, DatabaseNeed::kMayBeAbsent);
  command.Flag("--record", options.records, "records every camera onto the working disk");
  command.Flag(
      "--alarm-on-motion", options.records_alarms,
      "makes an alarm file when motion begins in a camera's masks, with the seconds before "
      "it; without --mask the whole picture is one");
  command.Option("--minutes", "N", options.minutes, kMinutes,
                 "a new file every N minutes, 1 to 1440; default: as many as fit");
  AddForceOption(command, options.replaces_sheet);
}

void CheckOptions(const LiveOptions& options) {
  const bool writes = options.records || options.records_alarms;
  if (writes && options.database.file.empty()) {
    throw UsageError(
        "--record and --alarm-on-motion need --db FILE, the database to record to; "
        "'zebtool store init' makes one");
  }
  if (!writes && !options.database.file.empty()) {
    throw UsageError("--db is for --record and --alarm-on-motion");
  }
  const auto everywhere = options.masks.find(0);
  const std::size_t of_all = everywhere == options.masks.end() ? 0 : everywhere->second.size();
  for (const auto& [number, masks] : options.masks) {
    if (masks.size() + (number == 0 ? 0 : of_all) > kMostMasks) {
      throw UsageError("a camera has " + std::to_string(kMostMasks) + " masks at most");
    }
  }
}

std::string NameOf(const LiveOptions& options, DWORD number) {
  const auto found = options.names.find(number);
  return found != options.names.end() ? found->second : "Camera " + std::to_string(number);
}

std::vector<CRect> MasksOf(const LiveOptions& options, DWORD number) {
  std::vector<CRect> masks;
  for (const DWORD owner : {DWORD{0}, number}) {
    const auto found = options.masks.find(owner);
    if (found != options.masks.end()) {
      masks.insert(masks.end(), found->second.begin(), found->second.end());
    }
  }
  if (masks.empty() && options.records_alarms) masks.push_back(kWholeInPercent);
  return masks;
}

}  // namespace zebtool
