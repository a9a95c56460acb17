#include <sys/stat.h>

#include "image/image.h"
#include "record/mox_file.h"
#include "storage/file_search_info.h"
#include "tests/support/disk_fixture.h"
#include "tests/support/faulty_file_system.h"

using namespace zebx;

namespace {

namespace fs = std::filesystem;

CTime At(int month, int day, int hour = 12) {
  return {2004, month, day, hour, 0, 0};
}

// A disk on d: that searches for files of the host "rec"; now is noon of 12 April.
class SearchDisk : public DiskTest {
 protected:
  SearchDisk() {
    Create(m_disk, "d:\\");
    Criteria();
  }
  // New criteria, for the host.
  CSearchParam& Criteria(DWORD kinds = 0) {
    m_criteria.Reset();
    m_criteria.SetHostName("rec");
    m_criteria.SetSearch(kinds);
    return m_criteria;
  }
  // A directory of a day, which is made.
  fs::path Leaf(CTime day, const char* leaf = "video") const {
    fs::path path = m_d.Path() / day.Format("d%Y%m%d") / "rec" / leaf;
    fs::create_directories(path);
    return path;
  }
  // Makes a recording in the directory of the day of its begin.
  void Record(const std::string& name, CTime begin, CTime end, const char* leaf = "video") const {
    CZebFileInfo info = MakeInfo("");
    info.SetBeginTime(begin);
    info.SetEndTime(end);
    const std::string header = FileFormOf(info);
    WriteWholeFile((Leaf(begin, leaf) / name).string(), header);
  }
  // The names of what is found, in order; the last header is kept.
  std::string Search() {
    CFileSearchInfo info(&m_criteria);
    m_disk.SearchFile(&info);
    std::string names;
    for (const CObject* entry : info) {
      m_found = static_cast<const CZebFileInfo&>(*entry);
      const CString path = m_found.GetFileName();
      names += (names.empty() ? "" : " ") + path.substr(path.find_last_of('\\') + 1);
    }
    return names;
  }
  std::string Found() const {
    return Words({m_found.GetFileName(), m_found.GetHostName(), m_found.GetBoardName(),
                  m_found.GetCameraName(), m_found.GetBeginTime().GetTime(),
                  m_found.GetEndTime().GetTime(), m_found.GetGmt(), m_found.GetLength(),
                  m_found.GetWidth(), m_found.GetHeight()});
  }

