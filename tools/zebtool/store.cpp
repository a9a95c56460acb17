// zebtool store: the disks of a database, their room and their recycling.
#include <algorithm>
#include <array>

#include "platform/os/clock.h"
#include "platform/os/files/directories.h"
#include "platform/os/files/drives.h"
#include "storage/dbs.h"
#include "storage/default_disk.h"
#include "storage/recycling.h"
#include "tools/zebtool/database_session.h"
#include "tools/zebtool/json_writer.h"
#include "tools/zebtool/store_report.h"
#include "tools/zebtool/subcommands.h"
#include "tools/zebtool/text.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr auto kFlag = OptionSpec::Kind::kFlag;
constexpr std::size_t kDriveChars = 2;

const std::string kHelp =
    "usage: zebtool store init DIR --db FILE [disk options]\n"
    "       zebtool store init --data DIR --db FILE\n"
    "       zebtool store add DIR --db FILE [disk options]\n"
    "       zebtool store remove DIR|INDEX --db FILE\n"
    "       zebtool store disks|space|check --db FILE [--json]\n"
    "       zebtool store recycle --db FILE [--dry-run] [--now \"YYYY-MM-DD HH:MM:SS\"]\n"
    "\n"
    "Keeps the list of disks in a database file: at most one disk a drive, in DIR such as "
    "d:\\dvr.\n"
    "\n"
    "  init      makes a database with a first disk, or with the default disk below --data\n"
    "  add       takes another disk into the list\n"
    "  remove    takes a disk out of the list; its files stay\n"
    "  disks     every disk with its thresholds, space and days, and which one is the working "
    "disk\n"
    "  space     the room on every disk\n"
    "  check     judges the working disk: exit status 0 when recording can go on there, also "
    "below\n"
    "            the alarm space; 1 below the reserved space and without a working disk\n"
    "  recycle   chooses a disk with room, or else deletes the oldest day; --dry-run only says so\n"
    "\n" +
    std::string(kDatabaseHelp) +
    "  --reserved MB       a disk with less space free is recycled or left; default 1000\n"
    "  --recycle           the disk's oldest days may be deleted\n"
    "  --name NAME         the disk's name; default: ZebDatabase\n"
    "  --alarm             an alarm is given when space runs short\n"
    "  --alarm-sound FILE  its sound\n"
    "  --now TIME          days before this one may be deleted; default: today\n"
    "  --json              as JSON\n";

constexpr DWORD kMaxReservedMb = 0x7FFFFFFF;

std::vector<OptionSpec> WithDiskOptions() {
  return WithDatabaseOptions(
      {{"--reserved"}, {"--recycle", kFlag}, {"--name"}, {"--alarm", kFlag}, {"--alarm-sound"}});
}

// Throws JobError for a directory that is on no drive.
tag_HDDPARAM ReadDisk(const Options& options) {
  tag_HDDPARAM disk;
  disk.m_path = options.Positionals()[0];
  if (disk.m_path.find(':') != 1) {
    options.Fail("DIR is a library path with a drive letter, such as d:\\dvr, not '" + disk.m_path +
                 "'");
  }
  if (os::GetDriveType(disk.m_path) == os::DriveKind::kNoRoot) {
    throw JobError("no drive is mounted for '" + disk.m_path +
                   "'; mount it with --drive or ZEBX_DRIVES");
  }
  disk.m_reserved_mb = options.Number("--reserved", 0, kMaxReservedMb).value_or(kDefaultReservedMb);
  disk.m_recycle = options.Has("--recycle") ? 1 : 0;
  disk.m_database_name = options.Text("--name").value_or("");
  disk.m_alarm_when_space_not_enough = options.Has("--alarm") ? 1 : 0;
  disk.m_alarm_sound = options.Text("--alarm-sound").value_or("");
  return disk;
}

void ShowDisks(const DatabaseSession& database, Console& console) {
  const auto disks = database.Disks();
  DiskReport{disks, database.WorkingDisk()}.PrintDisks(console.out);
}

