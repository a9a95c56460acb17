// What a search costs next to a bare loop that lists the directory, opens every file, reads 64
// bytes and closes it, and what memory and days without hits cost it.
#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>

#include <array>

#include "bench/compare.h"
#include "platform/framework/file.h"
#include "platform/os/files/drives.h"
#include "storage/file_search_info.h"
#include "storage/hdd_obj.h"

namespace {

constexpr char kHost[] = "rec";
constexpr DWORD kBegin = 1081785600;  // 2004-04-12 16:00:00 UTC
constexpr DWORD kSecondsPerDay = 86400;
constexpr DWORD kSecondsPerFile = 8;

// A drive of its own with `files` recordings of a few seconds each on one day.
class Disk {
 public:
  explicit Disk(int files) : m_root(BenchPath("search")) {
    std::filesystem::create_directory(m_root);
    os::MountDrive('s', m_root, os::DriveKind::kFixed);
    tag_HDDPARAM param;
    param.m_path = "s:\\";
    Require(m_disk.Create(&param) == 1, "cannot make the disk");
    m_directory = m_disk.GetVideoDir(kHost, CTime(kBegin));
    for (int i = 0; i < files; ++i) MakeRecording(i);
  }
  ~Disk() {
    os::UnmountDrive('s');
    std::filesystem::remove_all(m_root);
  }
  Disk(const Disk&) = delete;
  Disk& operator=(const Disk&) = delete;

  std::string HostDirectory() const { return *os::HostPath(m_directory); }
  CHddObj& Get() { return m_disk; }

  std::size_t Search(CSearchParam criteria) {
    criteria.SetHostName(kHost);
    CFileSearchInfo info(&criteria);
    m_disk.SearchFile(&info);
    return info.GetCount();
  }

 private:
  void MakeRecording(int number) const {
    const DWORD begin = kBegin + static_cast<DWORD>(number) % 3600 * kSecondsPerFile;
    CZebFileInfo info;
    info.SetBeginTime(CTime(begin));
    info.SetEndTime(CTime(begin + kSecondsPerFile));
    info.SetCameraID({0, static_cast<WORD>(number % 16)});
    info.SetCameraName("camera " + std::to_string(number % 16));
    info.SetHostName(kHost);
    CFile file;
    const CString path = HostDirectory() + "/c" + std::to_string(number) + ".zebz";
    Require(file.Open(path, CFile::kModeCreate | CFile::kModeWrite) == 1, "cannot make a file");
    Require(info.Write(&file) > 0, "cannot write a header");
    file.SetLength(64 * 1024);
  }

  std::string m_root;
  CHddObj m_disk;
  CString m_directory;
};

CSearchParam OnDay() {
  CSearchParam criteria;
  criteria.SetDate(kBegin);
  return criteria;
}

// The directory, and 64 bytes of every file in it.
std::size_t ReadBare(const std::string& directory) {
  std::array<char, 64> bytes{};
  std::size_t files = 0;
  DIR* listing = opendir(directory.c_str());
  Require(listing != nullptr, "cannot list the directory");
  while (const dirent* entry = readdir(listing)) {
    if (entry->d_type == DT_DIR) continue;
    const std::string path = directory + "/" + entry->d_name;
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    files += read(descriptor, bytes.data(), bytes.size()) > 0 ? 1U : 0U;
    close(descriptor);
  }
  closedir(listing);
  return files;
}

// Every recording of a day is read; all of them are hits, or one in 16.
void SearchDay(benchmark::State& state) {
  const auto files = static_cast<int>(state.range(0));
  Disk disk(files);
  const std::string directory = disk.HostDirectory();
  CSearchParam criteria = OnDay();
  if (state.range(1) > 1) criteria.SetCameraID({0, 3});
  const auto hits = static_cast<std::size_t>(state.range(0) / state.range(1));
  Compare(
      state, files, [&] { Require(disk.Search(criteria) == hits, "wrong hits"); },
      [&] { Require(ReadBare(directory) == static_cast<std::size_t>(files), "unread files"); });
}
BENCHMARK(SearchDay)->Args({10000, 1})->Args({10000, 16})->UseManualTime()->Iterations(9);

// Thirty days of which one has recordings, next to its directory look-ups and that day alone.
void SearchThirtyDays(benchmark::State& state) {
  constexpr int kDays = 30;
  Disk disk(static_cast<int>(state.range(0)));
  CSearchParam criteria;
  criteria.SetBeginTime(CTime(kBegin - (kDays - 1) * kSecondsPerDay));
  criteria.SetEndTime(CTime(kBegin + kSecondsPerDay / 3));
  const auto files = static_cast<std::size_t>(state.range(0));
  Compare(
      state, kDays, [&] { Require(disk.Search(criteria) == files, "wrong hits"); },
      [&] {
        for (int day = 0; day < kDays - 1; ++day) {
          const CTime time(kBegin - static_cast<DWORD>(day + 1) * kSecondsPerDay);
          Require(disk.Get().GetVideoDirInfo(kHost, time).empty(), "a day too many");
        }
        Require(disk.Search(OnDay()) == files, "wrong hits");
      });
}
BENCHMARK(SearchThirtyDays)->Arg(0)->Arg(100)->UseManualTime()->Iterations(101);

// Everything since 1970 on a disk with ten years of days and one with recordings, next to a bare
// listing of the disk and of each day's directory.
void SearchSince1970(benchmark::State& state) {
  constexpr int kDays = 3650;
  Disk disk(100);
  for (int day = 1; day < kDays; ++day) {
    const CTime time(kBegin - static_cast<DWORD>(day) * kSecondsPerDay);
    Require(!disk.Get().GetVideoDir(kHost, time).empty(), "cannot make a day");
  }
  CSearchParam criteria;
  criteria.SetBeginTime(CTime());
  criteria.SetEndTime(CTime(kBegin + kSecondsPerDay / 3));
  const std::string root = *os::HostPath("s:\\");
  Compare(
      state, kDays, [&] { Require(disk.Search(criteria) == 100, "wrong hits"); },
      [&] {
        std::size_t files = 0;
        DIR* listing = opendir(root.c_str());
        while (const dirent* entry = readdir(listing)) {
          if (entry->d_name[0] == 'd') files += ReadBare(root + "/" + entry->d_name + "/rec/video");
        }
        closedir(listing);
        Require(files == 100, "unread files");
      });
}
BENCHMARK(SearchSince1970)->UseManualTime()->Iterations(21)->Unit(benchmark::kMillisecond);

// Bytes in use for each hit, and for all 10,000 files when nothing is found.
void MemoryOfHits(benchmark::State& state) {
  constexpr int kFiles = 10000;
  Disk disk(kFiles);
  CSearchParam criteria = OnDay();
  criteria.SetHostName(kHost);
  if (state.range(0) == 0) criteria.SetBoardName("none");
  CFileSearchInfo info(&criteria);
  for (auto _ : state) {
    info.Reset();
    const std::size_t before = mallinfo2().uordblks;
    disk.Get().SearchFile(&info);
    const std::size_t kept = mallinfo2().uordblks - before;
    Require(info.GetCount() == static_cast<std::size_t>(state.range(0)), "wrong hits");
    state.counters["bytes"] = static_cast<double>(kept);
    if (!info.IsEmpty()) {
      state.counters["bytes_per_hit"] =
          static_cast<double>(kept) / static_cast<double>(info.GetCount());
    }
  }
}
BENCHMARK(MemoryOfHits)->Arg(0)->Arg(10000)->Iterations(2);

}  // namespace
