#include "platform/framework/file_find.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <utility>

#include "tests/support/test_drive.h"

namespace {

using Paths = std::vector<std::string>;

// The walk that the class describes: paths, directories with a separator behind them.
Paths Walk(const std::string& pattern) {
  Paths found;
  CFileFind finder;
  int more = finder.FindFile(pattern);
  while (more != 0) {
    more = finder.FindNextFile();
    if (!finder.IsDots()) found.push_back(finder.GetFilePath() + (finder.IsDirectory() ? "/" : ""));
  }
  return found;
}

class FileFind : public testing::Test {
 protected:
  const TestDrive m_drive;
};

TEST_F(FileFind, TakesEveryFormOfAPattern) {
  m_drive.MakeDirectory("Dvr/Empty");
  m_drive.MakeFile("Dvr/x.zebz");
  const std::string dvr = m_drive.File("Dvr");
  const std::pair<std::string, Paths> cases[] = {
      {"d:/*.*", {"d:/Dvr/"}},
      {"d:*.*", {"d:Dvr/"}},
      {R"(D:\dvr\*.*)", {R"(D:\dvr\Empty/)", R"(D:\dvr\x.zebz)"}},
      {dvr + "/*.*", {dvr + "/Empty/", dvr + "/x.zebz"}},
      {"d:\\", {"d:/"}},
      {R"(d:\dvr\X.ZEBZ)", {R"(d:\dvr\X.ZEBZ)"}},
      {dvr, {dvr + "/"}},
      {"/", {"//"}},
  };
  for (const auto& [pattern, found] : cases) EXPECT_EQ(Walk(pattern), found) << pattern;
  for (const char* pattern : {"d:\\none", R"(d:\none\*.*)", R"(d:\dvr\x*.*)", "e:\\*.*", "", "*.*",
                              "/*.*", R"(\/\*.*)"}) {
    EXPECT_EQ(CFileFind().FindFile(pattern), 0) << pattern;
  }
  EXPECT_EQ(CFileFind().FindFile("d:\\dvr\\empty\\*.*"), 1);  // its dots
}

TEST_F(FileFind, TellsLengthWriteTimeAndReadOnlyMarkUntilTheFileGoes) {
  m_drive.MakeFile("x", "12345");
  const utimbuf times{1081780200, 1081780200};
  ASSERT_EQ(utime(m_drive.File("x").c_str(), &times), 0);
  ASSERT_EQ(chmod(m_drive.File("x").c_str(), 0444), 0);
  CFileFind finder;
  ASSERT_EQ(finder.FindFile("d:\\x"), 1);
  EXPECT_EQ(finder.GetFileName() + finder.GetFilePath(), "");
  EXPECT_EQ(finder.FindNextFile(), 0);
  EXPECT_EQ(finder.GetLength(), 5U);
  EXPECT_EQ(finder.GetLastWriteTime().GetTime(), 1081780200U);
  EXPECT_TRUE(finder.IsReadOnly());
  std::filesystem::remove(m_drive.File("x"));
  EXPECT_EQ(finder.GetLength() + finder.GetLastWriteTime().GetTime(), 0U);
}

// Bytes from 0x80 come behind ASCII whatever the compiler's char is.
TEST_F(FileFind, GoesByNameWhateverTheCaseAndTakesALinkForAFile) {
  for (const char* name : {"b.zebz", "A.zebz", "C.zebz", "a", "~", "!", "_", "aa", "\xC3\x84"}) {
    m_drive.MakeFile(name);
  }
  m_drive.MakeDirectory("B");
  std::filesystem::create_directory_symlink(m_drive.File("B"), m_drive.File("link"));
  std::filesystem::create_symlink(m_drive.File("none"), m_drive.File("broken"));
  const Paths names = {"d:!",      "d:_",      "d:a",      "d:A.zebz", "d:aa", "d:B/",
                       "d:b.zebz", "d:broken", "d:C.zebz", "d:link",   "d:~",  "d:\xC3\x84"};
  EXPECT_EQ(Walk("d:*.*"), names);
}

}  // namespace
