#include "tools/zebtool/disks/store_report.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "tools/zebtool/console/text.h"

namespace zebtool {
namespace {

constexpr int kLocal = 0;
constexpr int kDaysPerLine = 6;

struct Space {
  bool known = false;
  DWORD total_mb = 0;
  DWORD used_mb = 0;
  DWORD free_mb = 0;
};

Space SpaceOf(const CHddObj& disk) {
  Space space;
  space.known = disk.GetHDDSpace(space.total_mb, space.used_mb, space.free_mb) != 0;
  return space;
}

std::string SpaceLine(const CHddObj& disk) {
  const Space space = SpaceOf(disk);
  if (!space.known) return "the disk does not answer";
  return FormatCount(space.free_mb) + " MB free, " + FormatCount(space.used_mb) + " MB used of " +
         FormatCount(space.total_mb) + " MB";
}

void PutSpaceOf(Json& json, const CHddObj& disk) {
  const Space space = SpaceOf(disk);
  json["answers"] = space.known;
  json["total_mb"] = space.total_mb;
  json["used_mb"] = space.used_mb;
  json["free_mb"] = space.free_mb;
}

std::vector<std::string> DaysOf(const CHddObj& disk) {
  std::vector<std::string> days;
  days.reserve(static_cast<std::size_t>(disk.GetDirNum(kLocal)));
  for (int index = 0; index < disk.GetDirNum(kLocal); ++index) {
    days.push_back(FormatDay(CTime(disk.GetDirDate(index, kLocal))));
  }
  return days;
}

void PrintDays(std::ostream& out, const std::vector<std::string>& days) {
  out << "  days       " << Plural(days.size(), "day");
  int count = 0;
  for (const std::string& day : days) {
    out << (count++ % kDaysPerLine == 0 ? "\n             " : " ") << day;
  }
  out << '\n';
}

}  // namespace

void DiskReport::PrintDisks(std::ostream& out) const {
  int index = 0;
  for (const CHddObj* disk : disks) {
    const bool is_working = disk->GetDbsName() == working_disk;
    out << index++ << ' ' << disk->GetDbsName() << (is_working ? ", the working disk" : "") << '\n'
        << "  directory  " << disk->GetBaseDir() << '\n'
        << "  space      " << SpaceLine(*disk) << '\n'
        << "  reserved   " << FormatCount(disk->GetReservedSpace()) << " MB; alarm below "
        << FormatCount(disk->GetAlarmSpace()) << " MB "
        << (disk->IsAlarmWhenSpaceNotEnough() != 0 ? "on" : "off");
    if (!disk->GetAlarmSound().empty()) out << ", sound " << disk->GetAlarmSound();
    out << '\n' << "  recycle    " << (disk->IsRecycle() != 0 ? "yes" : "no") << '\n';
    PrintDays(out, DaysOf(*disk));
  }
  if (working_disk.empty()) out << "there is no working disk\n";
}

void DiskReport::PutDisks(Json& json) const {
  json["working_disk"] = working_disk;
  json["disks"] = Json::array();
  for (const CHddObj* disk : disks) {
    Json entry = {{"index", json["disks"].size()},
                  {"name", disk->GetDbsName()},
                  {"directory", disk->GetBaseDir()},
                  {"working", disk->GetDbsName() == working_disk},
                  {"reserved_mb", disk->GetReservedSpace()},
                  {"alarm_mb", disk->GetAlarmSpace()},
                  {"alarm", disk->IsAlarmWhenSpaceNotEnough() != 0},
                  {"alarm_sound", disk->GetAlarmSound()},
                  {"recycle", disk->IsRecycle() != 0}};
    PutSpaceOf(entry, *disk);
    entry["days"] = DaysOf(*disk);
    json["disks"].push_back(std::move(entry));
  }
}

void DiskReport::PrintSpace(std::ostream& out) const {
  for (const CHddObj* disk : disks) out << disk->GetDbsName() << ": " << SpaceLine(*disk) << '\n';
}

void DiskReport::PutSpace(Json& json) const {
  json["disks"] = Json::array();
  for (const CHddObj* disk : disks) {
    Json entry = {{"name", disk->GetDbsName()}};
    PutSpaceOf(entry, *disk);
    json["disks"].push_back(std::move(entry));
  }
}

}  // namespace zebtool
