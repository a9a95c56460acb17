#include <gtest/gtest.h>
#include <sys/stat.h>

#include "image/image.h"
#include "platform/framework/file.h"
#include "record/mox_file.h"
#include "storage/file_search_info.h"
#include "tests/support/disk_fixture.h"

namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

CTime At(int month, int day, int hour = 12, int minute = 0) {
  return {2004, month, day, hour, minute, 0};
}

CZebFileInfo Info(CTime begin, CTime end) {
  CZebFileInfo info = MakeInfo("");
  info.SetBeginTime(begin);
  info.SetEndTime(end);
  return info;
}

void WriteHeader(const fs::path& path, CZebFileInfo info) {
  fs::create_directories(path.parent_path());
  CFile file;
  ASSERT_EQ(file.Open(path.string(), CFile::kModeCreate | CFile::kModeWrite), 1);
  ASSERT_GT(info.Write(&file), 0U);
}

// A disk on d: that searches for files of the host "rec"; now is noon of 12 April.
class SearchDisk : public DiskTest {
 protected:
  SearchDisk() {
    Create(m_disk, "d:\\");
    m_criteria.SetHostName("rec");
  }

  fs::path Leaf(CTime day, const char* leaf = "video") const {
    return m_d.Path() / DayDirectoryName(day) / "rec" / leaf;
  }
  void Record(const std::string& name, CTime begin, CTime end) const {
    WriteHeader(Leaf(begin) / name, Info(begin, end));
  }
  // Bare names of what is found, in order.
  Names Search() {
    CFileSearchInfo info(&m_criteria);
    m_disk.SearchFile(&info);
    Names names;
    for (const CObject* entry : info) {
      const CString path = static_cast<const CZebFileInfo*>(entry)->GetFileName();
      names.push_back(path.substr(path.find_last_of('\\') + 1));
    }
    return names;
  }
  std::unique_ptr<CZebFileInfo> FindOne() {
    CFileSearchInfo info(&m_criteria);
    m_disk.SearchFile(&info);
    if (info.GetCount() != 1) throw std::runtime_error("not one file");
    return std::make_unique<CZebFileInfo>(static_cast<const CZebFileInfo&>(*info.GetHead()));
  }

  CHddObj m_disk;
  CSearchParam m_criteria;
};

TEST_F(SearchDisk, NeedsAHostNameAndTheDisksOwnName) {
  Record("a.zebz", At(4, 10), At(4, 10, 13));
  m_criteria.SetDate(At(4, 10, 23, 59).GetTime());
  EXPECT_EQ(Search(), Names{"a.zebz"});
  m_criteria.SetDbsName("ZebDatabase(d:\\)");
  EXPECT_EQ(Search(), Names{"a.zebz"});
  m_criteria.SetDbsName("zebdatabase(d:\\)");
  EXPECT_EQ(Search(), Names{});

  m_criteria.Reset();
  m_criteria.SetDate(At(4, 10).GetTime());
  EXPECT_EQ(Search(), Names{});
  m_criteria.SetHostName("other");
  EXPECT_EQ(Search(), Names{});
  m_disk.SearchFile(nullptr);
  CFileSearchInfo without(nullptr);
  m_disk.SearchFile(&without);
  EXPECT_TRUE(without.IsEmpty());
}

TEST_F(SearchDisk, TakesTheFirstKindThatItTests) {
  const CTime day = At(4, 10);
  for (const char* leaf : {"video", "clip", "alarm", "picture", "face"}) {
    WriteHeader(Leaf(day, leaf) / leaf, Info(day, At(4, 10, 13)));
  }
  const std::pair<DWORD, const char*> kByDate[] = {
      {0, "video"},
      {kSearchClip, "clip"},
      {kSearchAlarm, "alarm"},
      {kSearchClip | kSearchAlarm, "clip"},
  };
  for (const auto& [kinds, leaf] : kByDate) {
    m_criteria.Reset();
    m_criteria.SetHostName("rec");
    m_criteria.SetSearch(kinds);
    m_criteria.SetDate(day.GetTime());
    EXPECT_EQ(Search(), Names{leaf}) << kinds;
  }
  // Around a moment every file is read as a recording, faces come before alarms, and logs are not
  // known.
  const std::pair<DWORD, const char*> kByMoment[] = {
      {0, "video"},
      {kSearchLog, "video"},
      {kSearchAlarm, "alarm"},
      {kSearchPicture, "picture"},
      {kSearchFace | kSearchAlarm, "face"},
      {kSearchClip | kSearchFace, "clip"},
  };
  for (const auto& [kinds, leaf] : kByMoment) {
    m_criteria.Reset();
    m_criteria.SetHostName("rec");
    m_criteria.SetSearch(kinds);
    m_criteria.SetTimeBegin(day);
    EXPECT_EQ(Search(), Names{leaf}) << kinds;
  }
}