  const CTime m_day = At(4, 10);
  CSearchParam m_criteria;
  CZebFileInfo m_found;
};

TEST_F(SearchDisk, NeedsAHostNameAndATimeAndNoOtherDisksName) {
  Record("a", m_day, m_day + 60);
  EXPECT_EQ(Search(), "");  // neither day nor moment
  m_criteria.SetDate(At(4, 10, 23).GetTime());
  EXPECT_EQ(Search(), "a");
  m_criteria.SetDbsName("zebdatabase(d:\\)");  // with another case than the disk's
  EXPECT_EQ(Search(), "");
  m_criteria.Reset();
  m_criteria.SetDate(m_day.GetTime());
  fs::copy(Leaf(m_day), m_d.Path() / "d20040410/video");  // where an empty name would lead
  EXPECT_EQ(Search(), "");
}

TEST_F(SearchDisk, TakesTheFirstKindThatItTests) {
  for (const char* leaf : {"video", "clip", "log", "alarm", "picture", "face"}) {
    Record(leaf, m_day, m_day + 60, leaf);
  }
  for (const char* log : {"userlog.ulg", "AlarmLog.alg"}) {
    WriteWholeFile((Leaf(m_day, "log") / log).string(), "text");
  }
  // A day's pictures, faces and logs are no recordings; around a moment everything is read as one,
  // and logs are not known.
  const std::tuple<DWORD, const char*, const char*> kCases[] = {
      {kSearchPicture, "", "picture"},
      {kSearchClip | kSearchAlarm, "clip", "clip"},
      {kSearchAlarm | kSearchFace, "", "face"},
      {kSearchClip | kSearchFace, "", "clip"},
      {kSearchLog, "AlarmLog.alg userlog.ulg", "video"},
  };
  for (const auto& [kinds, by_day, by_moment] : kCases) {
    Criteria(kinds).SetTimeBegin(m_day);
    EXPECT_EQ(Search(), by_moment) << kinds;
    m_criteria.SetDate(m_day.GetTime());
    EXPECT_EQ(Search(), by_day) << kinds;
  }
  EXPECT_GT(m_found.GetBeginTime(), CTime::GetCurrentTime());  // when the log was written
}

TEST_F(SearchDisk, TakesBothEndsOfATimeRange) {
  const CTime begin = At(4, 10, 10), end = At(4, 10, 11);
  Record("a", begin, end);
  Record("b", begin, end - 1);
  Record("c", begin + 1, end);
  m_criteria.SetDate(begin.GetTime());
  m_criteria.SetBeginTime(end);
  m_criteria.SetEndTime(begin);
  EXPECT_EQ(Search(), "a");
  m_criteria.SetTimeBegin(end + 1);  // the begin of the range holds what was set last
  EXPECT_EQ(Search(), "");
}

TEST_F(SearchDisk, WalksADayRangeUpToTodayAndToTheLastDayOfSignedTime) {
  for (const int day : {9, 10, 11, 12, 13}) {
    Record(std::to_string(day), At(4, day), At(4, day, 13));
  }
  m_criteria.SetBeginTime(At(4, 10, 9));
  EXPECT_EQ(Search(), "10 11 12");  // without an end, until today
  for (const auto& [end, found] :
       {std::pair(At(4, 20), "10 11 12"), {At(4, 11, 11), "10"}, {At(4, 9, 23), ""}}) {
    m_criteria.SetEndTime(end);
    EXPECT_EQ(Search(), found);
  }
  // Time is signed here.
  const CTime last(0x7FFFFFFF);
  MoveTo(last);
  Record("last", last - 60, last);
  Criteria().SetBeginTime(last - 100000);
  EXPECT_EQ(Search(), "last");
  m_criteria.SetEndTime(last + 86400);  // before everything else
  EXPECT_EQ(Search(), "");
}

// "Everything" reaches the last day wherever the day that 1970 began in had its midnight, and asks
// the disk for the days that it has and not for 12,000.
TEST_F(SearchDisk, SearchesSince1970WithOneListing) {
  for (const char* zone : {"EST5", "CET-1", "UTC"}) {
    const ScopedTimeZone scoped(zone);
    Record("first", CTime(), CTime(1));
    Record("last", At(4, 12, 1), At(4, 12, 2));
    FaultyFileSystem counting;
    m_criteria.SetBeginTime(CTime());
    m_criteria.SetEndTime(At(4, 12));
    EXPECT_EQ(Search(), "first last") << zone;
    EXPECT_LT(counting.Calls(), 40U);
    // Of the disk, behind the first day's own: every day is asked for.
    counting.FailCall(FaultyFileSystem::kList, 2);
    EXPECT_EQ(Search(), "first last") << zone;
    m_criteria.SetBeginTime(At(4, 12, 1));
    counting.FailCall(FaultyFileSystem::kList, 2);  // a day that is there takes its own alone
    EXPECT_EQ(Words({Search(), counting.Failures()}), "last 1") << zone;
    fs::remove_all(m_d.Path() / CTime().Format("d%Y%m%d"));
  }
}

// Days are 24 hours apart. Behind a day of 25 hours that is an hour before midnight: that day is
// searched twice and the last one not at all.
TEST_F(SearchDisk, StepsOverADayOfTwentyFiveHours) {
  const ScopedTimeZone zone("EST5EDT,M4.1.0,M10.4.0");
  for (int day = 23; day <= 27; ++day) Record(std::to_string(day), At(10, day), At(10, day, 13));
  MoveTo(At(10, 28));
  m_criteria.SetBeginTime(At(10, 23, 8));
  m_criteria.SetEndTime(At(10, 27, 20));
  EXPECT_EQ(Search(), "23 24 24 25 26");
}

TEST_F(SearchDisk, FindsRecordingsThatHadNotEndedAtAMoment) {
  const CTime moment = At(4, 10, 11);
  Record("a", moment - 60, moment - 1);
  Record("b", moment - 60, moment);
  Record("c", moment + 60, moment + 120);
  Record("d", moment - 60, moment);
  m_criteria.SetTimeBegin(moment);
  m_criteria.SetCameraName("another");       // not consulted
  EXPECT_EQ(Search(), "c d");                // the last entry may end at the very moment
  fs::create_directory(Leaf(moment) / "e");  // may be the last entry too
  EXPECT_EQ(Search(), "c");
}

TEST_F(SearchDisk, TellsOfPicturesAndFacesWhatTheirFilesTell) {
  CImage image;
  image.CreateImage(new BYTE[8 * 4 * 3](), 8, 4);
  const fs::path leaf = Leaf(m_day, "picture");
  image.SaveImageAs(kImageBmp, (leaf / "nameless").string());
  image.SetCameraName("gate");
  image.SetBoardName("board");
  image.SetHostName("h");
  image.SetTimeStamp(m_day.GetTime());
  image.SetGmt(9);
  image.SaveImageAs(kImageBmp, (leaf / "shot").string());

  Criteria(kSearchPicture | kSearchClip | kSearchFace).SetDate(m_day.GetTime());
  EXPECT_EQ(Search(), "shot.bmp");
  EXPECT_EQ(Found(), Words({"d:\\d20040410\\rec\\picture\\shot.bmp h board gate", m_day.GetTime(),
                            "0 9", fs::file_size(leaf / "shot.bmp"), "8 4"}));
  Criteria(kSearchPicture).SetBeginTime(At(4, 9));
  EXPECT_EQ(Search(), "");  // never in a range

  CMoxFile file;
  file.SetCameraName("gate");
  file.SetHostName("h");
  file.SetBoardName("board");
  file.SetBoardIndex(3);
  file.SetCameraIndex(4);
  file.SetGmt(5);
  ASSERT_EQ(file.Open((Leaf(m_day, "face") / "faces").c_str(), 1), 1);
  file.Write(std::vector<BYTE>(100 * 120).data(), kNoonInNewYork + 60);
  file.Close();
  Criteria(kSearchFace).SetDate(m_day.GetTime());
  m_criteria.SetCameraID({3, 4});
  m_criteria.SetBeginTime(CTime(kNoonInNewYork + 60));
  EXPECT_EQ(Search(), "faces");
  EXPECT_EQ(Found(), Words({"d:\\d20040410\\rec\\face\\faces h board gate", kNoonInNewYork,
                            kNoonInNewYork + 60, 5, 42 + 10 + 4 + 100 * 120, "100 120"}));
}

TEST_F(SearchDisk, PassesOverWhatIsNoRecordingOrCannotBeRead) {
  Record("a", m_day, m_day + 60);
  Record("b", m_day, m_day + 60);
  const fs::path leaf = Leaf(m_day);
  WriteWholeFile((leaf / "garbage").string(), "no recording");
  fs::create_symlink("nowhere", leaf / "dangling");
  ASSERT_EQ(mkfifo((leaf / "pipe").c_str(), 0600), 0);
  // Its path would be that of a recording of another day.
  fs::copy(leaf / "a", leaf / R"(..\..\..\d20040412\rec\video\c)");
  Record("c", At(4, 12), At(4, 12) + 60);
  m_criteria.SetDate(m_day.GetTime());
  EXPECT_EQ(Search(), "a b");
  {
    FaultyFileSystem faulty;
    for (const unsigned kind : {FaultyFileSystem::kOpen, FaultyFileSystem::kRead}) {
      faulty.FailCall(kind, 1);
      EXPECT_EQ(Search(), "b") << kind;
    }
  }
  MakeFile("d20040411");  // in a day's place
  m_criteria.SetDate(At(4, 11).GetTime());
  EXPECT_EQ(Search(), "");
}

}  // namespace