// The library opens no database without a disk, so the default disk is made at the root of the
// first disk's drive and then moved to where that disk shall be.
void MakeFirstDisk(DatabaseOptions database_options, tag_HDDPARAM disk) {
  database_options.data_directory = disk.m_path.substr(0, kDriveChars);
  const bool was_there =
      os::IsDirectory(DefaultDiskBelow(database_options.data_directory).m_path) != 0;
  bool is_made = false;
  CString stand_in;
  CString directory;
  {
    const DatabaseSession database(database_options, DatabaseSession::Start::kNew);
    dbsGetBaseDir(0, &stand_in);
    is_made = dbsChangeBaseDir(0, &disk) != 0;
    dbsGetBaseDir(0, &directory);
    if (is_made) {
      database.Save();
    } else {
      dbsRemoveHDDIndex(0);  // so that closing writes no database
    }
  }
  const bool is_the_disk = is_made && directory == stand_in;
  if (!was_there && !is_the_disk) os::RemoveDirectory(stand_in);  // which has to be empty
  if (!is_made) throw JobError("no disk can be made in '" + disk.m_path + "'");
}

int Init(Arguments arguments, Console& console) {
  const Options options({"store", WithDiskOptions(), {"DIR"}, 0}, arguments);
  const DatabaseOptions database_options = ReadDatabaseOptions(options);
  const bool has_first_disk = !options.Positionals().empty();
  if (has_first_disk == !database_options.data_directory.empty()) {
    options.Fail("init takes the directory of a first disk, or --data");
  }
  if (has_first_disk) {
    MakeFirstDisk(database_options, ReadDisk(options));
  } else {
    DatabaseSession(database_options, DatabaseSession::Start::kNew).Save();
  }
  ShowDisks(DatabaseSession(database_options), console);
  return kExitGood;
}

int Add(Arguments arguments, Console& console) {
  const Options options({"store", WithDiskOptions(), {"DIR"}, 1}, arguments);
  const DatabaseSession database(ReadDatabaseOptions(options));
  tag_HDDPARAM disk = ReadDisk(options);
  if (dbsAddHDD(&disk) == 0) {
    throw JobError("cannot add '" + disk.m_path +
                   "': its drive has a disk already or is neither fixed nor a network's, or its "
                   "directory cannot be made");
  }
  database.Save();
  ShowDisks(database, console);
  return kExitGood;
}

int Remove(Arguments arguments, Console& console) {
  const Options options({"store", WithDatabaseOptions({}), {"DIR|INDEX"}, 1}, arguments);
  const std::string& which = options.Positionals()[0];
  const DatabaseSession database(ReadDatabaseOptions(options));
  if (dbsGetHddNum() == 1) throw JobError("the only disk of a database cannot be removed");
  const auto index = ParseNumber(which);
  const int removed = index && *index < static_cast<DWORD>(dbsGetHddNum())
                          ? dbsRemoveHDDIndex(static_cast<int>(*index))
                          : dbsRemoveHDDName(which);
  if (removed == 0) throw JobError("there is no disk '" + which + "' in the database");
  database.Save();
  ShowDisks(database, console);
  return kExitGood;
}

int Disks(Arguments arguments, Console& console) {
  const Options options({"store", WithDatabaseOptions({{"--json", kFlag}}), {}, 0}, arguments);
  const DatabaseSession database(ReadDatabaseOptions(options));
  if (!options.Has("--json")) {
    ShowDisks(database, console);
    return kExitGood;
  }
  const auto disks = database.Disks();
  DiskReport{disks, database.WorkingDisk()}.PutDisks(console.out);
  return kExitGood;
}

int ShowSpace(Arguments arguments, Console& console) {
  const Options options({"store", WithDatabaseOptions({{"--json", kFlag}}), {}, 0}, arguments);
  const DatabaseSession database(ReadDatabaseOptions(options));
  const auto disks = database.Disks();
  const DiskReport report{disks, database.WorkingDisk()};
  if (options.Has("--json")) {
    report.PutSpace(console.out);
  } else {
    report.PrintSpace(console.out);
  }
  return kExitGood;
}

