#include "storage/hdd_obj.h"
#include "tests/support/disk_fixture.h"

namespace {

using HddDirectoriesTest = DiskTest;

constexpr char kDay[] = "d20040412";

TEST_F(HddDirectoriesTest, StartsWithoutADirectory) {
  const std::unique_ptr<CObject> object(CHddObj::CreateObject());
  ASSERT_TRUE(object->IsKindOf(RUNTIME_CLASS(CHddObj)));
  auto& disk = static_cast<CHddObj&>(*object);
  EXPECT_EQ(disk.GetDbsName(), "ZebDatabase");
  EXPECT_EQ(disk.GetDbsName1(), "ZebDatabase");
  EXPECT_EQ(disk.GetReservedSpace(), 1000U);
  EXPECT_EQ(disk.GetAlarmSpace(), 1050U);
  EXPECT_EQ(disk.IsRecycle(), 0);
  EXPECT_EQ(disk.GetHDD(), "");
  EXPECT_EQ(disk == "", 0);
  for (const CString& directory :
       {disk.GetBaseDir(), disk.GetVideoDir(), disk.GetRemoteVideoDir(), disk.GetPictureDir(),
        disk.GetVideoDir("host", CTime()), disk.GetDir("host", "camera", kZebFileVideo, CTime()),
        disk.GetVideoDirInfo("host", CTime::GetCurrentTime())}) {
    EXPECT_EQ(directory, "");
  }
}

TEST_F(HddDirectoriesTest, TakesARootAsItIsAndADirectoryWithABackslash) {
  for (const auto& [path, base_dir] : {std::pair("D:\\", "d:\\"), std::pair("D:\\Dvr", "d:\\dvr\\"),
                                       std::pair("d:\\dvr\\", "d:\\dvr\\")}) {
    CHddObj disk;
    EXPECT_EQ(Create(disk, path), 1) << path;
    EXPECT_EQ(disk.GetBaseDir(), base_dir);
    EXPECT_EQ(disk.GetHDD(), "d:\\");
    EXPECT_EQ(disk.GetDbsName(), "ZebDatabase(d:\\)");
    EXPECT_EQ(disk.GetDbsName1(), "ZebDatabase");
  }
  EXPECT_TRUE(Has("dvr"));
}

TEST_F(HddDirectoriesTest, RefusesOtherDrivesFilesAndMissingParents) {
  WriteWholeFile(m_d.File("file"), "x");
  os::MountDrive('r', m_d.Path().string(), os::DriveKind::kRemovable);
  os::MountDrive('s', m_d.Path().string(), os::DriveKind::kCdRom);
  CHddObj disk;
  EXPECT_EQ(disk.Create(nullptr), 0);
  for (const char* path : {"", "d", "d:", "d:x", "d:dvr", "r:\\dvr", "s:\\", "x:\\", "d:\\file",
                           "d:\\file\\", "d:\\a\\b", "/tmp", "\\\\server\\share"}) {
    EXPECT_EQ(Create(disk, path), 0) << path;
    EXPECT_EQ(disk.GetBaseDir(), "") << path;
  }
  EXPECT_FALSE(Has("a"));
  os::MountDrive('r', m_d.Path().string(), os::DriveKind::kNetwork);
  EXPECT_EQ(Create(disk, "r:\\dvr"), 1);
  os::UnmountDrive('r');
  os::UnmountDrive('s');
}

TEST_F(HddDirectoriesTest, AFailedCreateLeavesTheNewSwitchesAndTheOldPlace) {
  TestDisk disk;
  tag_HDDPARAM param{7, 1, "d:\\dvr", "Front", 0, "a.wav"};
  ASSERT_EQ(disk.Create(&param), 1);
  EXPECT_EQ(disk.GetDbsName(), "Front(d:\\)");
  param = {0xFFFFFFFF, 0, "x:\\", "Rear", 1, "b.wav"};
  ASSERT_EQ(disk.Create(&param), 0);
  EXPECT_EQ(disk.GetReservedSpace(), 0xFFFFFFFF);
  EXPECT_EQ(disk.GetAlarmSpace(), 49U);
  EXPECT_EQ(disk.IsRecycle(), 0);
  EXPECT_EQ(disk.IsAlarmWhenSpaceNotEnough(), 1);
  EXPECT_EQ(disk.GetAlarmSound(), "b.wav");
  EXPECT_EQ(disk.GetBaseDir(), "d:\\dvr\\");
  EXPECT_EQ(disk.GetDbsName1(), "Front");
}

TEST_F(HddDirectoriesTest, MovesOnItsDriveOnly) {
  CHddObj disk;
  ASSERT_EQ(Create(disk, "d:\\dvr"), 1);
  tag_HDDPARAM param{5, 1, "e:\\dvr", "", 0, ""};
  EXPECT_EQ(disk.ChangeBaseDir(&param), 0);
  EXPECT_EQ(disk.GetReservedSpace(), 0U);  // not even the switches: Create was not asked
  EXPECT_EQ(disk.ChangeBaseDir(nullptr), 0);
  param.m_path = "d:";
  EXPECT_EQ(disk.ChangeBaseDir(&param), 0);
  param.m_path = "D:\\other";
  EXPECT_EQ(disk.ChangeBaseDir(&param), 1);
  EXPECT_EQ(disk.GetBaseDir(), "d:\\other\\");
  EXPECT_EQ(disk == "D:\\elsewhere", 1);
  EXPECT_EQ(disk == "d:", 0);
  EXPECT_EQ(disk == "e:\\other", 0);
}

TEST_F(HddDirectoriesTest, MakesTheTreeOfADayOnce) {
  TestDisk disk;
  ASSERT_EQ(Create(disk, "d:\\"), 1);
  EXPECT_EQ(disk.GetVideoDir("Recorder", CTime()), "d:\\d20040412\\recorder\\video");
  EXPECT_EQ(disk.GetVideoDir("RECORDER", CTime()), "d:\\d20040412\\recorder\\video");
  EXPECT_EQ(disk.GetClipDir("r", CTime()), "d:\\d20040412\\r\\clip");
  EXPECT_EQ(disk.GetAlarmDir("r", CTime()), "d:\\d20040412\\r\\alarm");
  EXPECT_EQ(disk.GetPictureDir("r", CTime()), "d:\\d20040412\\r\\picture");
  EXPECT_EQ(disk.GetLogDir("r", CTime()), "d:\\d20040412\\r\\log");
  EXPECT_EQ(disk.GetFaceDir("r", CTime()), "d:\\d20040412\\r\\face");
  EXPECT_TRUE(Has("d20040412/recorder/video"));
  EXPECT_EQ(disk.Dates(), CDWordArray{DateOf(2004, 4, 12)});
  // Appended, whatever the day.
  EXPECT_EQ(disk.GetVideoDir("r", CTime(2004, 4, 10, 23, 59, 59)), "d:\\d20040410\\r\\video");
  EXPECT_EQ(disk.Dates(), (CDWordArray{DateOf(2004, 4, 12), DateOf(2004, 4, 10)}));
}

TEST_F(HddDirectoriesTest, GetDirLeavesAnEmptyHostOutAndFailsLateOnAnotherType) {
  CHddObj disk;
  ASSERT_EQ(Create(disk, "d:\\"), 1);
  EXPECT_EQ(disk.GetDir("Host", "Cam1", kZebFileFace, CTime()), "d:\\d20040412\\host\\cam1\\face");
  EXPECT_EQ(disk.GetDir("", "Cam2", kZebFileLog, CTime()), "d:\\d20040412\\cam2\\log");
  EXPECT_EQ(disk.GetDir("Host", "Cam3", tag_ZEBFILETYPE{6}, CTime()), "");
  EXPECT_TRUE(Has("d20040412/host/cam3"));
}

TEST_F(HddDirectoriesTest, UndatedGettersKeepTheFoldersCapitals) {
  TestDisk disk;
  ASSERT_EQ(Create(disk, "d:\\dvr"), 1);
  EXPECT_EQ(disk.GetVideoDir(), "d:\\dvr\\local\\d20040412");
  EXPECT_EQ(disk.GetVideoDir(), "d:\\dvr\\local\\d20040412");
  EXPECT_EQ(disk.GetRemoteVideoDir(), "d:\\dvr\\remote\\d20040412");
  EXPECT_EQ(disk.GetPictureDir(), "d:\\dvr\\picture\\d20040412");
  for (const char* folder : {"Local", "Remote", "Picture"}) {
    EXPECT_TRUE(Has(std::string("dvr/") + folder + "/" + kDay)) << folder;
  }
  EXPECT_EQ(disk.Dates(0), CDWordArray{DateOf(2004, 4, 12)});
  EXPECT_EQ(disk.Dates(1), CDWordArray{DateOf(2004, 4, 12)});
  disk.Refresh();  // "Local" is not below the base directory itself
  EXPECT_EQ(disk.GetDirNum(0), 0);
}

TEST_F(HddDirectoriesTest, InfoGettersLookAndMakeNothing) {
  CHddObj disk;
  ASSERT_EQ(Create(disk, "d:\\"), 1);
  const CTime now = CTime::GetCurrentTime();
  EXPECT_EQ(disk.GetVideoDirInfo("r", now), "");
  EXPECT_FALSE(Has(kDay));
  for (const char* leaf : {"video", "clip", "alarm", "picture", "log", "face"}) {
    std::filesystem::create_directories(m_d.Path() / kDay / "r" / leaf);
  }
  EXPECT_EQ(disk.GetVideoDirInfo("R", now), "d:\\d20040412\\r\\video");
  EXPECT_EQ(disk.GetClipDirInfo("r", now), "d:\\d20040412\\r\\clip");
  EXPECT_EQ(disk.GetAlarmDirInfo("r", now), "d:\\d20040412\\r\\alarm");
  EXPECT_EQ(disk.GetPictureDirInfo("r", now), "d:\\d20040412\\r\\picture");
  EXPECT_EQ(disk.GetLogDirInfo("r", now), "d:\\d20040412\\r\\log");
  EXPECT_EQ(disk.GetFaceDirInfo("r", now), "d:\\d20040412\\r\\face");
  EXPECT_EQ(disk.GetVideoDirInfo("r", CTime()), "");  // a day in 1970, not today
  MakeFile("d20040412/file/video", 1);
  EXPECT_EQ(disk.GetVideoDirInfo("file", now), "");
}

TEST_F(HddDirectoriesTest, AFileInThePlaceOfALevelIsAFailure) {
  TestDisk disk;
  ASSERT_EQ(Create(disk, "d:\\"), 1);
  MakeFile("Local", 1);
  EXPECT_EQ(disk.GetVideoDir(), "");
  MakeFile("Picture/D20040412", 1);
  EXPECT_EQ(disk.GetPictureDir(), "");
  MakeFile("d20040412/host/VIDEO", 1);
  EXPECT_EQ(disk.GetVideoDir("host", CTime()), "");
  EXPECT_EQ(disk.GetClipDir("host", CTime()), "d:\\d20040412\\host\\clip");
  MakeFile("d20040411", 1);
  EXPECT_EQ(disk.GetVideoDir("host", CTime(2004, 4, 11, 1, 0, 0)), "");
  EXPECT_EQ(disk.Dates(), CDWordArray());  // the day itself was there already
}

TEST_F(HddDirectoriesTest, NamesNeverLeaveTheDrive) {
  CHddObj disk;
  ASSERT_EQ(Create(disk, "d:\\"), 1);
  const CString odd = "..\\..\\..\\..\\\xC3\x84 *?\"<>|%s";
  EXPECT_NE(disk.GetVideoDir(odd, CTime()), "");
  EXPECT_TRUE(Has("\xC3\x84 *?\"<>|%s/video"));
  EXPECT_EQ(disk.GetVideoDir(CString(5000, 'x'), CTime()), "");
  EXPECT_EQ(disk.GetVideoDir("", CTime()), "d:\\d20040412\\\\video");
  EXPECT_TRUE(Has("d20040412/video"));
}

TEST_F(HddDirectoriesTest, ADriveThatGoesAnswersEmpty) {
  TestDisk disk;
  MakeDirs({"d20040410", "d20040411"});
  ASSERT_EQ(Create(disk, "d:\\"), 1);
  os::UnmountDrive('d');
  EXPECT_EQ(disk.GetVideoDir("r", CTime()), "");
  EXPECT_EQ(disk.GetVideoDir(), "");
  EXPECT_EQ(disk.GetVideoDirInfo("r", CTime(2004, 4, 10, 0, 0, 0)), "");
  EXPECT_EQ(disk.GetDirNum(0), 2);
  disk.Refresh();
  EXPECT_EQ(disk.GetDirNum(0), 0);
}

}  // namespace
