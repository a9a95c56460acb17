// zebtool search: the files that the disks of a database hold of a camera, a day or a time.
#include <algorithm>
#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <utility>

#include "storage/dbs.h"
#include "storage/file_search_info.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/disks/database_session.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr DWORD kMaxNumber = 0xFFFF;
constexpr int kLocalDays = 0;
constexpr Bounds kFrameSize = {0, 255};

struct Kind {
  std::string_view name;
  DWORD flag;
  bool by_range;
  bool by_moment;
  bool knows_camera;  // by its numbers
};

constexpr std::array<Kind, 6> kKinds = {{{"video", 0, true, true, true},
                                         {"clip", kSearchClip, true, true, true},
                                         {"alarm", kSearchAlarm, true, true, true},
                                         // A picture has no end, by which a range is searched.
                                         {"picture", kSearchPicture, false, false, false},
                                         {"log", kSearchLog, true, false, false},
                                         {"face", kSearchFace, true, false, true}}};

struct Settings {
  DatabaseOptions database;
  std::optional<CTime> date;  // its noon
  std::optional<CTime> from;
  std::optional<CTime> to;
  std::optional<CTime> at;
  std::optional<Kind> kind;
  std::optional<tag_ZEBCAMERAID> camera;
  std::optional<std::string> camera_name;
  std::optional<std::string> board_name;
  std::optional<DWORD> frame_size;
  std::optional<std::string> disk;
  bool json = false;

  Kind KindToFind() const { return kind.value_or(kKinds.front()); }
};

std::optional<Kind> ParseKind(const std::string& name) {
  const auto* const kind =
      std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& one) { return one.name == name; });
  return kind == kKinds.end() ? std::nullopt : std::optional(*kind);
}

std::optional<tag_ZEBCAMERAID> ParseCamera(const std::string& text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos) return std::nullopt;
  const auto board = ParseNumber(text.substr(0, comma));
  const auto camera = ParseNumber(text.substr(comma + 1));
  if (!board || !camera || *board > kMaxNumber || *camera > kMaxNumber) return std::nullopt;
  return tag_ZEBCAMERAID{static_cast<WORD>(*board), static_cast<WORD>(*camera)};
}

void CheckUsage(const Settings& settings) {
  const Kind kind = settings.KindToFind();
  if ((settings.date ? 1 : 0) + (settings.from ? 1 : 0) + (settings.at ? 1 : 0) != 1) {
    throw UsageError("one of --date, --from and --at is needed");
  }
  if (settings.to && !settings.from) throw UsageError("--to needs --from");
  if ((settings.from && !kind.by_range) || (settings.at && !kind.by_moment)) {
    throw UsageError("--kind " + std::string(kind.name) + " needs --date");
  }
  if (settings.at && (settings.camera_name || settings.board_name || settings.frame_size)) {
    throw UsageError("--at looks at --camera only; leave names and --frame-size out");
  }
  if (settings.camera && kind.flag == kSearchPicture) {
    throw UsageError("pictures tell no board and camera; use --camera-name");
  }
}

CSearchParam CriteriaOf(const Settings& settings) {
  CSearchParam criteria;
  criteria.SetHostName(settings.database.host);
  criteria.SetSearch(settings.KindToFind().flag);
  if (settings.date) criteria.SetDate(settings.date->GetTime());
  if (settings.at) criteria.SetTimeBegin(*settings.at);
  if (settings.from) {
    criteria.SetBeginTime(*settings.from);
    criteria.SetEndTime(settings.to.value_or(CTime::GetCurrentTime()));
  }
  if (settings.camera) criteria.SetCameraID(*settings.camera);
  if (settings.camera_name) criteria.SetCameraName(*settings.camera_name);
  if (settings.board_name) criteria.SetBoardName(*settings.board_name);
  if (settings.frame_size) criteria.SetFrameSize(tag_FRAMESIZE{*settings.frame_size});
  if (settings.disk) criteria.SetDbsName(*settings.disk);
  return criteria;
}

// The days of a disk's list, "2024-05-01", each once, that files of the time span can lie in.
std::set<std::string> DaysOf(const CHddObj& disk, const CSearchParam& criteria) {
  CTime begin;
  CTime end;
  criteria.GetBeginTime(begin);
  criteria.GetEndTime(end);
  const std::string last = FormatDay(end);
  std::set<std::string> days;
  std::string before;
  for (int index = 0; index < disk.GetDirNum(kLocalDays); ++index) {
    const std::string day = FormatDay(CTime(disk.GetDirDate(index, kLocalDays)));
    if (day > last) continue;
    if (day >= FormatDay(begin)) {
      days.insert(day);
    } else {
      before = std::max(before, day);
    }
  }
  // What was recorded across midnight lies in the day of its beginning. A log has no beginning.
  if (!before.empty() && criteria.IsSearch(kSearchLog) == 0) days.insert(before);
  return days;
}

// One calendar day after the other: days of 23 and of 25 hours are days like any other, while the
// library's own search of a time span goes on by 24 hours.
void SearchDays(const DatabaseSession& database, CFileSearchInfo& found) {
  CSearchParam& criteria = *found.GetSearchParam();
  for (CHddObj* disk : database.Disks()) {
    for (const std::string& day : DaysOf(*disk, criteria)) {
      criteria.SetDate(ParseNoon(day)->GetTime());
      disk->SearchFile(&found);
    }
  }
}

