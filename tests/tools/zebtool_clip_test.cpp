// Clips by time and by block: which frames they hold.
#include <gtest/gtest.h>

#include "tests/tools/test_recording.h"
#include "tests/tools/tool_run.h"

namespace {

// 100 frames, 40 ms apart, in blocks of 18, 20, 20, 20, 20 and 2.
class Clip : public testing::Test {
 protected:
  Clip() { WriteWholeFile(m_path, MakeRecording(m_frames)); }

  // The numbers of the first and the last frame of the clip.
  std::pair<int, int> Cut(std::vector<std::string> options) {
    options.insert(options.begin(), {"clip", m_path, m_clip});
    const ToolRun run = RunTool(options);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(RunTool({"verify", m_clip}).status, 0) << RunTool({"verify", m_clip}).out;
    m_said = run.out;
    const auto frames = ReadFrames(m_clip);
    const auto number = [](const TestFrame& frame) {
      return static_cast<int>(frame.time_stamp - kTestFirstStamp) / 40;
    };
    const int first = number(frames.front());
    for (std::size_t i = 0; i < frames.size(); ++i) {
      EXPECT_EQ(frames[i], m_frames[static_cast<std::size_t>(first) + i]);
    }
    return {first, number(frames.back())};
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("made.zebz");
  const std::string m_clip = m_dir.File("clip.zebz");
  const std::vector<TestFrame> m_frames = MakeFrames(100);
  std::string m_said;
};

TEST_F(Clip, ByTimeBeginsWithTheBlockAndEndsWithTheLastFrameNotAfter) {
  using Pair = std::pair<int, int>;
  EXPECT_EQ(Cut({"--from", "+0", "--to", "+100"}), Pair(0, 99));
  EXPECT_EQ(Cut({"--from", "+0.719", "--to", "+0.8"}), Pair(0, 20));
  EXPECT_EQ(Cut({"--from", "+0.72", "--to", "+0.839"}), Pair(18, 20));
  EXPECT_EQ(Cut({"--from", "+1", "--to", "+3"}), Pair(18, 75));
  EXPECT_EQ(Cut({"--from", "+3.95"}), Pair(98, 99));
  EXPECT_EQ(Cut({"--to", "+0"}), Pair(0, 0));
  EXPECT_TRUE(Contains(m_said, "1 frame in 1 block")) << m_said;
}

TEST_F(Clip, ByTimeOfDayMeansTheRecordingsDay) {
  const CTime begin(kTestBeginSeconds);
  const std::string from = (begin + 1).Format("%H:%M:%S");
  const std::string to = (begin + 3).Format("%Y-%m-%d %H:%M:%S");
  EXPECT_EQ(Cut({"--from", from, "--to", to}), std::pair(18, 75));
  EXPECT_TRUE(Contains(m_said, begin.Format("%Y-%m-%d %H:%M:%S") + " to ")) << m_said;
}

TEST_F(Clip, ByBlockTakesWholeBlocksAndAPart) {
  EXPECT_EQ(Cut({"--from-block", "1", "--to-block", "3"}), std::pair(18, 57));
  EXPECT_EQ(Cut({"--from-block", "1", "--to-block", "2", "--to-index", "3"}), std::pair(18, 40));
  EXPECT_EQ(Cut({"--from-block", "4"}), std::pair(78, 99));
  EXPECT_EQ(Cut({"--from-block", "5", "--to-block", "5", "--to-index", "9"}), std::pair(98, 99));
}

TEST_F(Clip, OfNothingFailsAndLeavesNoFile) {
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{"--from-block", "6"}, {"--from", "+4", "--to", "+5"}}) {
    std::vector<std::string> arguments = {"clip", m_path, m_clip};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(RunTool(arguments).status, 1);
    EXPECT_FALSE(std::filesystem::exists(m_clip));
  }
}

TEST_F(Clip, OfARecordingInWorkHoldsItsClosedBlocks) {
  WriteWholeFile(m_path, MakeRecording(m_frames, false));
  EXPECT_EQ(Cut({"--from", "+0"}), std::pair(0, 97));
}

}  // namespace
