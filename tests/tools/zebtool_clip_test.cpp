// Clips by time and by block: which frames they hold.
#include <gtest/gtest.h>

#include "tests/tools/tool_fixture.h"

namespace {

// 100 frames, 40 ms apart, in blocks of 18, 20, 20, 20, 20 and 2.
class Clip : public testing::Test {
 protected:
  Clip() { WriteWholeFile(m_path, MakeRecording(m_frames)); }

  // The numbers of the first and the last frame of the clip, the status when there is none.
  std::pair<int, int> Cut(std::vector<std::string> options) {
    std::filesystem::remove(m_clip);
    options.insert(options.begin(), {"clip", m_path, m_clip});
    const ToolRun run = RunTool(options);
    m_said = run.out;
    if (run.status != 0) return {run.status, std::filesystem::exists(m_clip)};
    EXPECT_EQ(RunTool({"verify", m_clip}).status, 0) << RunTool({"verify", m_clip}).out;
    const auto frames = ReadFrames(m_clip);
    const auto first = std::find(m_frames.begin(), m_frames.end(), frames.front());
    EXPECT_TRUE(std::equal(frames.begin(), frames.end(), first));
    const int number = static_cast<int>(first - m_frames.begin());
    return {number, number + static_cast<int>(frames.size()) - 1};
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("made.zebz");
  const std::string m_clip = m_dir.File("clip.zebz");
  const std::vector<TestFrame> m_frames = MakeFrames(100);
  std::string m_said;
};

TEST_F(Clip, HoldsTheFramesOfATimeOrOfBlocks) {
  const CTime begin(kTestBeginSeconds);
  const struct {
    std::vector<std::string> options;
    std::pair<int, int> frames;
    std::string said;
  } cases[] = {
      // Nothing is left: status 1 and no file.
      {{"--from-block", "6"}, {1, false}, ""},
      {{"--from", "+4", "--to", "+5"}, {1, false}, ""},
      // From the block around the one time to the last frame not after the other.
      {{"--from", "+0", "--to", "+100"}, {0, 99}, "100 frames in 6 blocks"},
      {{"--from", "+0.719", "--to", "+0.8"}, {0, 20}, ""},
      {{"--from", "+0.72", "--to", "+0.839"}, {18, 20}, ""},
      {{"--to", "+0"}, {0, 0}, "1 frame in 1 block"},
      // A time of day means the recording's day.
      {{"--from", (begin + 1).Format("%T"), "--to", (begin + 3).Format("%Y-%m-%d %T")},
       {18, 75},
       begin.Format("%Y-%m-%d %T") + " to "},
      {{"--from-block", "1", "--to-block", "2", "--to-index", "3"}, {18, 40}, ""},
      {{"--from-block", "4"}, {78, 99}, ""},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(testing::PrintToString(one.options));
    EXPECT_EQ(Cut(one.options), one.frames);
    EXPECT_TRUE(Contains(m_said, one.said)) << m_said;
  }
  WriteWholeFile(m_path, MakeRecording(m_frames, false));  // in work: its closed blocks
  EXPECT_EQ(Cut({"--from", "+0"}), std::pair(0, 97));
}

}  // namespace
