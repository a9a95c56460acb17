#include "storage/dbs.h"

#include <gtest/gtest.h>

#include "capture/zebx.h"
#include "storage/file_search_info.h"
#include "storage/working_disk.h"
#include "tests/support/disk_fixture.h"

namespace {

namespace fs = std::filesystem;

// An initialised library and a database with its file on d:, which makes its disk d:\data\database.
class Dbs : public DiskTest {
 protected:
  Dbs() {
    zebxInitZebx(0, nullptr, 0, nullptr, "d:\\dev");
    MakeDirs({"data"});
  }
  ~Dbs() override {
    dbsCloseDatabase();
    zebxCloseZebx();
  }

  static int Open() { return dbsOpenDatabase("d:\\data", "d:\\list", "rec"); }
  static int Add(const CString& path) {
    tag_HDDPARAM param = Param(path);
    return dbsAddHDD(&param);
  }
  static std::string WorkDisk() {
    CString name, directory;
    return dbsGetWorkHDD(&name, &directory) == 0 ? name + " " + directory : "none";
  }
  static CZebFileInfo Header(CTime begin) {
    CZebFileInfo header = MakeInfo("");
    header.SetHostName("Rec");
    header.SetBeginTime(begin);
    return header;
  }
};

TEST_F(Dbs, FailsWithoutADatabase) {
  CString text = "kept";
  DWORD free = 7;
  tag_HDDPARAM param;
  CFileSearchInfo search(nullptr);
  CZebFileInfo header;
  CZebFile* file = nullptr;
  CObList list;
  EXPECT_EQ(dbsSaveDatabase() + Add("e:\\") + dbsChangeBaseDir(0, &param) + dbsRemoveHDDIndex(0) +
                dbsRemoveHDDName("d:\\") + dbsGetDbsName(0, &text) + dbsGetHddNum() +
                dbsGetHddParam(0, &param) + dbsGetHDDList(&list) +
                dbsGetHddSpace(0, &free, &free, &free) + dbsSetOnceDelSpace(60) +
                dbsCreateZebFile(&file, &header) + dbsGetVideoDir(&text, "rec", CTime()) +
                dbsGetVideoDirInfo(&text, "rec", CTime(), 0) + dbsGetRemoteDir(&text) +
                dbsGetHostName(&text) + dbsSearchFile(&search) + dbsCloseZebFile(nullptr),
            0);
  EXPECT_EQ(dbsGetOnceDelSpace(), 0U);
  EXPECT_EQ(dbsFindHddIndex("x"), -1);
  EXPECT_EQ(dbsGetWorkHDD(&text, &text), -1);
  EXPECT_EQ(dbsGetWorkHddFreeSpace(), -1);
  EXPECT_EQ(dbsCheckWorkHDD(&free), -1);
  EXPECT_EQ(dbsChangeWorkDir(), -1);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(free, 7U);
}

TEST_F(Dbs, OpensOnlyWhileTheLibraryIsInitialised) {
  zebxCloseZebx();
  EXPECT_EQ(Open(), 0);
  EXPECT_FALSE(Has("data/database"));
  zebxInitZebx(0, nullptr, 0, nullptr, "d:\\dev");
  EXPECT_EQ(Open(), 1);
  CString host;
  EXPECT_EQ(dbsGetHostName(&host), 1);
  EXPECT_EQ(host, "rec");

  // Opening once more saves and closes the one that is open.
  EXPECT_EQ(Add("e:\\"), 1);
  EXPECT_FALSE(Has("list"));
  EXPECT_EQ(Open(), 1);
  EXPECT_EQ(dbsGetHddNum(), 2);
  EXPECT_EQ(dbsOpenDatabase("d:\\none", "d:\\other", "rec"), 0);
  EXPECT_EQ(dbsGetHddNum(), 0);
}

TEST_F(Dbs, TakesOneDiskADrive) {
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(WorkDisk(), "ZebDatabase(d:\\) d:\\data\\database\\");
  EXPECT_EQ(Add("D:\\other"), 0);
  tag_HDDPARAM param = Param("E:\\DVR");
  EXPECT_EQ(dbsAddHDD(&param), 1);
  EXPECT_EQ(param.m_path, "e:\\dvr");
  EXPECT_EQ(Add("f:\\"), 0);
  EXPECT_EQ(dbsAddHDD(nullptr), 0);
  EXPECT_EQ(dbsGetHddNum(), 2);
  EXPECT_EQ(WorkDisk(), "ZebDatabase(d:\\) d:\\data\\database\\");

  EXPECT_EQ(dbsFindHddIndex("ZebDatabase(e:\\)"), 1);
  EXPECT_EQ(dbsFindHddIndex("ZebDatabase"), -1);
  CString text = "?";
  EXPECT_EQ(dbsGetDbsName(1, &text), 1);
  EXPECT_EQ(text, "ZebDatabase(e:\\)");
  EXPECT_EQ(dbsGetBaseDir(2, &text), 1);
  EXPECT_EQ(text, "");
  EXPECT_EQ(dbsGetHddParam(-1, &param) + dbsGetHddParam(2, &param), 0);

  // The working disk's name outlives its disk, and a new one does not take its place.
  EXPECT_EQ(dbsRemoveHDDName("D:\\whatever"), 1);
  EXPECT_EQ(dbsRemoveHDDName("d:\\"), 0);
  EXPECT_EQ(WorkDisk(), "none");
  EXPECT_EQ(dbsRemoveHDDIndex(0), 1);
  EXPECT_EQ(dbsRemoveHDDIndex(0), 0);
  EXPECT_EQ(Add("e:\\"), 1);
  EXPECT_EQ(WorkDisk(), "ZebDatabase(e:\\) e:\\");
}

TEST_F(Dbs, AnswersFailureForRemovingTheLastDiskAndLeavesTheListEmpty) {
  ASSERT_EQ(Open(), 1);
  CHddObj* disk = nullptr;
  EXPECT_EQ(dbsGetHDDInfo(&disk, "ZebDatabase(d:\\)"), 1);
  ASSERT_NE(disk, nullptr);
  EXPECT_EQ(dbsRemoveHDDIndex(0), 0);
  EXPECT_EQ(dbsGetHddNum(), 0);
  EXPECT_EQ(disk->GetHDD(), "d:\\");  // a host that was refused may go on with it
  EXPECT_EQ(WorkDisk(), "none");
  EXPECT_EQ(dbsGetHDDInfo(&disk, "ZebDatabase(d:\\)"), 1);
  EXPECT_EQ(disk, nullptr);
}

TEST_F(Dbs, NamesADiskTwiceWhenItsParametersComeBackUnchanged) {
  ASSERT_EQ(Open(), 1);
  tag_HDDPARAM param;
  EXPECT_EQ(dbsGetHddParam(0, &param), 1);
  EXPECT_EQ(param.m_path, "d:\\data\\database\\");
  EXPECT_EQ(param.m_database_name, "ZebDatabase(d:\\)");
  param.m_alarm_sound = "bell.wav";
  EXPECT_EQ(dbsChangeBaseDir(5, &param), 1);
  EXPECT_EQ(dbsFindHddIndex("ZebDatabase(d:\\)(d:\\)"), 0);
  EXPECT_EQ(dbsGetHddParam(0, &param), 1);
  EXPECT_EQ(param.m_alarm_sound, "bell.wav");
  param.m_path = "e:\\";
  EXPECT_EQ(dbsChangeBaseDir(0, &param), 0);
  param.m_path = "d:";
  EXPECT_EQ(dbsChangeBaseDir(0, &param), 0);
}

TEST_F(Dbs, TellsTheSpaceOfTheFirstDiskAlone) {
  os::MountDrive('d', m_d.Path().string(), os::DriveKind::kFixed, ULONGLONG{64} << 20);
  ASSERT_EQ(Open(), 1);
  ASSERT_EQ(Add("e:\\"), 1);
  DWORD total = 1, used = 2, free = 3;
  EXPECT_EQ(dbsGetHddSpace(1, &total, &used, &free) + dbsGetHddSpace(-1, &total, &used, &free), 0);
  EXPECT_EQ(total, 1U);
  EXPECT_EQ(dbsGetHddSpace(0, &total, &used, &free), 1);
  EXPECT_EQ(total, 64U);
  EXPECT_EQ(dbsGetWorkHddFreeSpace(), static_cast<int>(free));
  DWORD checked = 0;
  EXPECT_EQ(dbsCheckWorkHDD(&checked), kWorkingDiskFull);
  EXPECT_EQ(checked, free);

  EXPECT_EQ(dbsGetOnceDelSpace(), 100U);
  EXPECT_EQ(dbsSetOnceDelSpace(49), 0);
  EXPECT_EQ(dbsSetOnceDelSpace(50), 1);
  EXPECT_EQ(dbsGetOnceDelSpace(), 50U);
}

TEST_F(Dbs, LeavesNoWorkingDiskWhenNothingCanBeRecycled) {
  os::MountDrive('d', m_d.Path().string(), os::DriveKind::kFixed, ULONGLONG{64} << 20);
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(dbsChangeWorkDir(), kNothingToRecycle);
  EXPECT_EQ(WorkDisk(), "none");
  CZebFileInfo header = Header(CTime(kNoonInNewYork));
  CZebFile* file = nullptr;
  EXPECT_EQ(dbsCreateZebFile(&file, &header), 0);
  CString directory = "?";
  EXPECT_EQ(dbsGetVideoDir(&directory, "rec", CTime()), 1);
  EXPECT_EQ(directory, "");
  EXPECT_EQ(dbsGetRemoteDir(&directory), 1);
  EXPECT_EQ(directory, "");

  tag_HDDPARAM roomy = Param("e:\\");  // reserves nothing
  EXPECT_EQ(dbsAddHDD(&roomy), 1);
  EXPECT_EQ(dbsChangeWorkDir(), kWorkingDiskChosen);
  EXPECT_EQ(WorkDisk(), "ZebDatabase(e:\\) e:\\");
}

TEST_F(Dbs, HandsOutCopiesOfItsDisksWithTheirDays) {
  ASSERT_EQ(Open(), 1);
  MakeDirs({"data/database/d20040401", "data/database/d20040402"});
  CObList list;
  EXPECT_EQ(dbsGetHDDList(&list), 1);
  ASSERT_EQ(list.GetCount(), 1U);
  dbsCloseDatabase();
  const std::unique_ptr<CHddObj> copy(static_cast<CHddObj*>(list.GetHead()));
  EXPECT_EQ(copy->GetDbsName() + copy->GetBaseDir(), "ZebDatabase(d:\\)d:\\data\\database\\");
  EXPECT_EQ(copy->GetDirNum(0), 2);
}

TEST_F(Dbs, NamesRecordingsAfterCameraAndBeginTimeInTheDayOfTheirCreation) {
  ASSERT_EQ(Open(), 1);
  // The begin time is of the day before.
  CZebFileInfo header = Header(CTime(2004, 4, 11, 23, 59, 59));
  CZebFile* file = nullptr;
  const CString day = "d:\\data\\database\\d20040412\\rec\\";
  ASSERT_EQ(dbsCreateZebFile(&file, &header), 1);
  EXPECT_EQ(header.GetFileName(), day + "video\\c0102040411235959.zebz");
  WriteRun(*file, {.m_frames = 3});
  EXPECT_EQ(dbsCloseZebFile(file), 1);
  EXPECT_TRUE(Has("data/database/d20040412/rec/video/c0102040411235959.zebz"));

  header.SetClip(1);
  header.SetCameraID({12, 103});
  ASSERT_EQ(dbsCreateZebFile(&file, &header), 1);
  EXPECT_EQ(header.GetFileName(), day + "video\\cc12103040411235959.zebz");
  dbsCloseDatabase();
  EXPECT_EQ(dbsCloseZebFile(file), 1);

  ASSERT_EQ(Open(), 1);
  ASSERT_EQ(dbsCreateZebAlarmFile(&file, &header), 1);
  EXPECT_EQ(header.GetFileName(), day + "alarm\\ca12103040411235959.zebz");
  EXPECT_EQ(dbsCloseZebFile(file), 1);

  EXPECT_EQ(dbsCreateZebFile(nullptr, &header) + dbsCreateZebFile(&file, nullptr), 0);
  EXPECT_EQ(file, nullptr);
  fs::remove_all(m_d.Path() / "data" / "database" / "d20040412");
  WriteWholeFile(m_d.File("data/database/d20040412"), "a file in the day's place");
  EXPECT_EQ(dbsCreateZebAlarmFile(&file, &header), 0);
}

TEST_F(Dbs, HandsOutTheDirectoriesOfEveryKind) {
  ASSERT_EQ(Open(), 1);
  ASSERT_EQ(Add("e:\\"), 1);
  struct Kind {
    decltype(&dbsGetVideoDir) m_make;
    decltype(&dbsGetVideoDirInfo) m_find;
    const char* m_leaf;
  };
  const Kind kKinds[] = {
      {dbsGetVideoDir, dbsGetVideoDirInfo, "video"},
      {dbsGetAlarmDir, dbsGetAlarmDirInfo, "alarm"},
      {dbsGetClipDir, dbsGetClipDirInfo, "clip"},
      {dbsGetPictureDir, dbsGetPictureDirInfo, "picture"},
      {dbsGetLogDir, dbsGetLogDirInfo, "log"},
      {dbsGetFaceDir, dbsGetFaceDirInfo, "face"},
  };
  const CTime day(2004, 3, 2, 1, 0, 0);
  for (const auto& [make, find, leaf] : kKinds) {
    const CString expected = CString("d:\\data\\database\\d20040302\\rec\\") + leaf;
    CString directory = "?";
    EXPECT_EQ(find(&directory, "rec", day, 0), 1);
    EXPECT_EQ(directory, "");
    EXPECT_EQ(make(&directory, "rec", day), 1);
    EXPECT_EQ(directory, expected);
    directory.clear();
    EXPECT_EQ(find(&directory, "rec", day, 0), 1);
    EXPECT_EQ(directory, expected);
    for (const int other : {-1, 1, 2}) {
      EXPECT_EQ(find(&directory, "rec", day, other), 1);
      EXPECT_EQ(directory, "");
    }
  }
  CString directory;
  EXPECT_EQ(dbsGetDir(&directory, "Rec", "Cam", kZebFileLog, CTime()), 1);
  EXPECT_EQ(directory, "d:\\data\\database\\d20040412\\rec\\cam\\log");
  EXPECT_EQ(dbsGetRemoteDir(&directory), 1);
  EXPECT_TRUE(Has("data/database/Remote/d20040412"));
}

TEST_F(Dbs, SearchesTheDisksInTheirOrderAndKeepsDuplicates) {
  ASSERT_EQ(Open(), 1);
  ASSERT_EQ(Add("e:\\"), 1);
  MakeDirs({"data/database/d20040410/rec/video"});
  fs::create_directories(m_e.Path() / "d20040410/rec/video");
  WriteWholeFile(m_d.File("data/database/d20040410/rec/video/b"), RawRecording({1, 0}));
  WriteWholeFile(m_e.File("d20040410/rec/video/a"), RawRecording({1, 0}));
  WriteWholeFile(m_e.File("d20040410/rec/video/b"), RawRecording({1, 0}));
  CSearchParam criteria;
  criteria.SetHostName("rec");
  criteria.SetDate(DateOf(2004, 4, 10));
  CFileSearchInfo info(&criteria);
  EXPECT_EQ(dbsSearchFile(&info), 1);
  std::vector<CString> names;
  for (const CObject* entry : info) {
    names.push_back(static_cast<const CZebFileInfo*>(entry)->GetFileName());
  }
  const CString day = "d20040410\\rec\\video\\";
  EXPECT_EQ(names, (std::vector<CString>{"d:\\data\\database\\" + day + "b", "e:\\" + day + "a",
                                         "e:\\" + day + "b"}));
  EXPECT_EQ(dbsSearchFile(nullptr), 0);
}

}  // namespace
