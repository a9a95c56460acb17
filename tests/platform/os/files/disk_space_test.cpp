#include "platform/os/files/disk_space.h"
#include "platform/framework/file_system.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <vector>

#include "tests/support/test_drive.h"

namespace {

constexpr ULONGLONG kQuotaBytes = ULONGLONG{8} << 20;

struct Space {
  ULONGLONG m_available = 1;
  ULONGLONG m_total = 2;
  ULONGLONG m_free = 3;
  bool operator==(const Space&) const = default;
};

Space SpaceOf(const std::string& path, int result = 1) {
  Space space;
  EXPECT_EQ(os::GetDiskFreeSpaceEx(path, &space.m_available, &space.m_total, &space.m_free), result)
      << path;
  return space;
}

// What a drive of so many bytes has left when the entries of the drive are the only ones.
Space LeftBeside(const TestDrive& drive, const std::vector<std::string>& entries) {
  ULONGLONG left = kQuotaBytes;
  for (const std::string& entry : entries) {
    struct stat status {};
    EXPECT_EQ(lstat(drive.File(entry).c_str(), &status), 0) << entry;
    left -= static_cast<ULONGLONG>(status.st_blocks) * 512;
  }
  return {left, kQuotaBytes, left};
}

TEST(DiskSpace, IsTheHostDisksUnlessThereIsNoSuchPath) {
  const TestDrive drive;
  const auto host = std::filesystem::space(drive.Path());
  for (const std::string& path : {drive.Root(), std::string("d:\\"), std::string("D:")}) {
    const Space space = SpaceOf(path);
    EXPECT_EQ(space.m_total, host.capacity);
    EXPECT_LE(space.m_available, space.m_free);
    EXPECT_LE(space.m_free, space.m_total);
  }
  for (const char* path : {"d:\\none", "e:\\", "", "/none/such"}) {
    EXPECT_EQ(SpaceOf(path, 0), Space());
  }
}

TEST(DiskSpace, IsWhatTheTreeLeavesOfTheQuotaAndNeverMoreThanTheHostHas) {
  const TestDrive drive(kQuotaBytes);
  drive.MakeDirectory("day/host");
  drive.MakeFile("day/host/a", std::string(1000000, 'x'));
  drive.MakeFile("day/b");
  const Space space = LeftBeside(drive, {"day", "day/host", "day/host/a", "day/b"});
  EXPECT_LE(space.m_free, kQuotaBytes - 1000001);
  for (const char* path : {"d:\\", "d:", "d:\\day\\host", "d:\\day\\b"}) {
    EXPECT_EQ(SpaceOf(path), space) << path;
  }
  const auto file = zebx::NativeFileSystem().Open("d:\\day\\b", {.m_read = true, .m_write = true});
  EXPECT_TRUE(file->Reserve(1, 1 << 20));
  EXPECT_EQ(SpaceOf("d:\\"), space) << "what is reserved counts as free";
  drive.MakeFile("big", std::string(kQuotaBytes, 'x'));
  EXPECT_EQ(SpaceOf("d:\\"), (Space{0, kQuotaBytes, 0}));

  constexpr ULONGLONG kHuge = ULONGLONG{1} << 60;
  os::MountDrive('d', drive.Root(), os::DriveKind::kFixed, kHuge);
  EXPECT_EQ(SpaceOf("d:\\").m_total, kHuge);
  EXPECT_LT(SpaceOf("d:\\").m_free, kHuge / 2);
}

TEST(DiskSpace, CountsFilesOfSeveralNamesOnceAndFollowsNoLinks) {
  const TestDrive drive(kQuotaBytes);
  TempDir elsewhere;
  WriteWholeFile(elsewhere.File("x"), std::string(1000000, 'x'));
  drive.MakeFile("a", std::string(100000, 'x'));
  std::filesystem::create_hard_link(drive.File("a"), drive.File("b"));
  std::filesystem::create_directory_symlink(elsewhere.Path(), drive.File("out"));
  std::filesystem::create_directory_symlink(drive.Path(), drive.File("round"));
  EXPECT_EQ(SpaceOf("d:\\"), LeftBeside(drive, {"a", "out", "round"}));
}

}  // namespace
