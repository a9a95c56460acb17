#include "platform/os/files/directories.h"

#include <gtest/gtest.h>

#include "tests/support/test_drive.h"

namespace {

TEST(Directories, AreMadeOneLevelAtATimeAndRemovedWhenEmptyButForTheRoot) {
  const TestDrive drive;
  drive.MakeFile("file");
  EXPECT_EQ(os::CreateDirectory("d:\\A") + os::CreateDirectory("d:\\a\\b"), 2);
  EXPECT_TRUE(drive.Has("A/b"));
  for (const char* path : {"d:\\a", "d:\\none\\b", "d:\\file", "d:\\file\\x", "e:\\a"}) {
    EXPECT_EQ(os::CreateDirectory(path) + os::RemoveDirectory(path), 0) << path;
  }
  EXPECT_EQ(os::RemoveDirectory("d:\\A\\B") + os::RemoveDirectory(drive.File("A")), 2);
  EXPECT_EQ(os::IsDirectory("d:\\a") + os::IsDirectory("d:\\file") + os::IsDirectory(""), 0);
  std::filesystem::remove(drive.File("file"));
  for (const char* root : {"d:\\", "d:", "d:\\a\\.."}) {  // stays although it is empty
    EXPECT_EQ(os::RemoveDirectory(root), 0) << root;
    EXPECT_EQ(os::IsDirectory(root), 1) << root;
  }
}

}  // namespace
