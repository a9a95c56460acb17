// What the tool says and takes: wrong command lines, jobs that cannot begin, help, moments, numbers
// and rates as text.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tools/tool_fixture.h"
#include "tools/zebtool/console/json_text.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/media/frame_rate.h"

using namespace zebtool;

namespace {

TEST(ZebtoolUsage, WrongCommandLinesEndWithTwoAndSayWhy) {
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"impotr"}, "no subcommand 'impotr', did you mean 'import'?; see 'zebtool help'"},
      {{"store", "mend", "--db", "a"}, "no subcommand 'mend'; see 'zebtool help store'"},
      {{"clip", "a", "--form", "+1"}, "no option --form, did you mean '--from'?"},
      {{"verify"}, "FILE is required; see 'zebtool help verify'"},
      {{"export", "a", "b", "c"}, "'c' is one argument too many"},
      {{"import", "a", "b", "--gop"}, "--gop: 1 required N missing"},
      {{"import", "a", "b", "--gop", "1x"}, "from 1 to 1000, not '1x'"},
      {{"import", "a", "b", "--begin", "2024-02-30 00:00:00"}, "--begin takes"},
      {{"record", "-", "--db", "a", "--loops", "2"}, "not a pipe"},
      {{"search", "--db", "a"}, "one of --date, --from and --at"},
      {{"clip", "a", "b", "--from", "+1", "--to-block", "2"}, "not both"},
      {{"clip", "a", "b", "--from-block", "3", "--to-block", "2"}, "nothing between"},
      {{"live", "--devices", "6:99"}, "--devices takes a plan such as 6:8,10:4@/srv/clips"},
      {{"live", "--record"}, "need --db FILE"},
      {{"live", "--db", "a"}, "--db is for --record"},
      {{"live", "--frame-size", "130"}, "131 or 135 (PAL)"},
      {{"live", "--mask", "0,0,0,50"}, "--mask takes left, top, right and bottom"},
      {{"live", "--mask", "0:0,0,50,50"}, "--mask takes left, top, right and bottom"},
      {{"live", "--seconds", "1", "--mask", "9:0,0,50,50"}, "camera 9, but there are 4"},
      {{"live", "--name", "Gate"}, "the number of a camera from 1 on"},
  };
  for (const auto& [arguments, text] : cases) {
    const ToolRun run = RunTool(arguments);
    ExpectFailure(run, text, 2);
    EXPECT_TRUE(run.out.empty());
  }
}

TEST(ZebtoolUsage, HelpIsThereAtEveryLevel) {
  const std::string all = RunTool({"--help"}).out;
  EXPECT_EQ(RunTool({"help"}).out, all);
  EXPECT_TRUE(Contains(all, "\n  verify "));
  std::istringstream lines(all.substr(all.find("subcommands:\n")));
  for (std::string line; std::getline(lines, line) && !line.empty();) {
    if (!line.starts_with("  ")) continue;
    const std::string name = line.substr(2, line.find(' ', 2) - 2);
    const ToolRun help = RunTool({"help", name});
    EXPECT_TRUE(help.out.starts_with("usage: zebtool " + name + ' ')) << help.out;
    EXPECT_EQ(RunTool({name, "whatever", "--help"}).out, help.out);
  }
  const std::string init = RunTool({"store", "init", "--reserved", "x", "-h"}).out;
  EXPECT_TRUE(Contains(init, "usage: zebtool store init DIR --db FILE")) << init;
  EXPECT_EQ(RunTool({"help", "store", "init"}).out, init);
}

class ZebtoolJob : public testing::Test {
 protected:
  ZebtoolJob() { WriteWholeFile(m_good, MakeRecording(MakeFrames(20))); }

  TempDir m_dir;
  const std::string m_good = m_dir.File("good.zebz");
  const std::string m_link = m_dir.File("link.zebz");
  const std::string m_out = m_dir.File("out");
};

