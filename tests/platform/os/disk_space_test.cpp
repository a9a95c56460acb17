#include "platform/os/disk_space.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "platform/os/drives.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr ULONGLONG kQuotaBytes = ULONGLONG{8} << 20;

struct Space {
  ULONGLONG m_available = 1;
  ULONGLONG m_total = 2;
  ULONGLONG m_free = 3;
  int m_result = 0;
};

Space SpaceOf(const std::string& path) {
  Space space;
  space.m_result = os::GetDiskFreeSpaceEx(path, &space.m_available, &space.m_total, &space.m_free);
  return space;
}

class DiskSpaceTest : public testing::Test {
 protected:
  DiskSpaceTest() { os::MountDrive('d', Root(), os::DriveKind::kFixed, kQuotaBytes); }
  ~DiskSpaceTest() override { os::UnmountDrive('d'); }

  std::string Root() const { return m_directory.Path().string(); }
  void MakeFile(const std::string& name, std::size_t length) const {
    WriteWholeFile(m_directory.File(name), std::string(length, 'x'));
  }
  ULONGLONG OnDisk(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(lstat(m_directory.File(name).c_str(), &status), 0);
    return static_cast<ULONGLONG>(status.st_blocks) * 512;
  }

  TempDir m_directory;
};

TEST_F(DiskSpaceTest, TellsWhatTheHostsDiskHas) {
  os::MountDrive('d', Root(), os::DriveKind::kFixed);
  const auto host = std::filesystem::space(m_directory.Path());
  for (const std::string& path : {Root(), std::string("d:\\"), std::string("D:")}) {
    const Space space = SpaceOf(path);
    EXPECT_EQ(space.m_result, 1) << path;
    EXPECT_EQ(space.m_total, host.capacity);
    EXPECT_LE(space.m_available, space.m_free);
    EXPECT_LE(space.m_free, space.m_total);
  }
}

TEST_F(DiskSpaceTest, FailsForAMissingPathAndLeavesTheFigures) {
  for (const char* path : {"d:\\none", "e:\\", "", "/none/such"}) {
    const Space space = SpaceOf(path);
    EXPECT_EQ(space.m_result, 0) << path;
    EXPECT_EQ(space.m_available, 1U);
    EXPECT_EQ(space.m_total, 2U);
    EXPECT_EQ(space.m_free, 3U);
  }
}

TEST_F(DiskSpaceTest, TakesTheTreeOffTheQuota) {
  EXPECT_EQ(SpaceOf("d:\\").m_total, kQuotaBytes);
  EXPECT_EQ(SpaceOf("d:\\").m_available, kQuotaBytes);
  std::filesystem::create_directories(m_directory.Path() / "day" / "host");
  MakeFile("day/host/a", 1000000);
  MakeFile("day/b", 1);
  const ULONGLONG taken =
      OnDisk("day") + OnDisk("day/host") + OnDisk("day/host/a") + OnDisk("day/b");
  EXPECT_GE(taken, 1000001U);
  for (const char* path : {"d:\\", "d:", "d:\\day\\host", "d:\\day\\b"}) {
    EXPECT_EQ(SpaceOf(path).m_available, kQuotaBytes - taken) << path;
    EXPECT_EQ(SpaceOf(path).m_total, kQuotaBytes);
    EXPECT_EQ(SpaceOf(path).m_free, kQuotaBytes - taken);
  }
  std::filesystem::remove_all(m_directory.Path() / "day");
  EXPECT_EQ(SpaceOf("d:\\").m_available, kQuotaBytes);
}

TEST_F(DiskSpaceTest, HasNothingLeftBeyondTheQuota) {
  MakeFile("big", kQuotaBytes + 1);
  EXPECT_EQ(SpaceOf("d:\\").m_result, 1);
  EXPECT_EQ(SpaceOf("d:\\").m_available, 0U);
  EXPECT_EQ(SpaceOf("d:\\").m_free, 0U);
}

TEST_F(DiskSpaceTest, NeverHasMoreAvailableThanTheHost) {
  os::MountDrive('d', Root(), os::DriveKind::kFixed, ULONGLONG{1} << 60);
  const Space space = SpaceOf("d:\\");
  EXPECT_EQ(space.m_total, ULONGLONG{1} << 60);
  EXPECT_LE(space.m_available, std::filesystem::space(m_directory.Path()).capacity);
}

TEST_F(DiskSpaceTest, CountsFilesOfSeveralNamesOnceAndFollowsNoLinks) {
  TempDir elsewhere;
  WriteWholeFile(elsewhere.File("x"), std::string(1000000, 'x'));
  MakeFile("a", 100000);
  std::filesystem::create_hard_link(m_directory.File("a"), m_directory.File("b"));
  std::filesystem::create_directory_symlink(elsewhere.Path(), m_directory.File("out"));
  std::filesystem::create_directory_symlink(m_directory.Path(), m_directory.File("round"));
  const ULONGLONG taken = OnDisk("a") + OnDisk("out") + OnDisk("round");
  EXPECT_EQ(SpaceOf("d:\\").m_available, kQuotaBytes - taken);
}

TEST_F(DiskSpaceTest, MeasuresATreeDeeperThanDescriptorsReach) {
  std::filesystem::path path = m_directory.Path();
  ULONGLONG taken = 0;
  for (int depth = 0; depth < 300; ++depth) {
    path /= "d";
    std::filesystem::create_directory(path);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    taken += static_cast<ULONGLONG>(status.st_blocks) * 512;
  }
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit few{100, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  EXPECT_EQ(SpaceOf("d:\\").m_available, kQuotaBytes - taken);
  setrlimit(RLIMIT_NOFILE, &before);
}

}  // namespace
