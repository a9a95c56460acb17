// Searching the disks of a database by command line: what each criterion finds, and what is said.
#include "tests/tools/store_fixture.h"

namespace {

class ZebtoolSearch : public StoreFixture {
 protected:
  // Two cameras on the evening of May the 1st and one on the day after, with an alarm and a
  // picture.
  void FillDisk() {
    Init();
    WriteWholeFile(m_video, MakeY4m(176, 144, 60, "1:1"));
    Record("2024-05-01 21:00:00", "1", "gate");
    Record("2024-05-01 22:00:00", "2", "yard");
    Record("2024-05-02 10:00:00", "1", "gate");
    Record("2024-05-02 11:00:00", "1", "gate", {"--alarm"});
    std::filesystem::create_directories(Drive('d') / "dvr/d20240502/recorder/picture");
    const std::string recorder = "d:\\dvr\\d20240502\\recorder\\";
    ASSERT_EQ(RunTool({"snapshot", recorder + "video\\c0001240502100000.zebz",
                       recorder + "picture\\p.bmp", "--at", "+5"})
                  .status,
              0);
  }

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
  FillDisk();
  const std::string evening_1 = "c0001240501210000 ";
  const std::string evening_2 = "c0002240501220000 ";
  const std::string morning = "c0001240502100000 ";
  const struct {
    std::vector<std::string> options;
    std::string found;
  } cases[] = {
      {{"--date", "2024-05-01"}, evening_1 + evening_2},
      {{"--date", "2024-05-01", "--host", "elsewhere"}, ""},
      {{"--date", "2024-05-01", "--camera", "0,2"}, evening_2},
      {{"--date", "2024-05-01", "--camera-name", "gate", "--board-name", "b0"}, evening_1},
      {{"--date", "2024-05-01", "--frame-size", "129"}, ""},
      {{"--date", "2024-05-01", "--disk", "ZebDatabase(d:\\)"}, evening_1 + evening_2},
      {{"--from", "2024-05-01 21:30:00"}, evening_2 + morning},
      {{"--from", "2024-05-01 20:00:00", "--to", "2024-05-01 21:59:59"}, evening_1},
      {{"--at", "2024-05-01 21:00:30", "--camera", "0,1"}, evening_1},
      {{"--date", "2024-05-02", "--kind", "alarm"}, "ca0001240502110000 "},
      {{"--date", "2024-05-02", "--kind", "picture", "--camera-name", "gate"}, "p "},
  };
  for (const auto& [options, found] : cases) {
    EXPECT_EQ(Found(options), found) << options[1] << ' ' << options.back();
  }
}

TEST_F(ZebtoolSearch, TellsWhatEachKindKnows) {
  FillDisk();
  const auto told = [&](const std::string& kind, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"search", "--date", "2024-05-02", "--kind", kind});
    return Run(more).out;
  };
  const std::string text = told("video");
  EXPECT_TRUE(text.starts_with("2024-05-02 10:00:00 to 2024-05-02 10:00:59  0,1  \"gate\"  "))
      << text;
  EXPECT_TRUE(told("picture").starts_with("2024-05-02 10:00:05  \"gate\"  "));
  const std::string json = told("video", {"--json"});
  EXPECT_EQ(JsonNumber(json, "end_seconds"), CTime(2024, 5, 2, 10, 0, 59).GetTime());
  EXPECT_EQ(JsonNumber(told("picture", {"--json"}), "camera"), -1);
}

TEST_F(ZebtoolSearch, CriteriaThatDoNotFitAreRefused) {
  Init();
  const std::vector<std::string> cases[] = {
      {"--date", "2024-05-01", "--at", "2024-05-01 00:00:00"},
      {"--at", "2024-05-01 00:00:00", "--kind", "face"},
      {"--at", "2024-05-01 00:00:00", "--camera-name", "gate"},
      {"--date", "2024-05-01", "--camera", "3"},
      {"--date", "2024-05-01", "--camera", "0,3", "--kind", "picture"},
  };
  for (std::vector<std::string> arguments : cases) {
    arguments.insert(arguments.begin(), "search");
    EXPECT_EQ(Run(arguments).status, 2) << testing::PrintToString(arguments);
  }
  EXPECT_EQ(Run({"search", "--date", "2024-05-01", "--disk", "d"}).status, 1);
}

}  // namespace