TEST_F(SearchDisk, FiltersByEveryCriterion) {
  Record("a.zebz", At(4, 10, 10), At(4, 10, 11));
  struct Case {
    void (*m_set)(CSearchParam&);
    bool m_found;
  };
  const Case kCases[] = {
      {[](CSearchParam& criteria) { criteria.SetBoardName("brd"); }, true},
      {[](CSearchParam& criteria) { criteria.SetBoardName("Brd"); }, false},
      {[](CSearchParam& criteria) { criteria.SetCameraName("cam"); }, true},
      {[](CSearchParam& criteria) { criteria.SetCameraName(""); }, false},
      {[](CSearchParam& criteria) {
         criteria.SetCameraID({1, 2});
       },
       true},
      {[](CSearchParam& criteria) {
         criteria.SetCameraID({2, 2});
       },
       false},
      {[](CSearchParam& criteria) {
         criteria.SetCameraID({1, 0x0102});
       },
       false},
      {[](CSearchParam& criteria) { criteria.SetFrameSize(tag_FRAMESIZE{2}); }, true},
      {[](CSearchParam& criteria) { criteria.SetFrameSize(tag_FRAMESIZE{3}); }, false},
      {[](CSearchParam& criteria) { criteria.SetBeginTime(At(4, 10, 11)); }, true},
      {[](CSearchParam& criteria) { criteria.SetBeginTime(At(4, 10, 11) + 1); }, false},
      {[](CSearchParam& criteria) { criteria.SetEndTime(At(4, 10, 10)); }, true},
      {[](CSearchParam& criteria) { criteria.SetEndTime(At(4, 10, 10) - 1); }, false},
      // The beginning of a range holds the value that was set last, as the moment here.
      {[](CSearchParam& criteria) {
         criteria.SetBeginTime(At(4, 10, 9));
         criteria.SetTimeBegin(At(4, 10, 12));
       },
       false},
  };
  for (const Case& filter : kCases) {
    m_criteria.Reset();
    m_criteria.SetHostName("rec");
    m_criteria.SetDate(At(4, 10).GetTime());
    filter.m_set(m_criteria);
    EXPECT_EQ(Search().size(), filter.m_found ? 1U : 0U) << "case " << &filter - kCases;
  }
}

TEST_F(SearchDisk, WalksADayRangeUpToToday) {
  for (const int day : {9, 10, 11, 12, 13}) {
    Record(std::to_string(day), At(4, day), At(4, day, 13));
  }
  m_criteria.SetBeginTime(At(4, 10, 9));
  EXPECT_EQ(Search(), (Names{"10", "11", "12"}));  // without an end, until today
  m_criteria.SetEndTime(At(4, 20));
  EXPECT_EQ(Search(), (Names{"10", "11", "12"}));
  m_criteria.SetEndTime(At(4, 11, 11));
  EXPECT_EQ(Search(), Names{"10"});
  m_criteria.SetEndTime(At(4, 9, 23));
  EXPECT_EQ(Search(), Names{});
}

TEST_F(SearchDisk, EndsAWalkOnTheLastDayOfSignedTime) {
  constexpr DWORD kLast = 0x7FFFFFFF;
  m_clock.MoveTo(ULONGLONG{kLast - kNoonInNewYork} * 1000);
  Record("last", CTime(kLast - 60), CTime(kLast));
  m_criteria.SetBeginTime(CTime(kLast - 100000));
  EXPECT_EQ(Search(), Names{"last"});
  m_criteria.SetEndTime(CTime(kLast + 86400));  // before everything else
  EXPECT_EQ(Search(), Names{});
}

