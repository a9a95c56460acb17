// zebtool store: the disks of a database, their room and their recycling.
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "platform/os/clock.h"
#include "platform/os/files/directories.h"
#include "platform/os/files/drives.h"
#include "storage/dbs.h"
#include "storage/default_disk.h"
#include "storage/recycling.h"
#include "tools/zebtool/commands/commands.h"
#include "tools/zebtool/console/command_line.h"
#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/disks/database_session.h"
#include "tools/zebtool/disks/store_repair.h"
#include "tools/zebtool/disks/store_report.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::size_t kDriveChars = 2;

constexpr Bounds kReservedMb = {0, 0x7FFFFFFF};

struct Settings {
  DatabaseOptions database;
  std::string disk;  // a directory, or what names a disk of the list
  std::optional<DWORD> reserved_mb;
  bool recycle = false;
  std::string name;
  bool alarm = false;
  std::string alarm_sound;
  bool dry_run = false;
  std::optional<CTime> now;
  std::optional<CTime> date;  // its noon
  bool json = false;
};

// Throws JobError for a directory that is on no drive.
tag_HDDPARAM DiskOf(const Settings& settings) {
  tag_HDDPARAM disk;
  disk.m_path = settings.disk;
  if (disk.m_path.find(':') != 1) {
    throw UsageError("DIR is a library path with a drive letter, such as d:\\dvr, not '" +
                     disk.m_path + "'");
  }
  if (os::GetDriveType(disk.m_path) == os::DriveKind::kNoRoot) {
    throw JobError("no drive is mounted for '" + disk.m_path +
                   "'; mount it with --drive or ZEBX_DRIVES");
  }
  disk.m_reserved_mb = settings.reserved_mb.value_or(kDefaultReservedMb);
  disk.m_recycle = settings.recycle ? 1 : 0;
  disk.m_database_name = settings.name;
  disk.m_alarm_when_space_not_enough = settings.alarm ? 1 : 0;
  disk.m_alarm_sound = settings.alarm_sound;
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

int Init(const Settings& settings, Console& console) {
  const bool has_first_disk = !settings.disk.empty();
  if (has_first_disk == !settings.database.data_directory.empty()) {
    throw UsageError("give the directory of a first disk, or --data");
  }
  if (has_first_disk) {
    MakeFirstDisk(settings.database, DiskOf(settings));
  } else {
    DatabaseSession(settings.database, DatabaseSession::Start::kNew).Save();
  }
  ShowDisks(DatabaseSession(settings.database), console);
  return kExitGood;
}

int Add(const Settings& settings, Console& console) {
  const DatabaseSession database(settings.database);
  tag_HDDPARAM disk = DiskOf(settings);
  if (dbsAddHDD(&disk) == 0) {
    throw JobError("cannot add '" + disk.m_path +
                   "': its drive has a disk already or is neither fixed nor a network's, or its "
                   "directory cannot be made");
  }
  database.Save();
  ShowDisks(database, console);
  return kExitGood;
}

int Remove(const Settings& settings, Console& console) {
  const std::string& which = settings.disk;
  const DatabaseSession database(settings.database);
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

// Prints what a report has to say in the form that was asked for.
using PrintText = void (DiskReport::*)(std::ostream& out) const;
using PutJson = void (DiskReport::*)(Json& json) const;

int Show(const Settings& settings, PrintText print, PutJson put, Console& console) {
  const DatabaseSession database(settings.database);
  const auto disks = database.Disks();
  const DiskReport report{disks, database.WorkingDisk()};
  if (settings.json) {
    Json json;
    (report.*put)(json);
    console.out << JsonText(std::move(json)) << '\n';
  } else {
    (report.*print)(console.out);
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

int Check(const Settings& settings, Console& console) {
  const DatabaseSession database(settings.database);
  DWORD free_mb = 0;
  const int state = dbsCheckWorkHDD(&free_mb);
  const std::string disk = database.WorkingDisk();
  const std::string words = WordsFor(state);
  if (settings.json) {
    console.out << JsonText({{"working_disk", disk},
                             {"result", state},
                             {"words", words},
                             {"free_mb", free_mb}})
                << '\n';
  } else if (state == kWorkingDiskNone) {
    console.out << words << '\n';
  } else {
    console.out << disk << ": " << words << ", " << FormatCount(free_mb) << " MB free\n";
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

int Recycle(const Settings& settings, Console& console) {
  const CTime now = settings.now.value_or(CTime::GetCurrentTime());
  const os::SteppedClock clock(now.GetTime(), os::GetTickCount());
  const DatabaseSession database(
      settings.database, DatabaseSession::Start::kExisting,
      [&](CTime day) { console.out << "deleted " << FormatDay(day) << '\n'; });
  if (settings.dry_run) {
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

int Repair(const Settings& settings, Console& console) {
  const DatabaseSession database(settings.database);
  std::vector<std::string> directories;
  for (const CHddObj* disk : database.Disks()) {
    const CString directory =
        disk->GetBaseDir() + (settings.date ? settings.date->Format("d%Y%m%d") : CString());
    if (os::IsDirectory(directory) != 0) directories.push_back(directory);
  }
  if (directories.empty()) throw JobError("no disk has anything of that day");
  return RepairDirectories(directories, settings.json, console);
}

void AddDiskOptions(const Command& command, Settings& settings) {
  command.Heading("disk");
  command.Option("--reserved", "MB", settings.reserved_mb, kReservedMb,
                 "a disk with less space free is recycled or left; default 1000");
  command.Flag("--recycle", settings.recycle, "the disk's oldest days may be deleted");
  command.Option("--name", "NAME", settings.name, "the disk's name; default: ZebDatabase");
  command.Flag("--alarm", settings.alarm, "an alarm is given when space runs short");
  command.Option("--alarm-sound", "FILE", settings.alarm_sound, "its sound");
}

}  // namespace

void AddStore(const Command& root) {
  const auto settings = std::make_shared<Settings>();
  const Command store = root.Sub("store", "keep the list of disks; recycle their oldest days");
  store.Describe(
      "Keeps the list of disks in a database file: at most one disk a drive, in a directory such "
      "as d:\\dvr.");
  store.Explain("'zebtool help store SUBCOMMAND' tells what each takes.");
  const auto add = [&](const char* name, const char* summary,
                       int (*job)(const Settings&, Console&)) {
    Command command = store.Sub(name, summary);
    AddDatabaseOptions(command, settings->database);
    command.Does([settings, job](Console& console) { return job(*settings, console); });
    return command;
  };

  const Command init =
      add("init", "make a database with a first disk, or with the default disk", Init);
  init.Usage({"DIR --db FILE [disk options]", "--data DIR --db FILE"});
  init.Describe(
      "Makes a database file with a first disk in DIR, or with the default disk below the data "
      "directory.");
  init.OptionalArgument("DIR", settings->disk, "the directory of the first disk, such as d:\\dvr");
  AddDiskOptions(init, *settings);

  const Command add_disk = add("add", "take another disk into the list", Add);
  add_disk.Usage({"DIR --db FILE [disk options]"});
  add_disk.Argument("DIR", settings->disk, "the directory of the disk, such as e:\\dvr");
  AddDiskOptions(add_disk, *settings);

  const Command remove = add("remove", "take a disk out of the list; its files stay", Remove);
  remove.Usage({"DIR|INDEX --db FILE"});
  remove.Argument("DIR|INDEX", settings->disk, "as 'zebtool store disks' shows them");

  const Command disks =
      add("disks", "show every disk with its thresholds, space and days",
          [](const Settings& given, Console& console) {
            return Show(given, &DiskReport::PrintDisks, &DiskReport::PutDisks, console);
          });
  disks.Describe(
      "Shows every disk with its thresholds, space and days, and which one is the working disk.");
  const Command space =
      add("space", "show the room on every disk", [](const Settings& given, Console& console) {
        return Show(given, &DiskReport::PrintSpace, &DiskReport::PutSpace, console);
      });
  const Command check = add("check", "judge the working disk", Check);
  check.Describe(
      "Judges the working disk: exit status 0 when recording can go on there, also below the alarm "
      "space; 1 below the reserved space and without a working disk.");
  const Command repair =
      add("repair", "finish the recordings that a crash left unfinished", Repair);
  repair.Describe(
      "Finishes every unfinished recording on the disks that nobody has open, each at once: it "
      "keeps all of its whole frames. Says which recordings are damaged beyond that; 'zebtool "
      "salvage' saves what is intact of them. Exit status: 1 when there are any, or a recording or "
      "directory cannot be read.");
  repair.Option("--date", "YYYY-MM-DD", settings->date, ParseNoon, "YYYY-MM-DD",
                "of this day alone");
  for (const Command& command : {disks, space, check, repair}) {
    command.Usage({"--db FILE [--json]"});
    command.Flag("--json", settings->json, "as JSON");
  }
  repair.Usage({"--db FILE [--date DAY] [--json]"});

  const Command recycle =
      add("recycle", "choose a disk with room, or delete the oldest day", Recycle);
  recycle.Usage({"--db FILE [--dry-run] [--now TIME]"});
  recycle.Describe("Chooses a disk with room, or else deletes the oldest day.");
  recycle.Flag("--dry-run", settings->dry_run, "only says what would be done");
  recycle.Option("--now", "TIME", settings->now, ParseTime, kTimeForm,
                 "days before this one may be deleted, \"YYYY-MM-DD HH:MM:SS\"; default: today");
}

}  // namespace zebtool
