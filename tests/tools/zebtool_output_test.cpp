// What becomes of the files that commands write, and of what lies there already.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <set>

#include "tests/tools/tool_fixture.h"

using namespace zebx;

namespace {

namespace fs = std::filesystem;

class ToolOutput : public testing::Test {
 protected:
  struct Job {
    std::vector<std::string> arguments;
    std::string output;
  };

  ToolOutput() {
    fs::create_directory(m_dir.File("in"));
    const std::string video = In("video.y4m");
    WriteWholeFile(video, MakeY4m(16, 16, 2));
    EXPECT_EQ(RunTool({"import", video, In("r.zebz")}).status, 0);
    MakeFaces(In("f.face"), 1);
    fs::create_directory(m_out);
    const std::string r = In("r.zebz");
    m_jobs = {{{"import", video, Out("o.zebz")}, "o.zebz"},
              {{"clip", r, Out("o.zebz"), "--to", "+9"}, "o.zebz"},
              {{"export", r, Out("o.y4m")}, "o.y4m"},
              {{"export", r, "-", "--wav", Out("o.wav")}, "o.wav"},
              {{"snapshot", r, Out("o")}, "o.bmp"},
              {{"snapshot", r, Out("o.png")}, "o.png"},
              {{"salvage", r, Out("o.zebz")}, "o.zebz"},
              {{"face", In("f.face"), "extract", m_out}, "face0000.bmp"}};
  }

  std::string In(const std::string& name) const { return m_dir.File("in/" + name); }
  std::string Out(const std::string& name) const { return m_dir.File("out/" + name); }
  std::set<std::string> Files() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_out)) names.insert(entry.path().filename());
    return names;
  }
  void Clear() const {
    fs::remove_all(m_out);
    fs::create_directory(m_out);
  }
  static ToolRun Forced(const Job& job) {
    std::vector<std::string> arguments = job.arguments;
    arguments.emplace_back("--force");
    return RunTool(arguments);
  }

  TempDir m_dir;
  const std::string m_out = m_dir.File("out");
  std::vector<Job> m_jobs;
};

TEST_F(ToolOutput, FileThatIsThereIsReplacedByForceAlone) {
  for (const Job& job : m_jobs) {
    SCOPED_TRACE(job.arguments[0] + ' ' + job.output);
    Clear();
    ASSERT_EQ(RunTool(job.arguments).status, 0);
    const std::string made = ReadWholeFile(Out(job.output));
    EXPECT_EQ(Files(), std::set{job.output});
    const std::string mine = Out("mine");
    for (const bool is_link : {false, true}) {
      Clear();
      WriteWholeFile(is_link ? mine : Out(job.output), "evidence");
      if (is_link) fs::create_symlink(mine, Out(job.output));
      ExpectFailure(RunTool(job.arguments), "--force replaces it");
      EXPECT_EQ(ReadWholeFile(Out(job.output)), "evidence");
      EXPECT_EQ(Forced(job).status, 0);
      EXPECT_EQ(ReadWholeFile(Out(job.output)).size(), made.size());
      EXPECT_EQ(fs::is_symlink(Out(job.output)), is_link);
      EXPECT_EQ(Files().size(), is_link ? 2U : 1U);
    }
  }
}

TEST_F(ToolOutput, WhatIsNoFileOrProtectedStaysWhatItIs) {
  const std::pair<const char*, std::function<void(const char* path)>> cases[] = {
      {"is a directory", [](const char* path) { mkdir(path, 0755); }},
      {"leads nowhere", [](const char* path) { fs::create_symlink("nowhere", path); }},
      {"is a device or a pipe", [](const char* path) { mkfifo(path, 0600); }},
      {"write-protected", [](const char* path) { close(open(path, O_CREAT, 0400)); }},
  };
  for (const Job& job : m_jobs) {
    for (const auto& [said, make] : cases) {
      // Video is written into a pipe, where somebody has to read it.
      if (job.output == "o.y4m" && Contains(said, "pipe")) continue;
      SCOPED_TRACE(job.arguments[0] + ' ' + job.output + ' ' + said);
      Clear();
      make(Out(job.output).c_str());
      const auto before = fs::symlink_status(Out(job.output));
      ExpectFailure(Forced(job), said);
      const auto after = fs::symlink_status(Out(job.output));
      EXPECT_EQ(after.type(), before.type());
      EXPECT_EQ(after.permissions(), before.permissions());
      EXPECT_EQ(Files(), std::set{job.output});
    }
  }
}

TEST_F(ToolOutput, JobThatFailsLeavesEverythingAsItWas) {
  const std::string empty = In("empty.y4m");
  WriteWholeFile(empty, MakeY4m(16, 16, 0));
  // A block that says it has no frames.
  std::string frameless = MakeRecording(MakeFrames(44));
  frameless.replace(BlockOffsets(frameless)[1] + 8, 2, std::string(2, '\0'));
  WriteWholeFile(In("frameless.zebz"), frameless);
  WriteWholeFile(In("no_video.zebz"), MakeRecording(MakeFrames(2)));
  const std::string r = In("r.zebz");
  const Job cases[] = {
      {{"import", empty, Out("o.zebz")}, "o.zebz"},
      {{"clip", r, Out("o.zebz"), "--from", "+50"}, "o.zebz"},
      {{"clip", r, Out("o.zebz"), "--from-block", "9"}, "o.zebz"},
      {{"clip", In("frameless.zebz"), Out("o.zebz"), "--from-block", "1", "--to-block", "2"},
       "o.zebz"},
      {{"export", r, Out("o.y4m"), "--wav", Out("no/such/directory/o.wav")}, "o.y4m"},
      {{"snapshot", In("no_video.zebz"), Out("o.bmp")}, "o.bmp"},
      {{"salvage", empty, Out("o.zebz")}, "o.zebz"},
  };
  for (const Job& job : cases) {
    SCOPED_TRACE(testing::PrintToString(job.arguments));
    Clear();
    EXPECT_EQ(Forced(job).status, 1);
    EXPECT_EQ(Files(), std::set<std::string>());
    WriteWholeFile(Out(job.output), "evidence");
    EXPECT_EQ(Forced(job).status, 1);
    EXPECT_TRUE(ReadWholeFile(Out(job.output)) == "evidence");
    EXPECT_EQ(Files(), std::set{job.output});
  }
}

TEST_F(ToolOutput, WhatSomebodyElseHasLeftUnfinishedStays) {
  WriteWholeFile(Out("o.part.zebz"), "saved frames");
  ExpectFailure(RunTool({"demo", m_out}), "is not empty");
  EXPECT_EQ(RunTool(m_jobs[0].arguments).status, 0);
  EXPECT_EQ(ReadWholeFile(Out("o.part.zebz")), "saved frames");
  EXPECT_EQ(Files(), (std::set<std::string>{"o.part.zebz", "o.zebz"}));
}

TEST_F(ToolOutput, DeviceTakesVideoAndStays) {
  for (const auto& [device, status] : {std::pair("/dev/null", 0), {"/dev/full", 1}}) {
    if (!fs::is_character_file(device)) GTEST_SKIP() << "no " << device << " here";
    const ToolRun run = RunTool({"export", In("r.zebz"), device});
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_TRUE(fs::is_character_file(device));
    EXPECT_EQ(Contains(run.err, "disk is full"), status != 0);
  }
}

}  // namespace