// Days are 24 hours apart. Behind a day of 25 hours that is an hour before midnight: that day is
// searched twice and the last one not at all. Behind one of 23 hours only the last one is lost.
TEST_F(SearchDisk, StepsOverDaysOfTwentyThreeAndTwentyFiveHours) {
  struct Case {
    const char* m_zone;
    int m_month, m_day;  // the long or short day, the second of five
    Names m_found;
  };
  const Case kCases[] = {
      {"EST5EDT,M4.1.0,M10.5.0", 10, 24, {"23", "24", "25", "26", "27"}},
      {"EST5EDT,M4.1.0,M10.4.0", 10, 24, {"23", "24", "24", "25", "26"}},
      {"CET-1CEST,M3.5.0,M10.4.0/3", 10, 24, {"23", "24", "24", "25", "26"}},
      {"EST5EDT,M4.2.0,M10.5.0", 4, 11, {"10", "11", "12", "13"}},
      {"CET-1CEST,M4.2.0,M10.5.0/3", 4, 11, {"10", "11", "12", "13"}},
  };
  for (const auto& [zone, month, day, found] : kCases) {
    const ScopedTimeZone scoped(zone);
    fs::remove_all(m_d.Path() / "d");
    for (int i = day - 1; i <= day + 3; ++i) {
      Record(std::to_string(i), At(month, i), At(month, i, 13));
    }
    m_clock.MoveTo(ULONGLONG{At(month, day + 4).GetTime() - kNoonInNewYork} * 1000);
    m_criteria.SetBeginTime(At(month, day - 1, 8));
    m_criteria.SetEndTime(At(month, day + 3, 20));
    EXPECT_EQ(Search(), found) << zone;
  }
}

TEST_F(SearchDisk, FindsRecordingsThatHadNotEndedAtAMoment) {
  Record("a", At(4, 10, 9), At(4, 10, 10));
  Record("b", At(4, 10, 9), At(4, 10, 11));
  Record("c", At(4, 10, 14), At(4, 10, 15));
  Record("d", At(4, 10, 9), At(4, 10, 11));
  m_criteria.SetTimeBegin(At(4, 10, 11));
  m_criteria.SetCameraName("another");
  m_criteria.SetEndTime(At(4, 10, 1));
  EXPECT_EQ(Search(), (Names{"c", "d"}));  // the last entry may end at the very moment
  m_criteria.SetTimeBegin(At(4, 10, 11) + 1);
  EXPECT_EQ(Search(), Names{"c"});
  m_criteria.SetCameraID({1, 3});
  EXPECT_EQ(Search(), Names{});

  // A directory may be the last entry too.
  m_criteria.SetCameraID({1, 2});
  m_criteria.SetTimeBegin(At(4, 10, 11));
  fs::create_directory(Leaf(At(4, 10)) / "e");
  EXPECT_EQ(Search(), Names{"c"});
}

TEST_F(SearchDisk, FindsPicturesByDateAndNeverInARange) {
  CImage image;
  image.CreateImage(new BYTE[8 * 4 * 3](), 8, 4);
  image.SetCameraName("gate");
  fs::create_directories(Leaf(At(4, 10), "picture"));
  image.SaveImageAs(kImageBmp, (Leaf(At(4, 10), "picture") / "nameless").string());
  image.SetBoardName("board");
  image.SetHostName("h");
  image.SetTimeStamp(At(4, 10).GetTime());
  image.SetGmt(9);
  image.SaveImageAs(kImageBmp, (Leaf(At(4, 10), "picture") / "shot").string());
  WriteWholeFile((Leaf(At(4, 10), "picture") / "cut.bmp").string(), "BM");

  m_criteria.SetSearch(kSearchPicture);
  m_criteria.SetDate(At(4, 10).GetTime());
  const auto found = FindOne();
  EXPECT_EQ(found->GetFileName(), "d:\\d20040410\\rec\\picture\\shot.bmp");
  EXPECT_EQ(found->GetHostName() + found->GetBoardName() + found->GetCameraName(), "hboardgate");
  EXPECT_EQ(found->GetBeginTime(), At(4, 10));
  EXPECT_EQ(found->GetEndTime(), CTime());
  EXPECT_EQ(found->GetGmt(), 9);
  EXPECT_EQ(found->GetLength(), fs::file_size(Leaf(At(4, 10), "picture") / "shot.bmp"));
  EXPECT_EQ(found->GetWidth(), 8U);
  EXPECT_EQ(found->GetHeight(), 4U);

  m_criteria.Reset();
  m_criteria.SetHostName("rec");
  m_criteria.SetSearch(kSearchPicture);
  m_criteria.SetBeginTime(At(4, 9));
  m_criteria.SetEndTime(At(4, 11));
  EXPECT_EQ(Search(), Names{});
}

