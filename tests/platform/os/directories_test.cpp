#include "platform/os/directories.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/os/drives.h"
#include "tests/support/temp_dir.h"

namespace {

class DirectoriesTest : public testing::Test {
 protected:
  DirectoriesTest() { os::MountDrive('d', m_directory.Path().string(), os::DriveKind::kFixed); }
  ~DirectoriesTest() override { os::UnmountDrive('d'); }

  TempDir m_directory;
};

TEST_F(DirectoriesTest, MakesOneLevelAtATime) {
  EXPECT_EQ(os::CreateDirectory("d:\\a\\b"), 0);
  EXPECT_EQ(os::CreateDirectory("d:\\A"), 1);
  EXPECT_EQ(os::CreateDirectory("d:\\a"), 0);
  EXPECT_EQ(os::CreateDirectory("d:\\a\\b"), 1);
  EXPECT_TRUE(std::filesystem::is_directory(m_directory.Path() / "A" / "b"));
  WriteWholeFile(m_directory.File("file"), "x");
  EXPECT_EQ(os::CreateDirectory("d:\\file"), 0);
  EXPECT_EQ(os::CreateDirectory("d:\\file\\x"), 0);
  EXPECT_EQ(os::CreateDirectory("e:\\a"), 0);
}

TEST_F(DirectoriesTest, RemovesEmptyDirectoriesOnly) {
  os::CreateDirectory("d:\\a");
  os::CreateDirectory("d:\\a\\b");
  WriteWholeFile(m_directory.File("file"), "x");
  EXPECT_EQ(os::RemoveDirectory("d:\\a"), 0);
  EXPECT_EQ(os::RemoveDirectory("d:\\file"), 0);
  EXPECT_EQ(os::RemoveDirectory("d:\\none"), 0);
  EXPECT_EQ(os::RemoveDirectory("d:\\A\\B"), 1);
  EXPECT_EQ(os::RemoveDirectory(m_directory.File("a")), 1);
  EXPECT_FALSE(std::filesystem::exists(m_directory.Path() / "a"));
}

TEST_F(DirectoriesTest, KeepsTheRootOfADrive) {
  for (const char* root : {"d:\\", "d:", "d:\\a\\.."}) {
    EXPECT_EQ(os::RemoveDirectory(root), 0) << root;
    EXPECT_EQ(os::IsDirectory(root), 1) << root;
  }
}

TEST_F(DirectoriesTest, KnowsDirectoriesFromEverythingElse) {
  os::CreateDirectory("d:\\a");
  WriteWholeFile(m_directory.File("file"), "x");
  EXPECT_EQ(os::IsDirectory("D:\\A\\"), 1);
  EXPECT_EQ(os::IsDirectory("d:\\file"), 0);
  EXPECT_EQ(os::IsDirectory("d:\\none"), 0);
  EXPECT_EQ(os::IsDirectory("e:\\"), 0);
  EXPECT_EQ(os::IsDirectory(""), 0);
}

}  // namespace
