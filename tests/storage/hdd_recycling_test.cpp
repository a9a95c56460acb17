#include <sys/stat.h>

#include "platform/framework/file.h"
#include "platform/os/directories.h"
#include "storage/hdd_obj.h"
#include "tests/support/disk_fixture.h"

namespace {

namespace fs = std::filesystem;

class HddRecyclingTest : public DiskTest {
 protected:
  // Deletes 10 April 2004 and expects what it freed.
  void ExpectDeleted(int result, DWORD freed_bytes) {
    DWORD freed = 77;
    EXPECT_EQ(m_disk.DeleteDate(kDate, freed), result);
    EXPECT_EQ(freed, freed_bytes);
  }

  const DWORD kDate = DateOf(2004, 4, 10);
  TestDisk m_disk;
};

TEST_F(HddRecyclingTest, FindsTheFirstDayAfterAnother) {
  MakeDirs({"d20040410", "d20040412"});
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  DWORD date = 77;
  EXPECT_EQ(m_disk.FindOldestDir(date, 0), 1);
  EXPECT_EQ(date, kDate);
  EXPECT_EQ(m_disk.FindOldestDir(date, kDate), 1);
  EXPECT_EQ(date, DateOf(2004, 4, 12));
  EXPECT_EQ(m_disk.FindOldestDir(date, date), 0);
  EXPECT_EQ(date, 0U);
}

TEST_F(HddRecyclingTest, DeletesADayWithEverythingInIt) {
  MakeFile("dvr/D20040410/host/video/a.zebz", 100);
  MakeFile("dvr/D20040410/host/video/deeper/b.zebz", 20);
  MakeFile("dvr/D20040410/odd \xC3\x84*?%s name", 3);
  MakeFile("dvr/Local/d20040410/c.zebz", 1000);
  MakeFile("dvr/d20040411/d.zebz", 1000);
  ASSERT_EQ(Create(m_disk, "d:\\dvr"), 1);
  DWORD freed = 77;
  EXPECT_EQ(m_disk.DeleteDate(DateOf(2004, 4, 9), freed), 0);
  EXPECT_EQ(freed, 0U);
  ExpectDeleted(1, 123);
  EXPECT_FALSE(Has("dvr/D20040410"));
  EXPECT_TRUE(Has("dvr/Local/d20040410/c.zebz"));
  EXPECT_TRUE(Has("dvr/d20040411/d.zebz"));
  EXPECT_EQ(m_disk.Dates(), CDWordArray{DateOf(2004, 4, 11)});
  ExpectDeleted(0, 0);
}

TEST_F(HddRecyclingTest, TheAnswerTellsOfBytesNotOfTheDay) {
  MakeDirs({"d20040410/host/video"});
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  ExpectDeleted(0, 0);
  EXPECT_FALSE(Has("d20040410"));
  EXPECT_EQ(m_disk.GetDirNum(0), 0);
}

TEST_F(HddRecyclingTest, StopsAtAReadOnlyFileAndComesBackOnRefresh) {
  MakeFile("d20040410/a", 10);
  MakeFile("d20040410/b", 20);
  MakeFile("d20040410/c", 40);
  chmod(m_d.File("d20040410/b").c_str(), 0444);
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  ExpectDeleted(1, 10);
  EXPECT_TRUE(Has("d20040410/b"));
  EXPECT_TRUE(Has("d20040410/c"));
  EXPECT_EQ(m_disk.GetDirNum(0), 0);
  m_disk.Refresh();
  EXPECT_EQ(m_disk.GetDirNum(0), 1);
  ExpectDeleted(0, 0);
}

TEST_F(HddRecyclingTest, LeavesARecordingInUse) {
  MakeFile("d20040410/host/video/a", 10);
  MakeFile("d20040410/other/b", 20);
  CFile open;
  ASSERT_EQ(open.Open("d:\\d20040410\\other\\b", CFile::kModeRead | CFile::kShareDenyNone), 1);
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  ExpectDeleted(1, 10);
  EXPECT_FALSE(Has("d20040410/host"));
  EXPECT_TRUE(Has("d20040410/other/b"));
  open.Close();
  m_disk.Refresh();
  ExpectDeleted(1, 20);
}

TEST_F(HddRecyclingTest, NeverFollowsALink) {
  MakeFileIn(m_e, "precious/a", 10);
  MakeFile("d20040410/file", 5);
  const fs::path day = m_d.Path() / "d20040410";
  fs::create_directory_symlink(m_e.Path() / "precious", day / "directory");
  fs::create_symlink(m_e.Path() / "precious/a", day / "link");
  fs::create_directory_symlink(day, day / "loop");
  fs::create_symlink("nothing", day / "dangling");
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  ExpectDeleted(1, 5);
  EXPECT_FALSE(Has("d20040410"));
  EXPECT_TRUE(fs::exists(m_e.Path() / "precious/a"));

  // A day that turns into a link after it was listed.
  MakeDirs({"d20040410"});
  m_disk.Refresh();
  fs::remove(day);
  fs::create_directory_symlink(m_e.Path() / "precious", day);
  ExpectDeleted(0, 0);
  EXPECT_TRUE(fs::exists(m_e.Path() / "precious/a"));
}

// On the host a backslash is a letter like others.
TEST_F(HddRecyclingTest, ANameWithBackslashesLeadsNowhere) {
  MakeFile("d20040410/..\\d20040411\\file", 10);
  MakeFile("d20040410/..\\d20040411/other", 20);
  MakeFile("d20040411/file", 1000);
  MakeFile("d20040411/other", 1000);
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  ExpectDeleted(1, 30);
  EXPECT_FALSE(Has("d20040410"));
  EXPECT_TRUE(Has("d20040411/file"));
  EXPECT_TRUE(Has("d20040411/other"));
}

TEST_F(HddRecyclingTest, TakesADayThatBecameAFileOrWentForGone) {
  MakeDirs({"d20040410", "d20040411"});
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  fs::remove(m_d.Path() / "d20040410");
  MakeFile("d20040410", 10);
  ExpectDeleted(0, 0);
  EXPECT_TRUE(Has("d20040410"));
  os::UnmountDrive('d');
  DWORD freed;
  EXPECT_EQ(m_disk.DeleteDate(DateOf(2004, 4, 11), freed), 0);
  EXPECT_EQ(m_disk.GetDirNum(0), 0);
}

TEST_F(HddRecyclingTest, EmptiesADeepTree) {
  constexpr int kLevels = 500;
  std::string path = "d20040410";
  for (int level = 0; level < kLevels; ++level) path += "/x";
  MakeFile(path + "/file", 10);
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  ExpectDeleted(1, 10);
  EXPECT_FALSE(Has("d20040410"));
}

TEST_F(HddRecyclingTest, DeleteDirWantsADirectoryBelowTheRootOfADrive) {
  MakeFile("file", 10);
  MakeDirs({"empty"});
  DWORD freed = 77;
  for (const CString& path :
       {CString("d:\\none"), CString("d:\\file"), CString("x:\\dir"), CString("d:\\"),
        CString("d:"), CString("d:\\empty\\.."), m_d.File("empty"), m_d.Path().string()}) {
    EXPECT_EQ(CHddObj::DeleteDir(path, freed), 0) << path;
    EXPECT_EQ(freed, 0U) << path;
  }
  EXPECT_TRUE(Has("file"));
  EXPECT_TRUE(Has("empty"));
  EXPECT_EQ(CHddObj::DeleteDir("d:\\empty", freed), 1);
  EXPECT_FALSE(Has("empty"));
}

TEST_F(HddRecyclingTest, LooksForFilesInOneDirectory) {
  MakeFile("a/deeper/file", 1);
  EXPECT_EQ(TestDisk::IsAnyFile("d:\\a"), 0);
  EXPECT_EQ(TestDisk::IsAnyFile("d:\\a\\deeper"), 1);
  EXPECT_EQ(TestDisk::IsAnyFile("d:\\a\\deeper\\file"), 0);
  EXPECT_EQ(TestDisk::IsAnyFile("d:\\none"), 0);
}

// Days of 23 and 25 hours, on both sides of Greenwich, and one without a midnight.
TEST_F(HddRecyclingTest, DeletesTheVeryDayInEveryTimeZone) {
  for (const auto& [zone, days] :
       {std::pair("Europe/Berlin", std::array{"d20240330", "d20240331", "d20240401"}),
        std::pair("Australia/Sydney", std::array{"d20240406", "d20240407", "d20240408"}),
        std::pair("America/New_York", std::array{"d20241102", "d20241103", "d20241104"}),
        std::pair("America/Sao_Paulo", std::array{"d20181103", "d20181104", "d20181105"})}) {
    const ScopedTimeZone scope(zone);
    for (const char* day : days) MakeFile(std::string(day) + "/file", 1);
    ASSERT_EQ(Create(m_disk, "d:\\"), 1);
    for (const char* day : days) {
      DWORD date;
      DWORD freed;
      ASSERT_EQ(m_disk.FindOldestDir(date, 0), 1) << zone << ' ' << day;
      EXPECT_EQ(m_disk.DeleteDate(date, freed), 1) << zone << ' ' << day;
      EXPECT_FALSE(Has(day)) << zone;
    }
  }
}

}  // namespace
