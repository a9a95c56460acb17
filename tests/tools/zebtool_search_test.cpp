// Searching the disks of a database by command line: what each criterion finds, and what is said.
#include <algorithm>

#include "tests/support/scoped_time_zone.h"
#include "tests/tools/store_fixture.h"

namespace {

class ZebtoolSearch : public StoreFixture {
 protected:
  void Record(const std::string& begin, const std::string& camera, const std::string& name,
              std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"record", m_video, "--begin", begin, "--camera", camera,
                               "--camera-name", name, "--board-name", "b0"});
    const ToolRun run = Run(more);
    ASSERT_EQ(run.status, 0) << run.err;
  }

  // The names of the files found, without extension, in the order of the answer.
  std::string Found(std::vector<std::string> options) {
    options.insert(options.begin(), "search");
    const ToolRun run = Run(options);
    EXPECT_TRUE(run.err.empty()) << run.err;
    std::string names;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) {
      const std::size_t slash = line.rfind('\\');
      if (slash == std::string::npos) continue;
      names += line.substr(slash + 1, line.rfind('.') - slash - 1) + ' ';
    }
    EXPECT_EQ(run.status, names.empty() ? 1 : 0);
    return names;
  }

  const std::string m_video = m_dir.File("video.y4m");
};

TEST_F(ZebtoolSearch, FindsByEveryCriterion) {
  // Two cameras on the evening of May the 1st, and one on the day after; then a clip, an alarm, a
  // picture, a log and a face file of that day.
  Init();
  WriteWholeFile(m_video, MakeY4m(176, 144, 60, "1:1"));
  Record("2024-05-01 21:00:00", "1", "gate");
  Record("2024-05-01 22:00:00", "2", "yard");
  Record("2024-05-02 10:00:00", "1", "gate");
  Record("2024-05-02 11:00:00", "1", "gate", {"--alarm"});
  const std::string recorder = R"(d:\dvr\d20240502\recorder\)";
  for (const std::string leaf : {"clip", "picture", "log", "face"}) {
    std::filesystem::create_directories(Drive('d') / "dvr/d20240502/recorder" / leaf);
  }
  const std::string recording = recorder + "video\\c0001240502100000.zebz";
  ASSERT_EQ(RunTool({"clip", recording, recorder + "clip\\part.zebz", "--from-block", "0"}).status,
            0);
  ASSERT_EQ(RunTool({"snapshot", recording, recorder + "picture\\p.bmp", "--at", "+5"}).status, 0);
  WriteWholeFile((Drive('d') / "dvr/d20240502/recorder/log/userlog.ulg").string(), "log");
  MakeFaces(recorder + "face\\f.face", 0);
  const std::string evening_1 = "c0001240501210000 ";
  const std::string evening_2 = "c0002240501220000 ";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--date", "2024-05-01"}, evening_1 + evening_2},
      {{"--date", "2024-05-01", "--camera", "0,2"}, evening_2},
      {{"--date", "2024-05-01", "--camera-name", "gate", "--board-name", "b0"}, evening_1},
      {{"--date", "2024-05-01", "--frame-size", "129"}, ""},
      {{"--from", "2024-05-01 20:00:00", "--to", "2024-05-01 21:59:59"}, evening_1},
      {{"--at", "2024-05-01 21:00:30"}, evening_1 + evening_2},
      {{"--at", "2024-05-01 21:00:30", "--camera", "0,1"}, evening_1},
      {{"--date", "2024-05-02", "--kind", "clip"}, "part "},
      {{"--date", "2024-05-02", "--kind", "alarm"}, "ca0001240502110000 "},
      {{"--date", "2024-05-02", "--kind", "picture", "--camera-name", "gate"}, "p "},
      {{"--date", "2024-05-02", "--kind", "log", "--camera-name", "none"}, "userlog "},
      {{"--date", "2024-05-02", "--kind", "face", "--camera", "0,1"}, "f "},
  };
  for (const auto& [options, found] : cases) {
    EXPECT_EQ(Found(options), found) << options[1] << ' ' << options.back();
  }
  const ToolRun run = Run({"search", "--date", "2024-05-01", "--disk", "d"});
  EXPECT_TRUE(Contains(run.err, "there is no disk 'd'")) << run.err;
  const auto picture = Run({"search", "--date", "2024-05-02", "--kind", "picture", "--json"}).out;
  EXPECT_EQ(JsonNumber(picture, "begin_seconds"), CTime(2024, 5, 2, 10, 0, 5).GetTime());
  EXPECT_EQ(JsonNumber(picture, "camera"), -1);
}

// A day of 25 hours in October and one of 23 in March; midnight is an hour, too.
TEST_F(ZebtoolSearch, TimeSpanIsSearchedCalendarDayByCalendarDay) {
  const ScopedTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  Init();
  WriteWholeFile(m_video, MakeY4m(16, 16, 3, "1:30"));
  const char* const kDays[] = {"2024-03-30", "2024-03-31", "2024-04-01",
                               "2024-10-26", "2024-10-27", "2024-10-28"};
  for (const std::string day : kDays) Record(day + " 00:00:00", "1", "gate");
  Record("2024-10-28 23:59:30", "1", "gate");  // ends on the day after
  const std::string spring = "c0001240330000000 c0001240331000000 c0001240401000000 ";
  const std::string autumn = "c0001241026000000 c0001241027000000 c0001241028000000 ";
  const std::string late = "c0001241028235930 ";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"--from", "2024-03-30 00:00:00", "--to", "2024-04-01 00:00:00"}, spring},
      {{"--from", "2024-10-26 00:00:00", "--to", "2024-10-28 00:00:00"}, autumn},
      {{"--from", "1970-01-02 00:00:00"}, spring + autumn + late},
      {{"--from", "2024-10-29 00:00:10"}, late},
      {{"--from", "2024-10-29 00:01:00"}, ""},
  };
  for (const auto& [options, found] : cases) EXPECT_EQ(Found(options), found) << options[1];
}

}  // namespace
