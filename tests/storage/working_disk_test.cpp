#include "storage/working_disk.h"

#include "storage/hdd_obj.h"
#include "tests/support/disk_fixture.h"

namespace {

constexpr ULONGLONG kMb = 1 << 20;

// Two disks of 10 MB; with 100 MB to be reserved both are always short.
class WorkingDiskTest : public DiskTest {
 protected:
  WorkingDiskTest() {
    os::MountDrive('d', m_d.Path().string(), os::DriveKind::kFixed, 10 * kMb);
    os::MountDrive('e', m_e.Path().string(), os::DriveKind::kFixed, 10 * kMb);
    m_window = os::CreateWindow(nullptr, "host", {},
                                [this](HWND, UINT message, WPARAM wparam, LPARAM lparam) {
                                  if (message == 0x46C && wparam == 0) m_told.push_back(lparam);
                                  return LRESULT{0};
                                });
  }
  ~WorkingDiskTest() override { os::DestroyWindow(m_window); }

  void AddDisks(DWORD reserved_mb, int recycle = 1) {
    tag_HDDPARAM param{reserved_mb, recycle, "d:\\", "", 0, ""};
    ASSERT_EQ(m_disk_d.Create(&param), 1);
    param.m_path = "e:\\";
    ASSERT_EQ(m_disk_e.Create(&param), 1);
    m_disks.AddTail(&m_disk_d);
    m_disks.AddTail(&m_disk_e);
  }
  // Makes the day of a disk hold `bytes`.
  void FillDay(const TempDir& drive, int day, std::size_t bytes) {
    MakeFileIn(drive, DayDirectoryName(CTime(2004, 4, day, 0, 0, 0)) + "/file", bytes);
  }
  int Choose() { return ChooseWorkingDisk(m_disks, m_window, m_working_disk); }
  static std::vector<LPARAM> DaysOfApril(std::initializer_list<int> days) {
    std::vector<LPARAM> dates;
    for (const int day : days) dates.push_back(LPARAM{DateOf(2004, 4, day)});
    return dates;
  }

