#include "platform/os/files/directories.h"

#include <gtest/gtest.h>

#include "tests/support/test_drive.h"

namespace {

TEST(Directories, AreMadeOneLevelAtATimeAndRemovedWhenEmpty) {
  const TestDrive drive;
  drive.MakeFile("file");
  EXPECT_EQ(os::CreateDirectory("d:\\A"), 1);
  EXPECT_EQ(os::CreateDirectory("d:\\a\\b"), 1);
  EXPECT_TRUE(drive.Has("A/b"));
  for (const char* path : {"d:\\a", "d:\\none\\b", "d:\\file", "d:\\file\\x", "e:\\a"}) {
    EXPECT_EQ(os::CreateDirectory(path), 0) << path;
    EXPECT_EQ(os::RemoveDirectory(path), 0) << path;
  }
  EXPECT_EQ(os::RemoveDirectory("d:\\A\\B"), 1);
  EXPECT_EQ(os::RemoveDirectory(drive.File("A")), 1);
  for (const char* path : {"d:\\a", "d:\\file", "e:\\", ""}) {
    EXPECT_EQ(os::IsDirectory(path), 0) << path;
  }
}

TEST(Directories, KeepTheRootOfADriveEvenWhenItIsEmpty) {
  const TestDrive drive;
  for (const char* root : {"d:\\", "d:", "d:\\a\\.."}) {
    EXPECT_EQ(os::RemoveDirectory(root), 0) << root;
    EXPECT_EQ(os::IsDirectory(root), 1) << root;
  }
}

}  // namespace
