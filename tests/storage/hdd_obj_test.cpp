// A disk: the directories of its days, their list, and deleting them.
#include "storage/hdd_obj.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "platform/framework/archive.h"
#include "platform/framework/file_exception.h"
#include "platform/framework/mem_file.h"
#include "storage/day_directory.h"
#include "tests/support/disk_fixture.h"

using namespace zebx;

namespace {

namespace fs = std::filesystem;

TEST(DayDirectory, IsADInEitherCaseAndEightDigitsOfABareName) {
  const ScopedTimeZone zone("UTC");
  constexpr DWORD kNone = 77;
  // 99 December and a month is 9 April 2005; what 32 bits of seconds do not hold is 0.
  const std::pair<const char*, DWORD> kCases[] = {
      {"d20040412", 1081728000}, {"D20040412", 1081728000}, {"d20041399", 1113004800},
      {"d19690101", 0},          {"d21060208", 0},          {"d2004041", kNone},
      {"d200404120", kNone},     {"e20040412", kNone},      {"d-0040412", kNone}};
  for (const auto& [name, expected] : kCases) {
    CTime date(kNone);
    const bool is_day = expected != kNone;
    EXPECT_EQ(Words({CHddObj::IsVideoDir(name), CHddObj::GetVideoDirDate(date, name)}),
              Words({is_day, is_day}));
    EXPECT_EQ(date.GetTime(), expected) << name;
  }
}

// Days of 23 and 25 hours, without a midnight and with two, also by a change of the standard time.
// What recycling deletes is the name made of the date, so it has to be the name that gave the date.
TEST(DayDirectory, NameDateAndMidnightAgreeOnEveryDay) {
  for (const char* zone :
       {"UTC", "America/New_York", "America/Sao_Paulo", "Europe/Berlin", "Africa/Casablanca",
        "Asia/Amman", "Asia/Kathmandu", "Asia/Singapore", "Africa/Monrovia", "Asia/Pyongyang",
        "America/St_Johns", "Antarctica/Casey", "Australia/Lord_Howe", "Pacific/Kiritimati"}) {
    const ScopedTimeZone scope(zone);
    for (DWORD noon = 31579200; noon < 2000000000; noon += 86400) {
      const CTime date = MidnightOf(CTime(noon));
      const CString name = DayDirectoryName(CTime(noon));
      ASSERT_EQ(DayDirectoryName(date), name) << zone;
      ASSERT_EQ(ParseDayDirectoryName(name), date) << zone << ' ' << name;
      ASSERT_NE(DayDirectoryName(date - 1), name) << zone;
    }
  }
}

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

  // Of today, in folders with capitals.
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

class HddRecycling : public DiskTest {
 protected:
  void Load() { ASSERT_EQ(Create(m_disk, "d:\\"), 1); }
  // Deletes a day of April: the answer and the bytes it freed.
  std::string Delete(int day = 10) {
    DWORD freed = 77;
    return Words({m_disk.DeleteDate(DateOf(4, day), freed), freed});
  }
};

TEST_F(HddRecycling, DeletesADayWithEverythingInIt) {
  MakeFile("dvr/D20040410/host/video/a.zebz", 100);
  MakeFile("dvr/D20040410/odd \xC3\x84*?%s name", 3);
  MakeFile("dvr/Local/d20040410/c.zebz", 1000);
  MakeFile("dvr/d20040411/d.zebz", 1000);
  MakeDirs({"dvr/d20040412/host/video"});
  ASSERT_EQ(Create(m_disk, "d:\\dvr"), 1);
  EXPECT_EQ(Words({Delete(9), Delete(10), Delete(10)}), "0 0 1 103 0 0");
  EXPECT_FALSE(Has("dvr/D20040410"));
  EXPECT_TRUE(Has("dvr/Local/d20040410/c.zebz") && Has("dvr/d20040411/d.zebz"));
  EXPECT_EQ(Delete(12), "0 0");  // of bytes, not of the day
  EXPECT_FALSE(Has("dvr/d20040412"));
  EXPECT_EQ(DaysOf(m_disk), "411");
}

TEST_F(HddRecycling, StopsAtAFileThatStaysUntilTheNextRefresh) {
  MakeFile("d20040410/a/a", 10);
  MakeFile("d20040410/b", 20);
  MakeFile("d20040410/c", 40);
  chmod(m_d.File("d20040410/b").c_str(), 0444);
  Load();
  EXPECT_EQ(Words({Delete(), Has("d20040410/a"), DaysOf(m_disk)}), "1 10 0 ");
  m_disk.Refresh();
  EXPECT_EQ(Delete(), "0 0");
  chmod(m_d.File("d20040410/b").c_str(), 0644);
  m_disk.Refresh();
  EXPECT_EQ(Delete(), "1 60");
}

// On the host a backslash is a letter like others.
TEST_F(HddRecycling, NeverLeavesTheDayByALinkOrAName) {
  MakeFileIn(m_e, "precious/a", 10);
  MakeFile("d20040411/file", 1000);
  MakeFile("d20040410/..\\d20040411\\file", 10);
  MakeFile("d20040410/..\\d20040411/other", 20);
  const fs::path day = m_d.Path() / "d20040410";
  fs::create_directory_symlink(m_e.Path() / "precious", day / "directory");
  fs::create_symlink(m_e.Path() / "precious/a", day / "link");
  fs::create_directory_symlink(day, day / "loop");
  Load();
  EXPECT_EQ(Words({Delete(), Has("d20040410"), Has("d20040411/file")}), "1 30 0 1");

  // A day that turns into a link after it was listed.
  MakeDirs({"d20040410"});
  m_disk.Refresh();
  fs::remove(day);
  fs::create_directory_symlink(m_e.Path() / "precious", day);
  EXPECT_EQ(Delete(), "0 0");
  EXPECT_TRUE(fs::exists(m_e.Path() / "precious/a"));
}

// Deeper than the system takes a path, and with what is no file.
TEST_F(HddRecycling, DeletesADayHoweverDeepItIs) {
  MakeDirs({"d20040410"});
  const int day = open(m_d.File("d20040410").c_str(), O_PATH | O_DIRECTORY);
  const std::string name(200, 'n');
  int at = dup(day);
  for (int depth = 0; depth < 25; ++depth) {
    ASSERT_EQ(mkdirat(at, name.c_str(), 0755), 0);
    const int next = openat(at, name.c_str(), O_PATH | O_DIRECTORY);
    close(std::exchange(at, next));
  }
  const int file = openat(at, "file", O_CREAT | O_WRONLY, 0644);
  ASSERT_EQ(write(file, "12345", 5), 5);
  EXPECT_EQ(mkfifoat(at, "pipe", 0600), 0);
  for (const int descriptor : {file, at, day}) close(descriptor);
  Load();
  EXPECT_EQ(Words({Delete(), Has("d20040410")}), "1 5 0");
}

TEST_F(HddRecycling, WantsADirectoryBelowTheRootOfADrive) {
  MakeFile("file/inside");
  MakeDirs({"empty"});
  DWORD freed = 77;
  for (const CString& path : {CString("d:\\file\\inside"), CString("x:\\dir"), CString("d:\\"),
                              CString("d:"), CString("d:\\empty\\.."), m_d.File("empty")}) {
    EXPECT_EQ(Words({CHddObj::DeleteDir(path, freed), freed}), "0 0") << path;
  }
  EXPECT_EQ(CHddObj::DeleteDir("d:\\empty", freed), 1);
  EXPECT_TRUE(Has("file/inside") && !Has("empty"));
}

}  // namespace
