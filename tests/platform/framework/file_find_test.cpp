#include "platform/framework/file_find.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "platform/framework/file_system.h"
#include "platform/os/drives.h"
#include "tests/support/temp_dir.h"

namespace {

class FileFindTest : public testing::Test {
 protected:
  FileFindTest() { os::MountDrive('d', Root(), os::DriveKind::kFixed); }
  ~FileFindTest() override { os::UnmountDrive('d'); }

  std::string Root() const { return m_directory.Path().string(); }
  void MakeFile(const std::string& name, const std::string& bytes = "") const {
    WriteWholeFile(m_directory.File(name), bytes);
  }
  void MakeDirectory(const std::string& name) const {
    std::filesystem::create_directories(m_directory.Path() / name);
  }

  // The walk that the class describes: paths, directories with a separator behind them.
  static std::vector<std::string> Walk(const std::string& pattern) {
    std::vector<std::string> found;
    CFileFind finder;
    int more = finder.FindFile(pattern);
    while (more != 0) {
      more = finder.FindNextFile();
      if (!finder.IsDots())
        found.push_back(finder.GetFilePath() + (finder.IsDirectory() ? "/" : ""));
    }
    return found;
  }

  TempDir m_directory;
};

using Paths = std::vector<std::string>;

TEST_F(FileFindTest, WalksADirectoryInTheOrderOfNamesWhateverTheirCase) {
  for (const char* name : {"b.zebz", "A.zebz", "C.zebz", "a", "~", "!", "_", "aa.zebz"})
    MakeFile(name);
  MakeDirectory("B");
  EXPECT_EQ(Walk("d:\\*.*"), (Paths{"d:\\!", "d:\\_", "d:\\a", "d:\\A.zebz", "d:\\aa.zebz",
                                    "d:\\B/", "d:\\b.zebz", "d:\\C.zebz", "d:\\~"}));
}

TEST_F(FileFindTest, PutsTheDotsBeforeNamesThatSortLower) {
  MakeFile("!");
  MakeFile(".hidden");
  CFileFind finder;
  ASSERT_EQ(finder.FindFile("d:\\*.*"), 1);
  for (const auto& [name, more] :
       std::vector<std::pair<std::string, int>>{{".", 1}, {"..", 1}, {"!", 1}, {".hidden", 0}}) {
    EXPECT_EQ(finder.FindNextFile(), more) << name;
    EXPECT_EQ(finder.GetFileName(), name);
    EXPECT_EQ(finder.IsDots(), name == "." || name == "..");
  }
}

TEST_F(FileFindTest, TakesEveryFormOfAPattern) {
  MakeDirectory("Dvr");
  MakeFile("Dvr/x.zebz");
  const std::string dvr = Root() + "/Dvr";
  for (const auto& [pattern, found] : std::vector<std::pair<std::string, Paths>>{
           {"d:\\*.*", {"d:\\Dvr/"}},
           {"d:/*.*", {"d:/Dvr/"}},
           {"d:*.*", {"d:Dvr/"}},
           {"D:\\dvr\\*.*", {"D:\\dvr\\x.zebz"}},
           {dvr + "/*.*", {dvr + "/x.zebz"}},
           {dvr + "\\*.*", {dvr + "/x.zebz"}},
           {"d:", {"d:/"}},
           {"d:\\", {"d:/"}},
           {"d:\\dvr", {"d:\\dvr/"}},
           {"d:\\dvr\\", {"d:\\dvr/"}},
           {"d:\\dvr\\X.ZEBZ", {"d:\\dvr\\X.ZEBZ"}},
           {dvr, {dvr + "/"}},
           {"/", {"//"}},
           {"d:\\none", {}},
           {"d:\\none\\*.*", {}},
           {"d:\\dvr\\x.zebz\\*.*", {}},
           {"d:\\dvr\\x*.*", {}},
           {"e:\\*.*", {}},
           {"e:", {}},
           {"", {}},
           {"*.*", {}},
           {"\\*.*", {}},
           {"/*.*", {}},
           {"\\/\\*.*", {}},
       }) {
    EXPECT_EQ(Walk(pattern), found) << pattern;
  }
}

TEST_F(FileFindTest, FindsAnEmptyDirectorysDots) {
  CFileFind finder;
  EXPECT_EQ(finder.FindFile("d:\\*.*"), 1);
  EXPECT_EQ(Walk("d:\\*.*"), Paths{});
}

TEST_F(FileFindTest, TellsLengthWriteTimeAndReadOnlyMark) {
  MakeFile("x", "12345");
  const utimbuf times{1081780200, 1081780200};
  ASSERT_EQ(utime(m_directory.File("x").c_str(), &times), 0);
  ASSERT_EQ(chmod(m_directory.File("x").c_str(), 0444), 0);
  CFileFind finder;
  ASSERT_EQ(finder.FindFile("d:\\x"), 1);
  EXPECT_EQ(finder.FindNextFile(), 0);
  EXPECT_EQ(finder.GetFileName(), "x");
  EXPECT_EQ(finder.GetLength(), 5U);
  EXPECT_EQ(finder.GetLastWriteTime().GetTime(), 1081780200U);
  EXPECT_TRUE(finder.IsReadOnly());
  EXPECT_FALSE(finder.IsDirectory());

  std::filesystem::remove(m_directory.File("x"));
  EXPECT_EQ(finder.GetLength(), 0U);
  EXPECT_EQ(finder.GetLastWriteTime().GetTime(), 0U);
  EXPECT_FALSE(finder.IsReadOnly());
}

// A walk that deletes what it finds must not leave the tree through a link.
TEST_F(FileFindTest, TakesALinkInADirectoryForAFile) {
  MakeDirectory("elsewhere");
  std::filesystem::create_directory_symlink(Root() + "/elsewhere", m_directory.Path() / "link");
  std::filesystem::create_symlink(Root() + "/none", m_directory.Path() / "broken");
  EXPECT_EQ(Walk("d:\\*.*"), (Paths{"d:\\broken", "d:\\elsewhere/", "d:\\link"}));
  EXPECT_EQ(Walk("d:\\link"), Paths{"d:\\link/"});
}

TEST_F(FileFindTest, StartsAnewAndKeepsStillWhereThereIsNothing) {
  MakeFile("x");
  CFileFind finder;
  EXPECT_EQ(finder.FindNextFile(), 0);
  EXPECT_EQ(finder.GetFilePath(), "");
  ASSERT_EQ(finder.FindFile("d:\\x"), 1);
  EXPECT_EQ(finder.GetFileName(), "");
  finder.FindNextFile();
  EXPECT_EQ(finder.FindNextFile(), 0);
  EXPECT_EQ(finder.GetFileName(), "x");
  EXPECT_EQ(finder.FindFile("d:\\none"), 0);
  EXPECT_EQ(finder.FindNextFile(), 0);
  EXPECT_EQ(finder.GetFileName(), "");
  EXPECT_FALSE(finder.IsDirectory());
}

}  // namespace
