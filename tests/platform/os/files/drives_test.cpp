#include "platform/os/files/drives.h"

#include <gtest/gtest.h>

#include <sstream>
#include <utility>

#include "tests/support/test_drive.h"

namespace {

class Drives : public testing::Test {
 protected:
  void TearDown() override {
    for (const char letter : {'e', 'f'}) os::UnmountDrive(letter);
  }

  const TestDrive m_drive;
};

TEST_F(Drives, FindComponentsWhateverTheirCaseAndTakeTheOthersAsSpelled) {
  for (const char* name : {"Dvr/Day", "twice", "TWICE", "Twice", "twicE", "TWice"}) {
    m_drive.MakeDirectory(name);
  }
  m_drive.MakeFile("Dvr/Day/Cam0.Zebz");
  const std::pair<const char*, const char*> cases[] = {
      {R"(d:\dvr\DAY\cam0.zebz)", "/Dvr/Day/Cam0.Zebz"},
      {"D:/DVR//./Day\\CAM0.ZEBZ", "/Dvr/Day/Cam0.Zebz"},
      {R"(d:dvr\Day\Cam0.Zebz)", "/Dvr/Day/Cam0.Zebz"},
      {"d:\\Twice", "/Twice"},
      {"d:\\twice", "/twice"},
      {"d:\\tWICE", "/TWICE"},  // the first in name order
      {R"(d:\dvr\New\File.zebz)", "/Dvr/New/File.zebz"},
      // Never outside the drive.
      {R"(d:\..\..\twice)", "/twice"},
      {R"(d:\dvr\..\..\etc\passwd)", "/etc/passwd"},
      {"d:..", ""},
  };
  for (const auto& [path, below_root] : cases) {
    EXPECT_EQ(os::HostPath(path), m_drive.Root() + below_root) << path;
  }
}

TEST_F(Drives, AreKnownByTheirLettersUntilTheyAreUnmounted) {
  EXPECT_EQ(os::GetDriveType("c:\\"), os::DriveKind::kFixed);
  EXPECT_EQ(os::HostPath("c:\\"), "/");
  EXPECT_EQ(os::GetDriveType("D:\\x"), os::DriveKind::kFixed);
  for (const char* path : {"/srv", "1:\\x", ""}) {
    EXPECT_EQ(os::GetDriveType(path), os::DriveKind::kNoRoot) << path;
    EXPECT_EQ(os::HostPath(path), path);
  }
  EXPECT_EQ(os::FullPath("/srv/./video/../x"), "/srv/x");
  EXPECT_EQ(os::FullPath("x"), (std::filesystem::current_path() / "x").string());
  os::UnmountDrive('D');
  EXPECT_EQ(os::MountDrive('1', m_drive.Root(), os::DriveKind::kFixed), 0);
  EXPECT_EQ(os::MountDrive('d', "", os::DriveKind::kFixed), 0);
  EXPECT_EQ(os::MountDrive('d', m_drive.Root(), os::DriveKind::kNoRoot), 0);
  EXPECT_EQ(os::GetDriveType("d:\\"), os::DriveKind::kNoRoot);
  EXPECT_FALSE(os::HostPath("d:\\x"));
}

// The system would take such a path for what stands before the zero byte: a directory for one of
// its entries, and so a tree that has no end.
TEST_F(Drives, LeadNowhereWithAZeroByte) {
  for (const char* path : {"d:\\", "/"}) {
    const CString with_zero = path + CString(1, '\0') + "x";
    EXPECT_FALSE(os::HostPath(with_zero) || os::SpelledHostPath(with_zero)) << path;
  }
  EXPECT_EQ(os::MountDrive('d', CString("/\0", 2), os::DriveKind::kFixed), 0);
}

TEST_F(Drives, AreMountedFromAListWithKindsAndQuotas) {
  const struct {
    const char *m_list, *m_path;
    os::DriveKind m_kind;
    ULONGLONG m_quota_bytes;
  } cases[] = {
      {"E=/srv;f=/mnt:network;", "/mnt/x", os::DriveKind::kNetwork, 0},
      {"e=/srv;f=/mnt:64M", "/mnt/x", os::DriveKind::kFixed, ULONGLONG{64} << 20},
      {"e=/srv:1K;f=/:cdrom:2g", "/x", os::DriveKind::kCdRom, ULONGLONG{2} << 30},
      {"f=/mnt:1000", "/mnt/x", os::DriveKind::kFixed, 1000},
      {"f=/mnt:16777215T", "/mnt/x", os::DriveKind::kFixed, ULONGLONG{16777215} << 40},
      {"", "/mnt/x", os::DriveKind::kFixed, ULONGLONG{16777215} << 40},  // as it was
      {"f=/mnt:ramdisk", "/mnt/x", os::DriveKind::kRamDisk, 0},
  };
  for (const auto& [list, path, kind, quota_bytes] : cases) {
    EXPECT_EQ(os::MountDrives(list), 1) << list;
    EXPECT_EQ(os::HostPath("f:\\x"), path) << list;
    EXPECT_EQ(os::GetDriveType("F:"), kind) << list;
    EXPECT_EQ(os::GetDriveQuota("F:\\dvr"), quota_bytes) << list;
  }
  EXPECT_EQ(os::HostPath("e:\\x"), "/srv/x");
  EXPECT_EQ(os::GetDriveQuota("/srv"), 0U);
}

TEST_F(Drives, AreNotMountedFromAListWithABadEntry) {
  std::istringstream entries(
      "f f= =/mnt ff=/mnt 1=/mnt ;f=/mnt f=:network f=:64M f=/mnt: f:/mnt f=/:floppy f=/:64M:64M "
      "f=/:0 f=/:M f=/:-1 f=/:64MB f=/:fixed: f=/:1.5G f=/:1M:fixed f=/:16777216T "
      "f=/:18446744073709551616");
  for (std::string bad; entries >> bad;) {
    EXPECT_EQ(os::MountDrives("e=/srv;" + bad), 0) << bad;
    EXPECT_EQ(os::GetDriveType("e:\\"), os::DriveKind::kNoRoot) << bad;
  }
}

}  // namespace
