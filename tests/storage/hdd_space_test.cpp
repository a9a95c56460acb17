#include "platform/os/disk_space.h"
#include "storage/hdd_obj.h"
#include "tests/support/disk_fixture.h"

namespace {

using HddSpaceTest = DiskTest;

constexpr ULONGLONG kMb = 1 << 20;

TEST_F(HddSpaceTest, CountsMegabytesOfTheQuota) {
  os::MountDrive('d', m_d.Path().string(), os::DriveKind::kFixed, 10 * kMb + kMb / 2);
  MakeFile("d20040410/file", 3 * kMb);
  CHddObj disk;
  ASSERT_EQ(Create(disk, "d:\\"), 1);
  DWORD total;
  DWORD used;
  DWORD free;
  ASSERT_EQ(disk.GetHDDSpace(total, used, free), 1);
  EXPECT_EQ(total, 10U);
  EXPECT_EQ(used, 3U);
  EXPECT_EQ(free, 7U);
  EXPECT_EQ(CHddObj::GetHDDSpace("d:", total, used, free), 1);
}

TEST_F(HddSpaceTest, AFailureLeavesTheFigures) {
  DWORD total = 1;
  DWORD used = 2;
  DWORD free = 3;
  const CHddObj without_directory;
  EXPECT_EQ(without_directory.GetHDDSpace(total, used, free), 0);
  for (const char* path : {"", "d", "/", "x:\\", "d:\\none"}) {
    EXPECT_EQ(CHddObj::GetHDDSpace(path, total, used, free), 0) << path;
  }
  EXPECT_EQ(total, 1U);
  EXPECT_EQ(used, 2U);
  EXPECT_EQ(free, 3U);
}

}  // namespace
