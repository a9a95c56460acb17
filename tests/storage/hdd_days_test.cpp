#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "tests/support/disk_fixture.h"

namespace {

namespace fs = std::filesystem;

class HddRecycling : public DiskTest {
 protected:
  void Load() { ASSERT_EQ(Create(m_disk, "d:\\"), 1); }
  // Deletes a day of April: the answer and the bytes it freed.
  std::string Delete(int day = 10) {
    DWORD freed = 77;
    return Words({m_disk.DeleteDate(DateOf(4, day), freed), freed});
  }
};

TEST_F(HddRecycling, DeletesADayWithEverythingInIt) {
  MakeFile("dvr/D20040410/host/video/a.zebz", 100);
  MakeFile("dvr/D20040410/odd \xC3\x84*?%s name", 3);
  MakeFile("dvr/Local/d20040410/c.zebz", 1000);
  MakeFile("dvr/d20040411/d.zebz", 1000);
  MakeDirs({"dvr/d20040412/host/video"});
  ASSERT_EQ(Create(m_disk, "d:\\dvr"), 1);
  EXPECT_EQ(Words({Delete(9), Delete(10), Delete(10)}), "0 0 1 103 0 0");
  EXPECT_FALSE(Has("dvr/D20040410"));
  EXPECT_TRUE(Has("dvr/Local/d20040410/c.zebz") && Has("dvr/d20040411/d.zebz"));
  EXPECT_EQ(Delete(12), "0 0");  // of bytes, not of the day
  EXPECT_FALSE(Has("dvr/d20040412"));
  EXPECT_EQ(DaysOf(m_disk), "411");
}

TEST_F(HddRecycling, StopsAtAFileThatStaysUntilTheNextRefresh) {
  MakeFile("d20040410/a/a", 10);
  MakeFile("d20040410/b", 20);
  MakeFile("d20040410/c", 40);
  chmod(m_d.File("d20040410/b").c_str(), 0444);
  Load();
  EXPECT_EQ(Words({Delete(), Has("d20040410/a"), DaysOf(m_disk)}), "1 10 0 ");
  m_disk.Refresh();
  EXPECT_EQ(Delete(), "0 0");
  chmod(m_d.File("d20040410/b").c_str(), 0644);
  m_disk.Refresh();
  EXPECT_EQ(Delete(), "1 60");
}

// On the host a backslash is a letter like others.
TEST_F(HddRecycling, NeverLeavesTheDayByALinkOrAName) {
  MakeFileIn(m_e, "precious/a", 10);
  MakeFile("d20040411/file", 1000);
  MakeFile("d20040410/..\\d20040411\\file", 10);
  MakeFile("d20040410/..\\d20040411/other", 20);
  const fs::path day = m_d.Path() / "d20040410";
  fs::create_directory_symlink(m_e.Path() / "precious", day / "directory");
  fs::create_symlink(m_e.Path() / "precious/a", day / "link");
  fs::create_directory_symlink(day, day / "loop");
  Load();
  EXPECT_EQ(Words({Delete(), Has("d20040410"), Has("d20040411/file")}), "1 30 0 1");

  // A day that turns into a link after it was listed.
  MakeDirs({"d20040410"});
  m_disk.Refresh();
  fs::remove(day);
  fs::create_directory_symlink(m_e.Path() / "precious", day);
  EXPECT_EQ(Delete(), "0 0");
  EXPECT_TRUE(fs::exists(m_e.Path() / "precious/a"));
}

// Deeper than the system takes a path, and with what is no file.
TEST_F(HddRecycling, DeletesADayHoweverDeepItIs) {
  MakeDirs({"d20040410"});
  const int day = open(m_d.File("d20040410").c_str(), O_PATH | O_DIRECTORY);
  const std::string name(200, 'n');
  int at = dup(day);
  for (int depth = 0; depth < 25; ++depth) {
    ASSERT_EQ(mkdirat(at, name.c_str(), 0755), 0);
    const int next = openat(at, name.c_str(), O_PATH | O_DIRECTORY);
    close(std::exchange(at, next));
  }
  const int file = openat(at, "file", O_CREAT | O_WRONLY, 0644);
  ASSERT_EQ(write(file, "12345", 5), 5);
  EXPECT_EQ(mkfifoat(at, "pipe", 0600), 0);
  for (const int descriptor : {file, at, day}) close(descriptor);
  Load();
  EXPECT_EQ(Words({Delete(), Has("d20040410")}), "1 5 0");
}

TEST_F(HddRecycling, WantsADirectoryBelowTheRootOfADrive) {
  MakeFile("file/inside");
  MakeDirs({"empty"});
  DWORD freed = 77;
  for (const CString& path : {CString("d:\\file\\inside"), CString("x:\\dir"), CString("d:\\"),
                              CString("d:"), CString("d:\\empty\\.."), m_d.File("empty")}) {
    EXPECT_EQ(Words({CHddObj::DeleteDir(path, freed), freed}), "0 0") << path;
  }
  EXPECT_EQ(CHddObj::DeleteDir("d:\\empty", freed), 1);
  EXPECT_TRUE(Has("file/inside") && !Has("empty"));
}

}  // namespace
