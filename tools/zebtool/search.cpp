// zebtool search: the files that the disks of a database hold of a camera, a day or a time.
#include <algorithm>
#include <array>
#include <optional>

#include "storage/dbs.h"
#include "storage/file_search_info.h"
#include "tools/zebtool/database_session.h"
#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/options.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

using namespace zebx;

namespace zebtool {
namespace {

const std::string kHelp =
    "usage: zebtool search --db FILE --date DAY [options]\n"
    "       zebtool search --db FILE --from TIME [--to TIME] [options]\n"
    "       zebtool search --db FILE --at TIME [options]\n"
    "\n"
    "Lists what the disks of a database hold of one host: disk by disk, days ascending.\n"
    "\n"
    "  --date YYYY-MM-DD   everything of a day\n"
    "  --from TIME         what had not ended by then; TIME is \"YYYY-MM-DD HH:MM:SS\"\n"
    "  --to TIME           what had begun by then; default: now\n"
    "  --at TIME           recordings of the day of TIME that had not ended by then\n"
    "  --kind KIND         video (default), clip, alarm, picture, log or face; pictures and logs\n"
    "                      are found by day, logs also by time range\n"
    "  --camera B,C        of this board and camera\n"
    "  --camera-name NAME  of cameras with this name; not with --at\n"
    "  --board-name NAME   of boards with this name; not with --at\n"
    "  --frame-size N      of this frame size; not with --at\n"
    "  --disk NAME         on this disk, as 'zebtool store disks' names it\n"
    "  --json              as JSON\n"
    "\n" +
    std::string(kDatabaseHelp) +
    "\n"
    "Pictures tell no board and camera, and logs meet every camera and name. Exit status: 0 when\n"
    "something was found, 1 when nothing was.\n";

constexpr DWORD kMaxNumber = 0xFFFF;
constexpr DWORD kMaxFrameSize = 255;

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

CTime ReadTime(const Options& options, std::string_view name) {
  const std::string text = options.Text(name).value_or("");
  const auto time = ParseTime(text);
  if (!time) {
    options.Fail(std::string(name) + " takes \"YYYY-MM-DD HH:MM:SS\", not '" + text + "'");
  }
  return *time;
}

const Kind& ReadKind(const Options& options) {
  const std::string name = options.Text("--kind").value_or(std::string(kKinds[0].name));
  const auto* const kind =
      std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& one) { return one.name == name; });
  if (kind == kKinds.end()) {
    options.Fail("--kind takes video, clip, alarm, picture, log or face, not '" + name + "'");
  }
  return *kind;
}

void SetTimes(CSearchParam& criteria, const Options& options, const Kind& kind) {
  const auto given = [&](std::string_view name) { return options.Has(name) ? 1 : 0; };
  const int ways = given("--date") + given("--from") + given("--at");
  if (ways != 1) options.Fail("one of --date, --from and --at is needed");
  if (options.Has("--to") && !options.Has("--from")) options.Fail("--to needs --from");
  const bool can =
      options.Has("--date") || (options.Has("--from") ? kind.by_range : kind.by_moment);
  if (!can) options.Fail("--kind " + std::string(kind.name) + " needs --date");

  if (options.Has("--date")) {
    const std::string day = *options.Text("--date");
    const auto noon = ParseTime(day + " 12:00:00");
    if (!noon) options.Fail("--date takes YYYY-MM-DD, not '" + day + "'");
    criteria.SetDate(noon->GetTime());
  } else if (options.Has("--at")) {
    criteria.SetTimeBegin(ReadTime(options, "--at"));
  } else {
    criteria.SetBeginTime(ReadTime(options, "--from"));
    criteria.SetEndTime(options.Has("--to") ? ReadTime(options, "--to") : CTime::GetCurrentTime());
  }
}

tag_ZEBCAMERAID ReadCamera(const Options& options, const std::string& text) {
  const std::size_t comma = text.find(',');
  const auto board = ParseNumber(std::string_view{text}.substr(0, comma));
  const auto camera = comma == std::string::npos
                          ? std::nullopt
                          : ParseNumber(std::string_view{text}.substr(comma + 1));
  if (!board || !camera || *board > kMaxNumber || *camera > kMaxNumber) {
    options.Fail("--camera takes BOARD,CAMERA, such as 0,3, not '" + text + "'");
  }
  return {static_cast<WORD>(*board), static_cast<WORD>(*camera)};
}