// Of pictures and logs only one moment is known.
bool HasEnd(const CZebFileInfo& file) {
  return file.GetEndTime().GetTime() != 0;
}

void Print(const CZebFileInfo& file, const Kind& kind, std::ostream& out) {
  out << FormatTime(file.GetBeginTime());
  if (HasEnd(file)) out << " to " << FormatTime(file.GetEndTime());
  const auto camera = file.GetCameraID();
  if (kind.knows_camera) out << "  " << camera.m_board << ',' << camera.m_camera;
  if (!file.GetCameraName().empty()) out << "  \"" << file.GetCameraName() << '"';
  if (file.GetLength() != 0) out << "  " << Plural(file.GetLength(), "byte");
  out << "  " << file.GetFileName() << '\n';
}

Json JsonOf(const CZebFileInfo& file, const Kind& kind) {
  Json entry = {{"path", file.GetFileName()},
                {"begin_seconds", file.GetBeginTime().GetTime()},
                {"begin", FormatTime(file.GetBeginTime())}};
  if (HasEnd(file)) {
    entry["end_seconds"] = file.GetEndTime().GetTime();
    entry["end"] = FormatTime(file.GetEndTime());
  }
  if (file.GetLength() != 0) entry["bytes"] = file.GetLength();
  if (kind.knows_camera) {
    const auto camera = file.GetCameraID();
    entry["board"] = camera.m_board;
    entry["camera"] = camera.m_camera;
  }
  entry["board_name"] = file.GetBoardName();
  entry["camera_name"] = file.GetCameraName();
  entry["host_name"] = file.GetHostName();
  return entry;
}

int Report(const CFileSearchInfo& found, const Settings& settings, Console& console) {
  const Kind kind = settings.KindToFind();
  const auto count = static_cast<ULONGLONG>(found.GetCount());
  Json files = Json::array();
  for (const CObject* entry : found) {
    const auto* file = dynamic_cast<const CZebFileInfo*>(entry);
    if (file == nullptr) continue;
    if (settings.json) {
      files.push_back(JsonOf(*file, kind));
    } else {
      Print(*file, kind, console.out);
    }
  }
  if (settings.json) {
    console.out << JsonText({{"found", count}, {"files", std::move(files)}}) << '\n';
  } else {
    console.out << (count == 0 ? "nothing found" : Plural(count, "file") + " found") << '\n';
  }
  return count > 0 ? kExitGood : kExitBad;
}

int Search(const Settings& settings, Console& console) {
  CheckUsage(settings);
  CSearchParam criteria = CriteriaOf(settings);
  const DatabaseSession database(settings.database);
  if (settings.disk && dbsFindHddIndex(*settings.disk) < 0) {
    throw JobError("there is no disk '" + *settings.disk + "'; 'zebtool store disks' names them");
  }
  CFileSearchInfo found(&criteria);
  if (settings.from) {
    SearchDays(database, found);
  } else {
    dbsSearchFile(&found);
  }
  return Report(found, settings, console);
}

}  // namespace

void AddSearch(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command command = root.Sub("search", "find recordings, pictures, logs and faces");
  command.Usage({"--db FILE --date DAY [options]", "--db FILE --from TIME [--to TIME] [options]",
                 "--db FILE --at TIME [options]"});
  command.Describe(
      "Lists what the disks of a database hold of one host: disk by disk, days ascending. TIME is "
      "\"YYYY-MM-DD HH:MM:SS\".");
  command.Option("--date", "YYYY-MM-DD", settings->date, ParseNoon, "YYYY-MM-DD",
                 "everything of a day");
  command.Option("--from", "TIME", settings->from, ParseTime, kTimeForm,
                 "what had not ended by then; what was recorded across midnight is found, too");
  command.Option("--to", "TIME", settings->to, ParseTime, kTimeForm,
                 "what had begun by then; default: now");
  command.Option("--at", "TIME", settings->at, ParseTime, kTimeForm,
                 "recordings of the day of TIME that had not ended by then");
  command.Option("--kind", "KIND", settings->kind, ParseKind,
                 "video, clip, alarm, picture, log or face",
                 "video (default), clip, alarm, picture, log or face; pictures and logs are found "
                 "by day, logs also by time range");
  command.Option("--camera", "B,C", settings->camera, ParseCamera, "BOARD,CAMERA, such as 0,3",
                 "of this board and camera");
  command.Option("--camera-name", "NAME", settings->camera_name,
                 "of cameras with this name; not with --at");
  command.Option("--board-name", "NAME", settings->board_name,
                 "of boards with this name; not with --at");
  command.Option("--frame-size", "N", settings->frame_size, kFrameSize,
                 "of this frame size; not with --at");
  command.Option("--disk", "NAME", settings->disk,
                 "on this disk, as 'zebtool store disks' names it");
  command.Flag("--json", settings->json, "as JSON");
  AddDatabaseOptions(command, settings->database);
  command.Explain(
      "Pictures tell no board and camera, and logs meet every camera and name. Exit status: 0 when "
      "something was found, 1 when nothing was.");
  command.Does([settings](Console& console) { return Search(*settings, console); });
}

}  // namespace zebtool
