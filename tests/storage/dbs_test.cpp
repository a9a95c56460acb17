#include "storage/dbs.h"

#include <sys/stat.h>
#include <unistd.h>

#include "capture/zebx.h"
#include "storage/file_search_info.h"
#include "storage/storage_messages.h"
#include "storage/zeb_database.h"
#include "tests/support/disk_fixture.h"
#include "tests/support/faulty_file_system.h"

namespace {

namespace fs = std::filesystem;

// The text as a database file holds a short one.
std::string Text(const std::string& text) {
  return static_cast<char>(text.size()) + text;
}

// A library that is initialised, and a data directory and a database file "list" on d:.
class Dbs : public DiskTest {
 public:
  Dbs() {
    zebxInitZebx(0, nullptr, 0, nullptr, "d:\\dev");
    MakeDirs({"data"});
  }
  ~Dbs() override {
    dbsCloseDatabase();
    zebxCloseZebx();
  }

 protected:
  static int Open() { return dbsOpenDatabase("d:\\Data", "d:\\list", "rec"); }
  static int Add(tag_HDDPARAM param) { return dbsAddHDD(&param); }
  // Opens with the disks d:\dvr\ and e:\.
  static void OpenTwoDisks() {
    ASSERT_TRUE(Open() && dbsRemoveHDDName("d:\\"));
    ASSERT_TRUE(Add({1000, 0, "d:\\dvr", "", 0, ""}));
    ASSERT_TRUE(Add({0x01020304, 1, "e:\\", "Second", 1, "bell.wav"}));
  }
  // The directory of the working disk, and all parameters of every disk.
  static std::string State() {
    CString name, work = "none";
    dbsGetWorkHDD(&name, &work);
    tag_HDDPARAM disk;
    for (int i = 0; dbsGetHddParam(i, &disk) != 0; ++i) {
      work += ", " + Words({disk.m_path, disk.m_database_name, disk.m_reserved_mb, disk.m_recycle,
                            disk.m_alarm_when_space_not_enough, disk.m_alarm_sound});
    }
    return work;
  }
  // The answer and the text of a function that gives one.
  template <typename... Arguments>
  static std::string Answer(int (*function)(CString*, Arguments...),
                            std::type_identity_t<Arguments>... arguments) {
    CString text = "?";
    return Words({function(&text, arguments...), text});
  }
  // Makes a recording begun on the day before: the answer and, when there is a file, its path.
  static std::string Create(decltype(&dbsCreateZebFile) function, tag_ZEBCAMERAID camera = {1, 2},
                            int is_clip = 0) {
    CZebFileInfo header = MakeInfo("");
    header.SetHostName("Rec");
    header.SetBeginTime(CTime(2004, 4, 11, 23, 59, 59));
    header.SetCameraID(camera);
    header.SetClip(is_clip);
    CZebFile* file = nullptr;
    if (function(&file, &header) == 0) return file == nullptr ? "0" : "a file";
    WriteRun(*file, {.m_frames = 3});
    EXPECT_EQ(dbsCloseZebFile(file), 1);
    EXPECT_EQ(ReadVideos(header.GetFileName()), NumberedVideos({0, 1, 2}));
    return "1 " + header.GetFileName();
  }
  // The drives of the recordings of today.
  static std::string Search() {
    CSearchParam criteria;
    criteria.SetHostName("rec");
    criteria.SetDate(kNoonInNewYork);
    CFileSearchInfo info(&criteria);
    std::string found = Words({dbsSearchFile(nullptr), dbsSearchFile(&info), ""});
    for (const CObject* entry : info) {
      found += static_cast<const CZebFileInfo*>(entry)->GetFileName().front();
    }
    return found;
  }
  std::string FileBytes() const { return ReadWholeFile(m_d.File("list")); }
  const std::string kFirst = R"(d:\dvr\, d:\dvr\ ZebDatabase(d:\) 1000 0 0 )";
  const std::string kSecond = ", e:\\ Second(e:\\) 16909060 1 1 bell.wav";
  const std::string kTwoDisksFile = Little(2) + Text("d:\\") + Little(1000) + Little(0) +
                                    Text("d:\\dvr\\") + Text("ZebDatabase") + Little(0) + Text("") +
                                    Little(0x01020304) + Little(1) + Text("e:\\") + Text("Second") +
                                    Little(1) + Text("bell.wav");
};

TEST_F(Dbs, OpensOnlyWhileTheLibraryIsInitialisedAndThereIsAPlaceForADisk) {
  zebxCloseZebx();
  EXPECT_EQ(Words({Open(), State(), Create(dbsCreateZebFile), Search()}), "0 none 0 0 0 ");
  EXPECT_FALSE(Has("data/database"));
  zebxInitZebx(0, nullptr, 0, nullptr, "d:\\dev");
  EXPECT_EQ(Words({Open(), State(), Answer(dbsGetHostName)}),
            "1 d:\\data\\database\\, d:\\data\\database\\ ZebDatabase(d:\\) 1000 1 0  1 rec");
  // Opening once more saves and closes the one that is open.
  EXPECT_TRUE(Add(Param("e:\\")) && !Has("list") && Open());
  EXPECT_EQ(dbsGetHddNum(), 2);
  EXPECT_EQ(Words({dbsOpenDatabase("d:\\none", "d:\\other", "rec"), dbsGetHddNum()}), "0 0");
}

TEST_F(Dbs, TakesOneDiskADrive) {
  ASSERT_EQ(Open(), 1);
  tag_HDDPARAM param = Param("E:\\DVR");
  EXPECT_EQ(Words({dbsAddHDD(&param), param.m_path}), "1 e:\\dvr");
  EXPECT_EQ(Add(Param("D:\\other")) + Add(Param("f:\\")), 0);
  EXPECT_EQ(Words({dbsFindHddIndex("ZebDatabase(e:\\)"), dbsFindHddIndex("ZebDatabase")}), "1 -1");

  // The working disk's name outlives its disk, and a new one does not take its place.
  EXPECT_EQ(Words({dbsRemoveHDDName("D:\\whatever"), dbsRemoveHDDName("d:\\"), State()}),
            "1 0 none, e:\\dvr\\ ZebDatabase(e:\\) 0 0 0 ");
  EXPECT_EQ(Words({dbsRemoveHDDIndex(0), dbsRemoveHDDIndex(0), Add(Param("e:\\")), State()}),
            "1 0 1 e:\\, e:\\ ZebDatabase(e:\\) 0 0 0 ");

  // That the last one went is answered with failure; a host may go on with it.
  CHddObj* disk = nullptr;
  ASSERT_TRUE(dbsGetHDDInfo(&disk, "ZebDatabase(e:\\)") && disk != nullptr);
  EXPECT_EQ(Words({dbsRemoveHDDIndex(0), State(), disk->GetHDD()}), "0 none e:\\");
  EXPECT_EQ(dbsGetHDDInfo(&disk, "ZebDatabase(e:\\)"), 1);
  EXPECT_EQ(disk, nullptr);
}

TEST_F(Dbs, HandsOutCopiesOfItsDisksWithTheirDays) {
  OpenTwoDisks();
  MakeDirs({"dvr/d20040401", "dvr/d20040402"});
  CObList list;
  EXPECT_EQ(dbsGetHDDList(&list), 1);
  dbsCloseDatabase();
  for (const char* wanted : {"ZebDatabase(d:\\) d:\\dvr\\ 401 402", "Second(e:\\) e:\\ "}) {
    const std::unique_ptr<const CHddObj> copy(static_cast<const CHddObj*>(list.RemoveHead()));
    EXPECT_EQ(Words({copy->GetDbsName(), copy->GetBaseDir(), DaysOf(*copy)}), wanted);
  }
}

TEST_F(Dbs, NamesRecordingsAfterCameraAndBeginTimeInTheDayOfTheirCreation) {
  ASSERT_EQ(Open(), 1);
  const std::string day = R"(1 d:\data\database\d20040412\rec\)";
  EXPECT_EQ(Create(dbsCreateZebFile), day + "video\\c0102040411235959.zebz");
  EXPECT_EQ(Create(dbsCreateZebFile, {12, 103}, 1), day + "video\\cc12103040411235959.zebz");
  EXPECT_EQ(Create(dbsCreateZebAlarmFile, {0, 0}, 1), day + "alarm\\ca0000040411235959.zebz");
}

TEST_F(Dbs, HandsOutTheDirectoriesOfEveryKind) {
  OpenTwoDisks();
  const CTime day(2004, 3, 2, 1, 0, 0);
  for (const auto& [make, find, leaf] : {std::tuple(&dbsGetVideoDir, &dbsGetVideoDirInfo, "video"),
                                         {dbsGetAlarmDir, dbsGetAlarmDirInfo, "alarm"},
                                         {dbsGetClipDir, dbsGetClipDirInfo, "clip"},
                                         {dbsGetPictureDir, dbsGetPictureDirInfo, "picture"},
                                         {dbsGetLogDir, dbsGetLogDirInfo, "log"},
                                         {dbsGetFaceDir, dbsGetFaceDirInfo, "face"}}) {
    const CString made = CString(R"(1 d:\dvr\d20040302\rec\)") + leaf;
    EXPECT_EQ(Answer(find, "rec", day, 0), "1 ");
    EXPECT_EQ(Answer(make, "rec", day), made);
    EXPECT_EQ(Answer(find, "rec", day, 0), made);
    EXPECT_EQ(Answer(find, "rec", day, 1), "1 ");
  }
  EXPECT_EQ(Answer(dbsGetDir, "Rec", "Cam", kZebFileLog, CTime()),
            "1 d:\\dvr\\d20040412\\rec\\cam\\log");
  EXPECT_EQ(Answer(dbsGetRemoteDir), "1 d:\\dvr\\remote\\d20040412");
}

TEST_F(Dbs, GoesOnWithoutADriveThatIsGone) {
  MountSmall('e', m_e, 60);
  ASSERT_TRUE(Open() && Add(Param("e:\\")));
  EXPECT_EQ(Create(dbsCreateZebFile).substr(0, 4), "1 d:");
  os::UnmountDrive('d');
  DWORD free = 7;
  EXPECT_EQ(Words({Create(dbsCreateZebFile), Search(), Answer(dbsGetVideoDir, "rec", CTime()),
                   dbsSaveDatabase(), dbsCheckWorkHDD(&free), free, dbsGetWorkHddFreeSpace()}),
            "0 0 1  1  0 -1 7 0");
  EXPECT_EQ(Words({dbsChangeWorkDir(), Create(dbsCreateZebFile)}).substr(0, 6), "0 1 e:");

  DWORD total = 1, used = 2;
  EXPECT_EQ(dbsGetHddSpace(1, &total, &used, &free), 0);  // the first disk alone is answered
  EXPECT_EQ(Words({dbsSetOnceDelSpace(49), dbsSetOnceDelSpace(50), dbsGetOnceDelSpace()}),
            "0 1 50");
  // It comes back, but full, and so is the other one now.
  MountSmall('d', m_d, 64);
  MountSmall('e', m_e, 10);
  EXPECT_EQ(Words({Search(), dbsSaveDatabase(), dbsChangeWorkDir()}), "0 1 de 1 1");
  EXPECT_EQ(Words({State().substr(0, 4), Create(dbsCreateZebAlarmFile)}), "none 0");
}

TEST_F(Dbs, KeepsItsDisksInAFileOfThisForm) {
  OpenTwoDisks();
  EXPECT_EQ(dbsSaveDatabase(), 1);
  EXPECT_EQ(FileBytes(), kTwoDisksFile);
  EXPECT_FALSE(Has("list.new"));
  EXPECT_EQ(Words({Open(), State()}), "1 " + kFirst + kSecond);
  // An empty list is never written.
  EXPECT_EQ(Words({dbsRemoveHDDIndex(1), dbsRemoveHDDIndex(0), dbsSaveDatabase()}), "1 0 0");
  dbsCloseDatabase();
  EXPECT_EQ(FileBytes(), kTwoDisksFile);
  // A disk that is gone drops out; the working disk keeps its name.
  Mount('d', m_d, os::DriveKind::kRemovable);
  EXPECT_EQ(Words({Open(), State(), dbsSaveDatabase()}), "1 none" + kSecond + " 1");
  EXPECT_EQ(FileBytes().substr(0, 8), Little(1) + Text("d:\\"));
}

TEST_F(Dbs, LoadsWhatIsWholeOfAFileCutAnywhere) {
  fs::remove(m_d.Path() / "data");
  const auto load = [this](const std::string& bytes) {
    dbsCloseDatabase();
    WriteWholeFile(m_d.File("list"), bytes);
    return Words({Open(), State()});
  };
  const std::size_t first_end = kTwoDisksFile.size() - (4 + 4 + 4 + 7 + 4 + 9);
  for (std::size_t bytes = 0; bytes < kTwoDisksFile.size(); ++bytes) {
    EXPECT_EQ(load(kTwoDisksFile.substr(0, bytes)), bytes < first_end ? "0 none" : "1 " + kFirst);
  }
  EXPECT_EQ(load(Little(0xFFFFFFFF) + kTwoDisksFile.substr(4)), "1 " + kFirst + kSecond);
}

TEST_F(Dbs, SavesWithTheModeTheOwnerAndTheNeighboursOfTheFile) {
  OpenTwoDisks();
  const std::string file = m_e.File("kept");  // what d:\list leads to
  WriteWholeFile(file, "old");
  WriteWholeFile(file + ".new", "somebody's");
  fs::create_symlink(file, m_d.Path() / "list");
  ASSERT_TRUE(chmod(file.c_str(), 0640) == 0 && chown(file.c_str(), 12, 34) == 0);
  EXPECT_EQ(Words({dbsSaveDatabase(), FileBytes()}), "1 " + kTwoDisksFile);
  EXPECT_TRUE(fs::is_symlink(m_d.Path() / "list"));
  struct stat status {};
  EXPECT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(Words({status.st_mode & 0777, status.st_uid, status.st_gid}), Words({0640, 12, 34}));
  EXPECT_EQ(ReadWholeFile(file + ".new"), "somebody's");

  // Every name for a new file is taken.
  for (int i = 1; i <= 100; ++i) WriteWholeFile(file + ".new" + std::to_string(i), "");
  WriteWholeFile(file, "old");
  EXPECT_EQ(Words({dbsSaveDatabase(), FileBytes()}), "1 " + kTwoDisksFile);

  fs::remove(file);
  fs::create_directory(file);
  EXPECT_EQ(Words({dbsSaveDatabase(), fs::exists(file + ".new101")}), "0 0");
}

// The disk refuses to tell what the file holds, and the default disk is made: its list must not
// take the place of the one that could not be read.
TEST_F(Dbs, LeavesAListThatItCouldNotRead) {
  OpenTwoDisks();
  dbsCloseDatabase();
  for (const unsigned kind : {FaultyFileSystem::kOpen, FaultyFileSystem::kRead}) {
    FaultyFileSystem faulty;
    faulty.FailCall(kind, 1);
    EXPECT_EQ(Words({Open(), dbsGetHddNum(), dbsSaveDatabase()}), "1 1 0");
    dbsCloseDatabase();
    EXPECT_EQ(FileBytes(), kTwoDisksFile);
  }
}

// Inside of the message of a deleted day nothing may pull the list from under the one who walks it.
TEST_F(Dbs, KeepsItsListWhileItTellsOfADeletedDay) {
  std::string refused;
  HWND window = os::CreateWindow(nullptr, "host", {}, [&](HWND, UINT message, WPARAM, LPARAM) {
    if (message != ZEBX_MSG_DATE_DELETED) return LRESULT{0};
    tag_HDDPARAM param = Param("d:\\");
    dbsCloseDatabase();
    refused = Words({Open(), Add(Param("f:\\")), dbsChangeBaseDir(0, &param), dbsRemoveHDDIndex(0),
                     dbsRemoveHDDName("d:\\"), dbsGetHddNum(), dbsSaveDatabase()});
    return LRESULT{0};
  });
  zebxCloseZebx();
  zebxInitZebx(0, nullptr, 0, window, "d:\\dev");
  MountSmall('d', m_d, 10);
  Mount('f', m_e);
  MakeFile("data/database/d20040408/file", 5000);
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(Words({dbsChangeWorkDir(), refused, dbsRemoveHDDName("d:\\")}), "0 0 0 0 0 0 1 1 1");
  os::DestroyWindow(window);
}

}  // namespace
