#include "platform/framework/archive.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/mem_file.h"
#include "tests/support/disk_fixture.h"

namespace {

namespace fs = std::filesystem;

// What a host sees of a disk.
std::string StateOf(const CHddObj& disk) {
  return Words({disk.GetBaseDir(), disk.GetHDD(), disk.GetDbsName(), disk.GetDbsName1(),
                disk.GetReservedSpace(), disk.GetAlarmSpace(), disk.IsRecycle(),
                disk.IsAlarmWhenSpaceNotEnough(), disk.GetAlarmSound(), DaysOf(disk)});
}

using HddDirectories = DiskTest;

TEST_F(HddDirectories, LieOnFixedAndNetworkDrivesOnly) {
  MakeFile("file");
  Mount('n', m_e, os::DriveKind::kNetwork);
  Mount('r', m_e, os::DriveKind::kRemovable);
  Mount('s', m_e, os::DriveKind::kCdRom);
  for (const auto& [path, base_dir] : {std::pair("D:\\", "d:\\"),
                                       {"D:\\Dvr", "d:\\dvr\\"},
                                       {"d:\\dvr\\", "d:\\dvr\\"},
                                       {"D:/", "d:\\"},
                                       {"D:/dvr", "d:\\dvr\\"},
                                       {"n:\\dvr", "n:\\dvr\\"}}) {
    EXPECT_EQ(Words({Create(m_disk, path), m_disk.GetBaseDir()}), CString("1 ") + base_dir);
  }
  EXPECT_TRUE(Has("dvr"));
  for (const CString& path : std::initializer_list<CString>{
           "", "d", "d:", "d:x", "r:\\dvr", "s:\\", "x:\\", "d:\\file", "d:\\file\\", "d:\\a\\b",
           "/tmp", R"(\\server\share)", CString("d:\\dvr\0", 7)}) {
    EXPECT_EQ(Create(m_disk, path), 0) << path;
  }
  EXPECT_FALSE(Has("a"));
  TestDisk nowhere;
  EXPECT_EQ(Words({nowhere == "", nowhere.GetVideoDir(), nowhere.GetVideoDir("rec", CTime()),
                   nowhere.GetVideoDirInfo("rec", CTime())}),
            "0   ");
}

TEST_F(HddDirectories, MoveOnTheirDriveOnlyAndOnFailureKeepPlaceAndNames) {
  tag_HDDPARAM param{7, 1, "d:\\dvr", "Front", 0, "a.wav"};
  MakeDirs({"dvr/d20040410", "other"});
  ASSERT_EQ(m_disk.Create(&param), 1);
  const std::string before = R"(d:\dvr\ d:\ Front(d:\) Front 7 57 1 0 a.wav 410)";
  EXPECT_EQ(StateOf(m_disk), before);
  param = {0xFFFFFFFF, 0, "e:\\", "Rear", 1, "b.wav"};
  EXPECT_EQ(m_disk.ChangeBaseDir(&param), 0);
  EXPECT_EQ(StateOf(m_disk), before);
  param.m_path = "D:\\none\\below";
  EXPECT_EQ(m_disk.ChangeBaseDir(&param), 0);
  EXPECT_EQ(StateOf(m_disk), "d:\\dvr\\ d:\\ Front(d:\\) Front 4294967295 49 0 1 b.wav 410");
  param.m_path = "D:\\other";
  EXPECT_EQ(m_disk.ChangeBaseDir(&param), 1);
  EXPECT_EQ(StateOf(m_disk), "d:\\other\\ d:\\ Rear(d:\\) Rear 4294967295 49 0 1 b.wav ");
  EXPECT_EQ(Words({m_disk == "D:\\dvr", m_disk == "d:", m_disk == "e:\\other", m_disk == "D:/"}),
            "1 0 0 1");
}

TEST_F(HddDirectories, AreMadeInLowerCaseAndTheirDayListedOnce) {
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  const CTime now;
  EXPECT_EQ(m_disk.GetVideoDir("Recorder", now), "d:\\d20040412\\recorder\\video");
  EXPECT_EQ(m_disk.GetDir("Rec", "Cam1", kZebFileFace, now), "d:\\d20040412\\rec\\cam1\\face");
  EXPECT_EQ(m_disk.GetDir("", "Cam2", kZebFileLog, now), "d:\\d20040412\\cam2\\log");
  EXPECT_EQ(m_disk.GetDir("Rec", "Cam3", tag_ZEBFILETYPE{6}, now), "");
  // Whatever the name, it stays on the drive.
  EXPECT_NE(m_disk.GetVideoDir("..\\..\\..\\..\\\xC3\x84 *?\"<>|%s", now), "");
  EXPECT_TRUE(Has("\xC3\x84 *?\"<>|%s/video"));
  EXPECT_EQ(m_disk.GetVideoDir(CString(5000, 'x'), now), "");
  EXPECT_EQ(DaysOf(m_disk), "412");
  // Appended, whatever the day.
  EXPECT_NE(m_disk.GetLogDir("r", CTime(2004, 4, 10, 23, 59, 59)), "");
  EXPECT_EQ(DaysOf(m_disk), "412 410");
  EXPECT_EQ(m_disk.GetVideoDirInfo("Recorder", CTime()), "");  // a day in 1970, not today
}

TEST_F(HddDirectories, OfTodayHaveFoldersWithCapitals) {
  ASSERT_EQ(Create(m_disk, "d:\\dvr"), 1);
  EXPECT_EQ(Words({m_disk.GetVideoDir(), m_disk.GetRemoteVideoDir(), m_disk.GetPictureDir()}),
            "d:\\dvr\\local\\d20040412 d:\\dvr\\remote\\d20040412 d:\\dvr\\picture\\d20040412");
  EXPECT_TRUE(Has("dvr/Local/d20040412") && Has("dvr/Remote/d20040412"));
  EXPECT_EQ(Words({DaysOf(m_disk, 0), DaysOf(m_disk, 1)}), "412 412");
  m_disk.Refresh();  // "Local" is not below the base directory itself
  EXPECT_EQ(DaysOf(m_disk), "");
}

TEST_F(HddDirectories, AreNotMadeWhereAFileIs) {
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  for (const char* file : {"Local", "d20040412/rec/VIDEO", "d20040411"}) MakeFile(file);
  const CTime today = CTime::GetCurrentTime();
  EXPECT_EQ(Words({m_disk.GetVideoDir(), m_disk.GetVideoDir("rec", today),
                   m_disk.GetVideoDirInfo("rec", today), m_disk.GetVideoDir("rec", today - 86400),
                   DaysOf(m_disk)}),
            "    ");
  EXPECT_EQ(m_disk.GetClipDir("rec", today), "d:\\d20040412\\rec\\clip");
  // A link in a day's place is no day to anybody: it is not listed, and recycling leaves it.
  MakeDirs({"elsewhere/rec/video"});
  fs::create_directory_symlink(m_d.File("elsewhere"), m_d.File("d20040410"));
  const CTime linked = today - 2 * 86400;
  EXPECT_EQ(m_disk.GetVideoDir("rec", linked) + m_disk.GetVideoDirInfo("rec", linked), "");
}

TEST_F(HddDirectories, OfDaysAreListedInAscendingOrder) {
  MakeFile("d20040405");
  fs::create_directory_symlink(m_e.Path(), m_d.Path() / "d20040406");
  MakeDirs({"d20040412", "D20040410", "d20041399", "d20040411", "d2004041", "x/d20040101",
            "Remote/d20040302", "Remote/d20040301"});
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  EXPECT_EQ(DaysOf(m_disk, 0) + DaysOf(m_disk, 1), "410 411 412 409");  // of April 2005
  m_disk.LoadRemoteDir();
  EXPECT_EQ(DaysOf(m_disk, 1), "301 302");
  EXPECT_EQ(Words({m_disk.GetDirDate(-1, 0), m_disk.GetDirDate(2, 1)}), "4294967295 4294967295");

  // On the root of a network drive there are none.
  Mount('d', m_d, os::DriveKind::kNetwork);
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  EXPECT_EQ(DaysOf(m_disk), "");
  ASSERT_EQ(Create(m_disk, "d:\\x"), 1);
  EXPECT_EQ(DaysOf(m_disk), "101");
}

TEST_F(HddDirectories, AreFoundByDateUpToTheFirstOlderDay) {
  MakeDirs({"d20040410", "d20040411", "Remote/d20040410", "Remote/d20040305"});
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  const auto find = [this](int month, int day, int remote) {
    return m_disk.FindDate(DateOf(month, day), remote);
  };
  EXPECT_EQ(Words({find(4, 10, 0), find(4, 11, 0), find(4, 9, 0), find(4, 10, 1)}), "1 0 0 1");
  m_disk.LoadRemoteDir();
  EXPECT_EQ(Words({find(3, 5, 1), find(4, 10, 1)}), "1 0");  // an older remote day hides it
}

TEST_F(HddDirectories, CopyWhatTheyAreMeantTo) {
  tag_HDDPARAM param{7, 1, "d:\\", "Front", 1, "a.wav"};
  MakeDirs({"d20040410"});
  ASSERT_EQ(m_disk.Create(&param), 1);
  TestDisk copy;
  copy = m_disk;
  EXPECT_EQ(StateOf(copy), "d:\\ d:\\ Front(d:\\) ZebDatabase 1000 1050 0 0  410");

  CMemFile file;
  CArchive store(file, CArchive::Mode::kStore);
  m_disk.Serialize(store);
  store.Close();
  EXPECT_EQ(std::string(file.GetBytes().begin(), file.GetBytes().end()),
            Little(1) + "\x03" + "d:\\" + "\x0A" + "Front(d:\\)" + Little(7) + Little(1) + "\x05" +
                "a.wav");
  file.SeekToBegin();
  CArchive load(file, CArchive::Mode::kLoad);
  TestDisk loaded;
  loaded.Serialize(load);
  EXPECT_EQ(StateOf(loaded), "d:\\ d:\\ Front(d:\\) ZebDatabase 7 1050 1 1 a.wav ");
  EXPECT_THROW(loaded.Serialize(load), CFileException);
}

TEST_F(HddDirectories, HaveASummaryThatIsReadWholeOrNotAtAll) {
  MakeDirs({"d20040410", "d20040411"});
  ASSERT_EQ(Create(m_disk, "d:\\"), 1);
  m_disk.SetDbsName("N(d)");
  std::vector<BYTE> bytes(m_disk.GetDirSize());
  EXPECT_EQ(m_disk.WriteDirToBuf(bytes.data(), 0), bytes.size());
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), Little(3) + "d:\\" + Little(4) + "N(d)" +
                                                         Little(2) + Little(DateOf(4, 10)) +
                                                         Little(DateOf(4, 11)));
  TestDisk copy;
  const std::string unread = StateOf(copy);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    std::vector<BYTE> cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(Words({copy.ReadDirFromBuf(cut), m_disk.WriteDirToBuf(cut)}), "0 0") << size;
  }
  for (const std::size_t length_at : {0, 7, 15}) {
    std::vector<BYTE> lying = bytes;
    lying[length_at + 3] = 0xFF;
    EXPECT_EQ(copy.ReadDirFromBuf(lying), 0U);
  }
  EXPECT_EQ(StateOf(copy), unread);
  EXPECT_EQ(copy.ReadDirFromBuf(bytes.data(), 0), bytes.size());
  EXPECT_EQ(StateOf(copy), "d:\\ d:\\ N(d) ZebDatabase 1000 1050 0 0  410 411");

  std::vector<BYTE> four(4, 7);  // without a base directory neither name nor days are told
  EXPECT_EQ(Words({TestDisk().WriteDirToBuf(four), copy.ReadDirFromBuf(four)}), "4 4");
}

}  // namespace