CSearchParam ReadCriteria(const Options& options, const Kind& kind, const std::string& host) {
  CSearchParam criteria;
  criteria.SetHostName(host);
  criteria.SetSearch(kind.flag);
  SetTimes(criteria, options, kind);
  for (const std::string_view name : {"--camera-name", "--board-name", "--frame-size"}) {
    if (options.Has("--at") && options.Has(name)) {
      options.Fail("--at looks at --camera only; leave " + std::string(name) + " out");
    }
  }
  if (const auto camera = options.Text("--camera")) {
    if (kind.flag == kSearchPicture) {
      options.Fail("pictures tell no board and camera; use --camera-name");
    }
    criteria.SetCameraID(ReadCamera(options, *camera));
  }
  if (const auto name = options.Text("--camera-name")) criteria.SetCameraName(*name);
  if (const auto name = options.Text("--board-name")) criteria.SetBoardName(*name);
  if (const auto size = options.Number("--frame-size", 0, kMaxFrameSize)) {
    criteria.SetFrameSize(tag_FRAMESIZE{*size});
  }
  if (const auto disk = options.Text("--disk")) criteria.SetDbsName(*disk);
  return criteria;
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

void Put(const CZebFileInfo& file, const Kind& kind, JsonWriter& json) {
  json.BeginObject();
  json.Value("path", file.GetFileName());
  json.Value("begin_seconds", file.GetBeginTime().GetTime());
  json.Value("begin", FormatTime(file.GetBeginTime()));
  if (HasEnd(file)) {
    json.Value("end_seconds", file.GetEndTime().GetTime());
    json.Value("end", FormatTime(file.GetEndTime()));
  }
  if (file.GetLength() != 0) json.Value("bytes", file.GetLength());
  if (kind.knows_camera) {
    const auto camera = file.GetCameraID();
    json.Value("board", camera.m_board);
    json.Value("camera", camera.m_camera);
  }
  json.Value("board_name", file.GetBoardName());
  json.Value("camera_name", file.GetCameraName());
  json.Value("host_name", file.GetHostName());
  json.EndObject();
}

int RunSearch(Arguments arguments, Console& console) {
  const Options options({"search",
                         WithDatabaseOptions({{"--date"},
                                              {"--from"},
                                              {"--to"},
                                              {"--at"},
                                              {"--kind"},
                                              {"--camera"},
                                              {"--camera-name"},
                                              {"--board-name"},
                                              {"--frame-size"},
                                              {"--disk"},
                                              {"--json", OptionSpec::Kind::kFlag}}),
                         {},
                         0},
                        arguments);
  const DatabaseOptions database_options = ReadDatabaseOptions(options);
  const Kind& kind = ReadKind(options);
  CSearchParam criteria = ReadCriteria(options, kind, database_options.host);
  const DatabaseSession database(database_options);
  if (const auto disk = options.Text("--disk"); disk && dbsFindHddIndex(*disk) < 0) {
    throw JobError("there is no disk '" + *disk + "'; 'zebtool store disks' names them");
  }
  CFileSearchInfo found(&criteria);
  dbsSearchFile(&found);

  const auto count = static_cast<ULONGLONG>(found.GetCount());
  JsonWriter json(console.out);
  if (options.Has("--json")) {
    json.BeginObject();
    json.Value("found", count);
    json.BeginArray("files");
  }
  for (const CObject* entry : found) {
    const auto* file = dynamic_cast<const CZebFileInfo*>(entry);
    if (file == nullptr) continue;
    if (options.Has("--json")) {
      Put(*file, kind, json);
    } else {
      Print(*file, kind, console.out);
    }
  }
  if (options.Has("--json")) {
    json.EndArray();
    json.EndObject();
  } else {
    console.out << (count == 0 ? "nothing found" : Plural(count, "file") + " found") << '\n';
  }
  return count > 0 ? kExitGood : kExitBad;
}

}  // namespace

const Subcommand kSearchCommand = {"search", "find recordings, pictures, logs and faces", kHelp,
                                   RunSearch};

}  // namespace zebtool
