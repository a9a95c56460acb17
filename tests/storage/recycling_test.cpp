#include "storage/recycling.h"

#include <sys/stat.h>

#include "platform/framework/file.h"
#include "tests/support/disk_fixture.h"

using namespace zebx;

namespace {

// Two disks of 10 MB; with 100 MB to be reserved both are always short. The host window hears of
// the days that go.
class WorkingDisk : public DiskTest {
 public:
  WorkingDisk() {
    MountSmall('d', m_d, 10);
    MountSmall('e', m_e, 10);
    m_window = os::CreateWindow(nullptr, "host", {},
                                [this](HWND, UINT message, WPARAM wparam, LPARAM lparam) {
                                  if (message != 0x46C || wparam != 0) return LRESULT{0};
                                  m_told += CTime(static_cast<DWORD>(lparam)).Format(" %d");
                                  return LRESULT{0};
                                });
  }
  ~WorkingDisk() override { os::DestroyWindow(m_window); }

 protected:
  static void Reserve(CHddObj& disk, const CString& path, DWORD reserved_mb) {
    tag_HDDPARAM param{reserved_mb, 1, path, "", 0, ""};
    ASSERT_EQ(disk.Create(&param), 1);
  }
  void AddDisks(DWORD reserved_mb = 100) {
    Reserve(m_disk_d, "d:\\", reserved_mb);
    Reserve(m_disk_e, "e:\\", reserved_mb);
    m_disks.AddTail(nullptr);
    m_disks.AddTail(&m_disk_d);
    m_disks.AddTail(&m_disk_e);
  }
  // Makes days of April hold `bytes` each.
  static void FillDays(const TempDir& drive, std::initializer_list<int> days,
                       std::size_t bytes = 5000) {
    for (const int day : days) {
      MakeFileIn(drive, CTime(2004, 4, day, 0, 0, 0).Format("d%Y%m%d/file"), bytes);
    }
  }
  // The answer, the working disk, the days told of, and the days that each disk has left.
  std::string Choose() {
    m_told.clear();
    return Words({ChooseWorkingDisk(m_disks, m_window, m_working_disk), m_working_disk + m_told,
                  "|", DaysOf(m_disk_d), "|", DaysOf(m_disk_e)});
  }

  HWND m_window = nullptr;
  std::string m_told;
  TestDisk m_disk_d;
  TestDisk m_disk_e;
  CObList m_disks;
  CString m_working_disk = "x:\\";
};

TEST_F(WorkingDisk, IsJudgedByItsOwnThresholds) {
  AddDisks(1);
  os::UnmountDrive('d');
  DWORD free_mb = 77;
  EXPECT_EQ(Words({CheckWorkingDisk(m_disks, "d:\\", free_mb), free_mb}), "-1 77");
  MountSmall('e', m_e, 60);
  CheckWorkingDisk(m_disks, "e:\\", free_mb);
  ASSERT_GT(free_mb, 51U);
  for (const auto& [reserved_mb, judged] : {std::pair(free_mb - 50, kWorkingDiskFine),
                                            {free_mb - 49, kWorkingDiskShort},
                                            {free_mb, kWorkingDiskShort},
                                            {free_mb + 1, kWorkingDiskFull}}) {
    Reserve(m_disk_e, "e:\\", reserved_mb);
    EXPECT_EQ(CheckWorkingDisk(m_disks, "E:\\", free_mb), judged);
  }
}

TEST_F(WorkingDisk, IsTheFirstWithMoreThanItsAlarmSpace) {
  AddDisks(1);
  MountSmall('e', m_e, 60);
  EXPECT_EQ(Choose(), "0 e:\\ |  | ");
  DWORD total_mb, used_mb, free_mb;
  m_disk_e.GetHDDSpace(total_mb, used_mb, free_mb);
  Reserve(m_disk_e, "e:\\", free_mb - 50);  // the alarm space is just what is free
  EXPECT_EQ(Choose(), "1  |  | ");
}

TEST_F(WorkingDisk, CountsFreedBytesAsMegabytes) {
  FillDays(m_d, {8, 9, 10, 11}, 32);  // 9 MB and 3 * 32 make more than 100
  AddDisks();
  EXPECT_EQ(Choose(), "0 d:\\ 08 09 10 | 411 | ");
}

TEST_F(WorkingDisk, IsForecastWithTheDaysThatWillGo) {
  FillDays(m_d, {8, 9}, 40);
  FillDays(m_e, {10}, 60);
  MakeFile("d20040408/host/..\\..\\d20040408/file", 2);  // on the host one name
  // Links go as such, and free nothing.
  std::filesystem::create_symlink(m_d.File("d20040409/file"), m_d.File("d20040408/link"));
  AddDisks();
  const auto forecast = [this] {
    const RecyclingForecast is = ForecastRecycling(m_disks);
    std::string days = is.m_working_disk != nullptr ? is.m_working_disk->GetHDD() : "none";
    for (const DayToDelete& day : is.m_days) {
      days += " " + Words({day.m_disk->GetHDD(), day.m_day.GetDay(), day.m_bytes});
    }
    return days;
  };
  EXPECT_EQ(forecast(), "none d:\\ 8 42 d:\\ 9 40 e:\\ 10 60");
  EXPECT_EQ(Choose(), "1  08 09 10 |  | ");
}

TEST_F(WorkingDisk, PassesOverADiskThatLedForAWhile) {
  FillDays(m_d, {8, 10}, 10);
  FillDays(m_e, {7, 9}, 10);
  AddDisks();
  // 7 beats 8, 9 beats 10, and nothing is left: the first disk was passed over both times.
  EXPECT_EQ(Choose(), "1  07 09 | 408 410 | ");
}

TEST_F(WorkingDisk, GoesOnToTheNextDayWhereNothingCouldBeFreed) {
  FillDays(m_d, {7, 8, 10});
  FillDays(m_d, {6}, 0);
  AddDisks();
  chmod(m_d.File("d20040407/file").c_str(), 0444);
  CFile open;
  ASSERT_EQ(open.Open("d:\\d20040408\\file", CFile::kModeRead | CFile::kShareDenyNone), 1);
  EXPECT_EQ(Choose(), "0 d:\\ 10 |  | ");
  EXPECT_TRUE(Has("d20040407/file") && Has("d20040408/file"));
}

// A disk that does not answer counts as having room from its first turn on.
TEST_F(WorkingDisk, MayBeOneThatIsGone) {
  FillDays(m_d, {8, 9}, 10);
  FillDays(m_e, {10});
  AddDisks();
  os::UnmountDrive('d');
  EXPECT_EQ(Choose(), "0 d:\\ | 409 | 410");
}

}  // namespace