TEST_F(ZebtoolJob, ThatCannotBeginEndsWithOneAndSaysWhy) {
  const std::string video = m_dir.File("video.y4m");
  WriteWholeFile(video, MakeY4m(16, 16, 1));
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"info", "q:\\x.zebz"}, "cannot open"},
      {{"import", m_dir.Path().string(), m_out}, "it is a directory"},
      {{"import", video, video}, "is the input"},
      {{"export", m_good, m_good}, "is the input"},
      {{"export", m_good, m_out, "--from", "0:18"}, "there is no frame 18"},
      {{"clip", m_good, m_good, "--from", "+0"}, "is the input"},
      {{"salvage", m_good, m_link}, "is the input"},
      {{"demo", m_good + "/x"}, "cannot make the directory"},
      {{"live", "--devices", "6:1@/not/there"}, "there is no directory '/not/there'"},
      {{"live", "--device-dir", m_out}, "make it or leave it out"},
      {{"live", "--record", "--db", m_out}, "'zebtool store init' makes one"},
      {{"live", "--sheet", m_dir.Path().string()}, "it is a directory"},
  };
  std::filesystem::create_hard_link(m_good, m_link);
  const std::string before = ReadWholeFile(m_good);
  for (const auto& [arguments, text] : cases) {
    ExpectFailure(RunTool(arguments), text);
    EXPECT_FALSE(std::filesystem::exists(m_out)) << text;
  }
  EXPECT_EQ(ReadWholeFile(m_good), before);
  const ToolRun both = RunTool({"verify", m_out, m_good});
  EXPECT_EQ(both.status, 1);
  EXPECT_TRUE(Contains(both.out, "good.zebz: whole, 20 frames")) << both.out;
}

TEST_F(ZebtoolJob, WhoseReportIsNotTakenEndsWithOne) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
  std::istringstream in;
  std::ostringstream err;
  std::ofstream full("/dev/full");
  Console console{in, full, err};
  const std::vector<std::string> arguments = {"info", m_good};
  EXPECT_EQ(RunZebtool(arguments, console), 1);
  EXPECT_TRUE(Contains(err.str(), "cannot write the standard output")) << err.str();
}

TEST(Text, MomentsAreTakenInThreeFormsAndNoOther) {
  const CTime begin(2024, 5, 1, 8, 30, 0);
  EXPECT_EQ(ParseMomentMs("2024-05-01 08:31:00", begin), 60000);
  EXPECT_EQ(ParseMomentMs("08:29:59", begin), -1000);
  EXPECT_EQ(ParseMomentMs("+1.5", begin), 1500);
  EXPECT_EQ(ParseMomentMs("+0.007", begin), 7);
  for (const char* text : {"", "+", "+1.", "+1.2345", "-1", "8:30:00", "24:00:00", "2024-05-01",
                           "2024-04-31 00:00:00", "1969-01-01 00:00:00", "+99999999999"}) {
    EXPECT_EQ(ParseMomentMs(text, begin), std::nullopt) << text;
  }
  // JSON takes whatever names hold.
  EXPECT_EQ(JsonText({{"a\"\n\x7F\xC3\xBC", Json::array({"\xFF", 1})}}),
            "{\n  \"a\\\"\\n\x7F\xC3\xBC\": [\n    \"\xC3\xBF\",\n    1\n  ]\n}");
}

TEST(FrameRate, WellKnownRatesAreFoundBehindWholeMilliseconds) {
  for (const FrameRate& rate : {FrameRate{25, 1}, {30, 1}, {30000, 1001}, {25, 2}, {1, 1}}) {
    const FrameRate found = RateOfIntervals(rate.Begin(1000, 1000), 1000);
    EXPECT_EQ(std::pair(found.frames, found.seconds), std::pair(rate.frames, rate.seconds));
  }
  EXPECT_NEAR(RateOfIntervals(1000 * 77, 1000).PerSecond(), 1000.0 / 77, 1e-9);
  EXPECT_EQ(RateOfIntervals(0, 0).frames, 25U);
  // Long recordings stay exact.
  constexpr ULONGLONG kDayOfFrames = 2589409;  // 30000 / 1001 a second, rounded down
  EXPECT_EQ((FrameRate{30000, 1001}.Begin(kDayOfFrames * 30000, 1000)), kDayOfFrames * 1001 * 1000);
  EXPECT_EQ((FrameRate{16777213, 16777216}.Begin(16777212, 8000)),
            ULONGLONG{16777212} * 16777216 * 8000 / 16777213);
}

}  // namespace