const char* WordsFor(int state) {
  switch (state) {
    case kWorkingDiskFine:
      return "enough space";
    case kWorkingDiskFull:
      return "below its reserved space";
    case kWorkingDiskShort:
      return "below its alarm space";
    default:
      return "no working disk, or it does not answer";
  }
}

int Check(Arguments arguments, Console& console) {
  const Options options({"store", WithDatabaseOptions({{"--json", kFlag}}), {}, 0}, arguments);
  const DatabaseSession database(ReadDatabaseOptions(options));
  DWORD free_mb = 0;
  const int state = dbsCheckWorkHDD(&free_mb);
  const std::string disk = database.WorkingDisk();
  if (options.Has("--json")) {
    JsonWriter json(console.out);
    json.BeginObject();
    json.Value("working_disk", disk);
    json.Value("result", state);
    json.Value("words", WordsFor(state));
    json.Value("free_mb", free_mb);
    json.EndObject();
  } else if (state == kWorkingDiskNone) {
    console.out << WordsFor(state) << '\n';
  } else {
    console.out << disk << ": " << WordsFor(state) << ", " << FormatCount(free_mb) << " MB free\n";
  }
  return state == kWorkingDiskFine || state == kWorkingDiskShort ? kExitGood : kExitBad;
}

// The outcome's last line, the same for the forecast and for the deed.
int EndRecycling(const std::string& working_disk, Console& console) {
  if (working_disk.empty()) {
    console.out << "nothing can be recycled: no working disk\n";
    return kExitBad;
  }
  console.out << "working disk " << working_disk << '\n';
  return kExitGood;
}

int Recycle(Arguments arguments, Console& console) {
  const Options options({"store", WithDatabaseOptions({{"--dry-run", kFlag}, {"--now"}}), {}, 0},
                        arguments);
  CTime now = CTime::GetCurrentTime();
  if (const auto text = options.Text("--now")) {
    const auto time = ParseTime(*text);
    if (!time) options.Fail("--now takes \"YYYY-MM-DD HH:MM:SS\", not '" + *text + "'");
    now = *time;
  }
  const os::SteppedClock clock(now.GetTime(), os::GetTickCount());
  const DatabaseSession database(
      ReadDatabaseOptions(options), DatabaseSession::Start::kExisting,
      [&](CTime day) { console.out << "deleted " << FormatDay(day) << '\n'; });
  if (options.Has("--dry-run")) {
    CObList disks;
    for (CHddObj* disk : database.Disks()) disks.AddTail(disk);
    const RecyclingForecast forecast = ForecastRecycling(disks);
    for (const auto& doomed : forecast.m_days) {
      console.out << "would delete " << FormatDay(doomed.m_day) << " of "
                  << doomed.m_disk->GetDbsName() << ", " << Plural(doomed.m_bytes, "byte") << '\n';
    }
    const bool has_disk = forecast.m_working_disk != nullptr;
    return EndRecycling(has_disk ? forecast.m_working_disk->GetDbsName() : CString(), console);
  }
  dbsChangeWorkDir();
  database.Save();
  return EndRecycling(database.WorkingDisk(), console);
}

struct Action {
  std::string_view name;
  int (*run)(Arguments arguments, Console& console);
};

constexpr std::array<Action, 7> kActions = {{{"init", Init},
                                             {"add", Add},
                                             {"remove", Remove},
                                             {"disks", Disks},
                                             {"space", ShowSpace},
                                             {"check", Check},
                                             {"recycle", Recycle}}};

int RunStore(Arguments arguments, Console& console) {
  if (arguments.empty()) throw UsageError("store: no action given; see 'zebtool help store'");
  const auto* const action = std::find_if(kActions.begin(), kActions.end(), [&](const Action& one) {
    return one.name == arguments.front();
  });
  if (action == kActions.end()) {
    throw UsageError("store: there is no action '" + arguments.front() +
                     "'; see 'zebtool help store'");
  }
  return action->run(arguments.subspan(1), console);
}

}  // namespace

const Subcommand kStoreCommand = {"store", "keep the list of disks; recycle their oldest days",
                                  kHelp, RunStore};

}  // namespace zebtool
