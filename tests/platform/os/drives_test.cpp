#include "platform/os/drives.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/framework/file.h"
#include "tests/support/temp_dir.h"

namespace {

class DrivesTest : public testing::Test {
 protected:
  DrivesTest() { os::MountDrive('d', Root(), os::DriveKind::kFixed); }
  ~DrivesTest() override {
    for (const char letter : {'d', 'e', 'f'}) os::UnmountDrive(letter);
    os::MountDrive('c', "/", os::DriveKind::kFixed);
  }

  std::string Root() const { return m_directory.Path().string(); }
  void MakeDirectory(const std::string& name) const {
    std::filesystem::create_directories(m_directory.Path() / name);
  }

  TempDir m_directory;
};

TEST_F(DrivesTest, FindsComponentsWhateverTheirCase) {
  MakeDirectory("Dvr/2024-01-01");
  WriteWholeFile(m_directory.File("Dvr/2024-01-01/Cam0.Zebz"), "x");
  const std::string file = Root() + "/Dvr/2024-01-01/Cam0.Zebz";
  EXPECT_EQ(os::HostPath("d:\\dvr\\2024-01-01\\cam0.zebz"), file);
  EXPECT_EQ(os::HostPath("D:/DVR//./2024-01-01\\CAM0.ZEBZ"), file);
  EXPECT_EQ(os::HostPath("d:dvr\\2024-01-01\\Cam0.Zebz"), file);
}

TEST_F(DrivesTest, PrefersTheExactSpellingAndTheFirstInNameOrder) {
  MakeDirectory("dvr");
  MakeDirectory("DVR");
  MakeDirectory("Dvr");
  EXPECT_EQ(os::HostPath("d:\\Dvr"), Root() + "/Dvr");
  EXPECT_EQ(os::HostPath("d:\\dvr"), Root() + "/dvr");
  EXPECT_EQ(os::HostPath("d:\\dVR"), Root() + "/DVR");
}

TEST_F(DrivesTest, TakesWhatIsNotThereAsSpelled) {
  MakeDirectory("Dvr");
  EXPECT_EQ(os::HostPath("d:\\dvr\\New\\File.zebz"), Root() + "/Dvr/New/File.zebz");
}

TEST_F(DrivesTest, OpensFilesWhateverTheirCaseAndMakesNoSecondOne) {
  MakeDirectory("Dvr");
  WriteWholeFile(m_directory.File("Dvr/Cam.zebz"), "four");
  CFile file;
  ASSERT_EQ(file.Open("d:\\dvr\\cam.ZEBZ", CFile::kModeRead), 1);
  EXPECT_EQ(file.GetLengthAtOpening(), 4U);
  file.Close();
  ASSERT_EQ(file.Open("d:\\DVR\\CAM.zebz", CFile::kModeCreate | CFile::kModeWrite), 1);
  EXPECT_EQ(file.GetLengthAtOpening(), 0U);
  EXPECT_EQ(ReadWholeFile(m_directory.File("Dvr/Cam.zebz")), "");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_directory.Path() / "Dvr"), {}), 1);
  CFile missing;
  EXPECT_EQ(missing.Open("d:\\dvr\\none", CFile::kModeRead), 0);
}

TEST_F(DrivesTest, NeverLeavesTheDriveThroughDots) {
  MakeDirectory("dvr");
  WriteWholeFile(m_directory.File("x"), "x");
  EXPECT_EQ(os::HostPath("d:\\..\\..\\..\\x"), Root() + "/x");
  EXPECT_EQ(os::HostPath("d:\\dvr\\..\\..\\etc\\passwd"), Root() + "/etc/passwd");
  EXPECT_EQ(os::HostPath("d:.."), Root());
}

TEST_F(DrivesTest, MakesPathsAbsolute) {
  EXPECT_EQ(os::FullPath("d:\\dvr\\.\\a\\..\\\\b/c"), "d:\\dvr\\b\\c");
  EXPECT_EQ(os::FullPath("D:.."), "D:\\");
  EXPECT_EQ(os::FullPath("/srv/./video/../x"), "/srv/x");
  EXPECT_EQ(os::FullPath("x"), (std::filesystem::current_path() / "x").string());
}