TEST_F(SearchDisk, FindsFaceFiles) {
  const fs::path leaf = Leaf(At(4, 10), "face");
  fs::create_directories(leaf);
  CMoxFile file;
  file.SetCameraName("gate");
  ASSERT_EQ(file.Open((leaf / "nameless").c_str(), 1), 1);
  file.SetHostName("h");
  file.SetBoardName("board");
  file.SetBoardIndex(3);
  file.SetCameraIndex(4);
  file.SetGmt(5);
  ASSERT_EQ(file.Open((leaf / "faces").c_str(), 1), 1);
  const std::vector<BYTE> face(100 * 120);
  file.Write(face.data(), kNoonInNewYork + 60);
  file.Close();
  WriteWholeFile((leaf / "other").string(), "FACT");

  m_criteria.SetSearch(kSearchFace);
  m_criteria.SetDate(At(4, 10).GetTime());
  m_criteria.SetCameraID({3, 4});
  m_criteria.SetBeginTime(CTime(kNoonInNewYork + 60));
  const auto found = FindOne();
  EXPECT_EQ(found->GetFileName(), "d:\\d20040410\\rec\\face\\faces");
  EXPECT_EQ(found->GetHostName() + found->GetBoardName() + found->GetCameraName(), "hboardgate");
  EXPECT_EQ(found->GetBeginTime(), CTime(kNoonInNewYork));
  EXPECT_EQ(found->GetEndTime(), CTime(kNoonInNewYork + 60));
  EXPECT_EQ(found->GetGmt(), 5);
  EXPECT_EQ(found->GetLength(), 42U + 10 + 4 + 100 * 120);
  EXPECT_EQ(found->GetWidth(), 100U);
  EXPECT_EQ(found->GetHeight(), 120U);
}

TEST_F(SearchDisk, FindsTheTwoLogsWhateverTheOtherCriteria) {
  for (const char* name : {"userlog.ulg", "AlarmLog.alg", "userlog.ulg.bak"}) {
    fs::create_directories(Leaf(At(4, 10), "log"));
    WriteWholeFile((Leaf(At(4, 10), "log") / name).string(), "text");
  }
  m_criteria.SetSearch(kSearchLog);
  m_criteria.SetDate(At(4, 10).GetTime());
  m_criteria.SetCameraID({9, 9});
  m_criteria.SetBoardName("none");
  m_criteria.SetEndTime(CTime(1));
  EXPECT_EQ(Search(), (Names{"AlarmLog.alg", "userlog.ulg"}));

  fs::remove(Leaf(At(4, 10), "log") / "AlarmLog.alg");
  struct stat status {};
  ASSERT_EQ(stat((Leaf(At(4, 10), "log") / "userlog.ulg").c_str(), &status), 0);
  EXPECT_EQ(FindOne()->GetBeginTime(), CTime(static_cast<DWORD>(status.st_mtime)));
}

TEST_F(SearchDisk, PassesOverWhatIsNoRecording) {
  Record("good.zebz", At(4, 10), At(4, 10, 13));
  const fs::path leaf = Leaf(At(4, 10));
  WriteWholeFile((leaf / "garbage.zebz").string(), "no recording");
  WriteWholeFile((leaf / "empty.zebz").string(), "");
  fs::create_directory(leaf / "directory.zebz");
  WriteHeader(leaf / "directory.zebz" / "inside.zebz", Info(At(4, 10), At(4, 10, 13)));
  fs::create_symlink("nowhere", leaf / "dangling.zebz");
  ASSERT_EQ(mkfifo((leaf / "pipe.zebz").c_str(), 0600), 0);
  // Its path would be that of a recording of another day.
  WriteHeader(leaf / R"(..\..\..\d20040412\rec\video\other.zebz)", Info(At(4, 10), At(4, 10, 13)));
  Record("other.zebz", At(4, 12), At(4, 12, 13));
  m_criteria.SetDate(At(4, 10).GetTime());
  EXPECT_EQ(Search(), Names{"good.zebz"});

  WriteWholeFile((m_d.Path() / "d20040411").string(), "a file in a day's place");
  m_criteria.SetDate(At(4, 11).GetTime());
  EXPECT_EQ(Search(), Names{});

  os::UnmountDrive('d');
  m_criteria.SetDate(At(4, 10).GetTime());
  EXPECT_EQ(Search(), Names{});
}

}  // namespace
