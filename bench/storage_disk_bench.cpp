// What a disk's day list and its recycling cost next to the bare calls for the same.
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <vector>

#include "bench/compare.h"
#include "platform/os/files/drives.h"
#include "storage/day_directory.h"
#include "storage/hdd_obj.h"

using namespace zebx;

namespace {

namespace fs = std::filesystem;

constexpr int kDays = 3650;
constexpr int kFilesPerDay = 1000;
constexpr std::size_t kFileBytes = 4096;

// A mounted drive of its own, removed at the end.
class BenchDrive {
 public:
  BenchDrive() {
    fs::create_directories(m_path);
    os::MountDrive('v', m_path.string(), os::DriveKind::kFixed);
    tag_HDDPARAM param;
    param.m_path = "v:\\";
    Require(m_disk.Create(&param) == 1, "cannot take the disk over");
  }
  ~BenchDrive() {
    os::UnmountDrive('v');
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
  }
  BenchDrive(const BenchDrive&) = delete;
  BenchDrive& operator=(const BenchDrive&) = delete;

  const fs::path& Path() const { return m_path; }
  CHddObj& Disk() { return m_disk; }

  // Directories of days that follow each other, the first at `first`.
  void MakeDays(CTime first, int count) {
    constexpr DWORD kSecondsPerDay = 86400;
    for (int day = 0; day < count; ++day) {
      const CTime noon = first + static_cast<DWORD>(day) * kSecondsPerDay + kSecondsPerDay / 2;
      fs::create_directory(m_path / DayDirectoryName(noon));
    }
    m_disk.Refresh();
    Require(m_disk.GetDirNum(0) == count, "days are missing");
  }

 private:
  const fs::path m_path = BenchPath("disk");
  CHddObj m_disk;
};

// Reads the directory, makes a date of each name, and sorts them.
std::vector<time_t> ListDaysBare(const fs::path& path) {
  std::vector<time_t> dates;
  DIR* directory = opendir(path.c_str());
  while (const dirent* entry = readdir(directory)) {
    std::tm day{};
    const char* name = entry->d_name;
    if (entry->d_type != DT_DIR || std::strlen(name) != 9 || name[0] != 'd') continue;
    const auto number = [&](int from, int to) {
      int value = 0;
      for (int i = from; i < to; ++i) value = value * 10 + (name[i] - '0');
      return value;
    };
    day.tm_year = number(1, 5) - 1900;
    day.tm_mon = number(5, 7) - 1;
    day.tm_mday = number(7, 9);
    day.tm_isdst = -1;
    dates.push_back(std::mktime(&day));
  }
  closedir(directory);
  std::sort(dates.begin(), dates.end());
  return dates;
}

void LoadDayList(benchmark::State& state) {
  BenchDrive drive;
  drive.MakeDays(CTime(2015, 1, 1, 0, 0, 0), kDays);
  Compare(
      state, kDays,
      [&] {
        drive.Disk().Refresh();
        Require(drive.Disk().GetDirNum(0) == kDays, "days are missing");
      },
      [&] { Require(ListDaysBare(drive.Path()).size() == kDays, "days are missing"); });
}
BENCHMARK(LoadDayList)->UseManualTime()->Iterations(40)->Unit(benchmark::kMillisecond);

// Empties a directory as safely as recycling has to: nothing read-only, nothing in use.
void DeleteBare(const CString& root) {
  std::vector<CString> directories = {root};
  for (std::size_t i = 0; i < directories.size(); ++i) {
    const CString path = directories[i] + "/";
    DIR* directory = opendir(path.c_str());
    while (const dirent* entry = readdir(directory)) {
      const CString name = entry->d_name;
      if (name == "." || name == "..") continue;
      const CString entry_path = path + name;
      if (entry->d_type == DT_DIR) {
        directories.push_back(entry_path);
        continue;
      }
      struct stat status {};
      Require(stat(entry_path.c_str(), &status) == 0 && (status.st_mode & S_IWUSR) != 0,
              "cannot delete");
      const int descriptor = open(entry_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
      Require(flock(descriptor, LOCK_EX | LOCK_NB) == 0 && unlink(entry_path.c_str()) == 0,
              "cannot delete");
      close(descriptor);
    }
    closedir(directory);
  }
  // What lies in a directory comes behind it.
  for (; !directories.empty(); directories.pop_back()) {
    Require(rmdir(directories.back().c_str()) == 0, "cannot remove");
  }
}

void RecycleOldestDay(benchmark::State& state) {
  BenchDrive drive;
  const CTime oldest(2015, 1, 1, 0, 0, 0);
  drive.MakeDays(oldest, kDays);
  const fs::path day = drive.Path() / DayDirectoryName(oldest);
  const CString content(kFileBytes, '\x5A');
  Compare(
      state, kFilesPerDay,
      [&] {
        const fs::path leaf = day / "recorder" / "video";
        fs::create_directories(leaf);
        for (int file = 0; file < kFilesPerDay; ++file) {
          std::ofstream(leaf / ("c0001150101" + std::to_string(100000 + file) + ".zebz"))
              << content;
        }
        drive.Disk().Refresh();
      },
      [&] {
        DWORD date;
        DWORD freed_bytes;
        Require(drive.Disk().FindOldestDir(date, 0) == 1, "no oldest day");
        Require(drive.Disk().DeleteDate(date, freed_bytes) == 1 && !fs::exists(day),
                "the day is not gone");
      },
      [&] { DeleteBare(day.string()); });
}
BENCHMARK(RecycleOldestDay)->UseManualTime()->Iterations(40)->Unit(benchmark::kMillisecond);

}  // namespace