TEST_F(DrivesTest, KnowsTheKindOfMountedDrivesOnly) {
  EXPECT_EQ(os::GetDriveType("d:\\"), os::DriveKind::kFixed);
  EXPECT_EQ(os::GetDriveType("c:\\"), os::DriveKind::kFixed);
  EXPECT_EQ(os::GetDriveType("f:\\x"), os::DriveKind::kNoRoot);
  EXPECT_EQ(os::GetDriveType("/srv"), os::DriveKind::kNoRoot);
  EXPECT_EQ(os::GetDriveType(""), os::DriveKind::kNoRoot);
  EXPECT_FALSE(os::HostPath("f:\\x"));
  EXPECT_EQ(os::HostPath("c:\\"), "/");
  EXPECT_EQ(os::HostPath("1:\\x"), "1:\\x");

  os::UnmountDrive('D');
  EXPECT_EQ(os::GetDriveType("d:\\"), os::DriveKind::kNoRoot);
  EXPECT_FALSE(os::HostPath("d:\\x"));
}

TEST_F(DrivesTest, RefusesMountsWithoutALetterADirectoryOrAKind) {
  EXPECT_EQ(os::MountDrive('1', Root(), os::DriveKind::kFixed), 0);
  EXPECT_EQ(os::MountDrive('e', "", os::DriveKind::kFixed), 0);
  EXPECT_EQ(os::MountDrive('e', Root(), os::DriveKind::kNoRoot), 0);
  EXPECT_EQ(os::GetDriveType("e:\\"), os::DriveKind::kNoRoot);
}

TEST_F(DrivesTest, MountsEveryDriveOfAList) {
  EXPECT_EQ(os::MountDrives("E=/srv/video1;f=/mnt/nas:network;"), 1);
  EXPECT_EQ(os::HostPath("e:\\x"), "/srv/video1/x");
  EXPECT_EQ(os::GetDriveType("e:"), os::DriveKind::kFixed);
  EXPECT_EQ(os::HostPath("f:\\x"), "/mnt/nas/x");
  EXPECT_EQ(os::GetDriveType("f:"), os::DriveKind::kNetwork);
  EXPECT_EQ(os::MountDrives(""), 1);
}

TEST_F(DrivesTest, TakesQuotasFromAList) {
  EXPECT_EQ(os::MountDrives("e=/srv/video1:64M;f=/mnt/nas:network:2g"), 1);
  EXPECT_EQ(os::HostPath("e:\\x"), "/srv/video1/x");
  EXPECT_EQ(os::GetDriveType("e:"), os::DriveKind::kFixed);
  EXPECT_EQ(os::GetDriveQuota("E:\\dvr"), ULONGLONG{64} << 20);
  EXPECT_EQ(os::HostPath("f:\\x"), "/mnt/nas/x");
  EXPECT_EQ(os::GetDriveType("f:"), os::DriveKind::kNetwork);
  EXPECT_EQ(os::GetDriveQuota("f:\\"), ULONGLONG{2} << 30);
  EXPECT_EQ(os::MountDrives("e=/srv:1000;f=/mnt:16777215T"), 1);
  EXPECT_EQ(os::GetDriveQuota("e:\\"), 1000U);
  EXPECT_EQ(os::GetDriveQuota("f:\\"), ULONGLONG{16777215} << 40);
  EXPECT_EQ(os::MountDrives("e=/srv"), 1);
  EXPECT_EQ(os::GetDriveQuota("e:\\"), 0U);
  EXPECT_EQ(os::GetDriveQuota("/srv"), 0U);
}

TEST_F(DrivesTest, MountsNothingOfAListWithABadEntry) {
  for (const char* list : {"e=/srv;f",
                           "e=/srv;f=",
                           "e=/srv;=/mnt",
                           "e=/srv;ff=/mnt",
                           "e=/srv;1=/mnt",
                           "e=/srv;;f=/mnt",
                           "e=/srv;f=/mnt:floppy",
                           "e=/srv;f=:network",
                           "e=/srv;f=/mnt:",
                           "e:/srv",
                           "e=/srv:64M:network",
                           "e=/srv:64M:64M",
                           "e=/srv:0",
                           "e=/srv:M",
                           "e=/srv:-1",
                           "e=/srv:64MB",
                           "e=/srv:fixed:",
                           "e=/srv:1.5G",
                           "e=/srv:16777216T",
                           "e=/srv:18446744073709551616",
                           "e=:64M"}) {
    EXPECT_EQ(os::MountDrives(list), 0) << list;
    EXPECT_EQ(os::GetDriveType("e:\\"), os::DriveKind::kNoRoot) << list;
  }
}

}  // namespace