  HWND m_window = nullptr;
  std::vector<LPARAM> m_told;
  TestDisk m_disk_d;
  TestDisk m_disk_e;
  CObList m_disks;
  CString m_working_disk = "x:\\";
};

TEST_F(WorkingDiskTest, JudgesByTheDisksOwnThresholds) {
  DWORD free_mb = 77;
  EXPECT_EQ(CheckWorkingDisk(m_disks, "d:\\", free_mb), kWorkingDiskNone);
  AddDisks(1);
  m_disks.AddHead(nullptr);
  for (const char* none : {"", "d:", "x:\\"}) {
    EXPECT_EQ(CheckWorkingDisk(m_disks, none, free_mb), kWorkingDiskNone) << none;
  }
  EXPECT_EQ(free_mb, 77U);
  EXPECT_EQ(CheckWorkingDisk(m_disks, "D:\\", free_mb), kWorkingDiskShort);  // 10 of 51
  ASSERT_GT(free_mb, 0U);
  const DWORD free_now_mb = free_mb;
  const auto check = [&](DWORD reserved_mb) {
    tag_HDDPARAM param{reserved_mb, 0, "e:\\", "", 0, ""};
    EXPECT_EQ(m_disk_e.Create(&param), 1);
    return CheckWorkingDisk(m_disks, "e:\\", free_mb);
  };
  EXPECT_EQ(check(free_now_mb), kWorkingDiskShort);
  EXPECT_EQ(check(free_now_mb + 1), kWorkingDiskFull);
  os::MountDrive('e', m_e.Path().string(), os::DriveKind::kFixed, 60 * kMb);
  EXPECT_EQ(check(0), kWorkingDiskFine);
  EXPECT_EQ(check(free_mb - 50), kWorkingDiskFine);  // just the alarm space
  EXPECT_EQ(check(free_mb - 49), kWorkingDiskShort);
  os::UnmountDrive('e');
  EXPECT_EQ(CheckWorkingDisk(m_disks, "e:\\", free_mb), kWorkingDiskNone);
}

TEST_F(WorkingDiskTest, TakesTheFirstDiskWithRoomAndDeletesNothing) {
  EXPECT_EQ(Choose(), kNoDiskInList);
  EXPECT_EQ(m_working_disk, "x:\\");
  FillDay(m_d, 10, 5000);
  AddDisks(1);
  m_disks.AddHead(nullptr);
  os::MountDrive('e', m_e.Path().string(), os::DriveKind::kFixed, 60 * kMb);
  EXPECT_EQ(Choose(), kWorkingDiskChosen);
  EXPECT_EQ(m_working_disk, "e:\\");
  EXPECT_EQ(m_disk_d.GetDirNum(0), 1);
  EXPECT_TRUE(m_told.empty());
}

TEST_F(WorkingDiskTest, EmptiesTheWorkingDiskWhenNothingMayGo) {
  FillDay(m_d, 10, 5000);
  FillDay(m_e, 12, 5000);  // today
  AddDisks(100);
  m_disk_d.DisableRecycle();
  EXPECT_EQ(Choose(), kNothingToRecycle);
  EXPECT_EQ(m_working_disk, "");
  EXPECT_EQ(m_disk_d.GetDirNum(0) + m_disk_e.GetDirNum(0), 2);
  // A day later today is yesterday.
  m_clock.Advance(ULONGLONG{24 * 3600 * 1000});
  EXPECT_EQ(Choose(), kWorkingDiskChosen);
  EXPECT_EQ(m_working_disk, "e:\\");
  EXPECT_EQ(m_told, DaysOfApril({12}));
}

TEST_F(WorkingDiskTest, DeletesTheOldestDayAndTellsTheHost) {
  FillDay(m_d, 9, 5000);
  FillDay(m_d, 11, 5000);
  FillDay(m_e, 8, 5000);
  AddDisks(100);
  EXPECT_EQ(Choose(), kWorkingDiskChosen);
  EXPECT_EQ(m_working_disk, "e:\\");
  EXPECT_EQ(m_told, DaysOfApril({8}));
  EXPECT_EQ(m_disk_d.GetDirNum(0), 2);
  os::DestroyWindow(m_window);
  EXPECT_EQ(Choose(), kWorkingDiskChosen);
  EXPECT_EQ(m_working_disk, "d:\\");
  EXPECT_EQ(m_told, DaysOfApril({8}));
  EXPECT_EQ(m_disk_d.Dates(), CDWordArray{DateOf(2004, 4, 11)});
}

TEST_F(WorkingDiskTest, OfTwoDisksWithTheSameOldestDayTheFirstLosesIt) {
  FillDay(m_d, 9, 5000);
  FillDay(m_e, 9, 5000);
  AddDisks(100);
  EXPECT_EQ(Choose(), kWorkingDiskChosen);
  EXPECT_EQ(m_working_disk, "d:\\");
  EXPECT_EQ(m_disk_d.GetDirNum(0), 0);
  EXPECT_EQ(m_disk_e.GetDirNum(0), 1);
}

TEST_F(WorkingDiskTest, AddsBytesToMegabytes) {
  FillDay(m_d, 8, 40);
  FillDay(m_d, 9, 40);
  FillDay(m_d, 10, 40);  // 9 and 3 * 40 make more than 100
  FillDay(m_d, 11, 40);
  AddDisks(100);
  EXPECT_EQ(Choose(), kWorkingDiskChosen);
  EXPECT_EQ(m_told, DaysOfApril({8, 9, 10}));
  EXPECT_EQ(m_disk_d.Dates(), CDWordArray{DateOf(2004, 4, 11)});
}

TEST_F(WorkingDiskTest, ADiskThatLedForAWhileHasHadItsTurn) {
  FillDay(m_d, 8, 10);
  FillDay(m_d, 10, 10);
  FillDay(m_e, 7, 10);
  FillDay(m_e, 9, 10);
  AddDisks(100);
  // 7 beats 8, 9 beats 10, and nothing is left: the first disk was passed over both times.
  EXPECT_EQ(Choose(), kNothingToRecycle);
  EXPECT_EQ(m_told, DaysOfApril({7, 9}));
  EXPECT_EQ(m_disk_d.GetDirNum(0), 2);
  EXPECT_EQ(m_disk_e.GetDirNum(0), 0);
}

TEST_F(WorkingDiskTest, ADayThatFreesNothingIsNotToldAndTheNextGoes) {
  FillDay(m_d, 8, 0);
  FillDay(m_d, 9, 5000);
  AddDisks(100);
  EXPECT_EQ(Choose(), kWorkingDiskChosen);
  EXPECT_EQ(m_told, DaysOfApril({9}));
}

// A disk that does not answer counts as having room from its first turn on.
TEST_F(WorkingDiskTest, ADiskThatIsGoneIsTakenOnItsTurn) {
  FillDay(m_d, 8, 5000);
  FillDay(m_e, 9, 5000);
  AddDisks(100);
  os::UnmountDrive('d');
  EXPECT_EQ(Choose(), kWorkingDiskChosen);
  EXPECT_EQ(m_working_disk, "d:\\");
  EXPECT_TRUE(m_told.empty());
  EXPECT_EQ(Choose(), kWorkingDiskChosen);
  EXPECT_EQ(m_working_disk, "e:\\");
  EXPECT_EQ(m_told, DaysOfApril({9}));
}

}  // namespace
