// Salvage from the middle of damage: what is intact comes back, what is lost is named.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/tools/test_recording.h"
#include "tests/tools/tool_run.h"

namespace {

class Salvage : public testing::Test {
 protected:
  ToolRun Run(const std::string& bytes) {
    for (const std::string& path : {m_path, m_saved}) std::filesystem::remove(path);
    WriteWholeFile(m_path, bytes);
    const ToolRun run = RunTool({"salvage", m_path, m_saved, "--json"});
    EXPECT_EQ(ReadWholeFile(m_path), bytes);
    return run;
  }

  // The frames of the saved file, all of them once, in order.
  std::vector<DWORD> SavedStamps() {
    std::vector<DWORD> stamps;
    for (const TestFrame& frame : ReadFrames(m_saved)) stamps.push_back(frame.time_stamp);
    return stamps;
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("broken.zebz");
  const std::string m_saved = m_dir.File("saved.zebz");
  const std::vector<TestFrame> m_frames = MakeFrames(130, 5, 40);
  const std::string m_whole = MakeRecording(m_frames);
  const std::vector<std::size_t> m_ends = FrameEnds(m_whole, m_frames);
  const std::vector<std::size_t> m_blocks = BlockOffsets(m_whole);
};

TEST_F(Salvage, HoleAnywhereCostsOnlyTheFramesItTouches) {
  for (const char filler : {'\0', '\xFF', 'x'}) {
    for (std::size_t begin = m_blocks[0] + 300; begin + 400 < m_whole.size(); begin += 97) {
      const std::size_t end = begin + 230;
      SCOPED_TRACE("hole at " + std::to_string(begin));
      std::string broken = m_whole;
      std::fill(broken.begin() + static_cast<std::ptrdiff_t>(begin),
                broken.begin() + static_cast<std::ptrdiff_t>(end), filler);
      ASSERT_EQ(Run(broken).status, 0);
      std::vector<TestFrame> untouched;
      for (std::size_t i = 0; i < m_frames.size(); ++i) {
        const std::size_t frame_begin = m_ends[i] - m_frames[i].FileBytes();
        if (m_ends[i] <= begin || frame_begin >= end) untouched.push_back(m_frames[i]);
      }
      const auto saved = ReadFrames(m_saved);
      std::size_t found = 0;
      for (const TestFrame& frame : saved) {
        if (found < untouched.size() && frame == untouched[found]) ++found;
      }
      EXPECT_EQ(found, untouched.size());
      // A frame whose header is whole but whose bytes are not may be among them.
      EXPECT_LE(saved.size(), untouched.size() + 6);
    }
  }
}

TEST_F(Salvage, FrameWithAWrongLengthIsLostAloneAndNamed) {
  for (const DWORD length : {0U, 3U, 39U, 43U, 200U, 70000U, 0x7FFFFFFFU}) {
    SCOPED_TRACE(length);
    std::string broken = m_whole;
    PutDword(broken, m_ends[9] + 8, length);
    const ToolRun run = Run(broken);
    ASSERT_EQ(run.status, 0);
    auto stamps = SavedStamps();
    // A length that is too small leaves a frame that ends early, which only a decoder can tell.
    std::erase(stamps, m_frames[10].time_stamp);
    std::vector<DWORD> expected;
    for (const TestFrame& frame : m_frames) {
      if (frame.time_stamp != m_frames[10].time_stamp) expected.push_back(frame.time_stamp);
    }
    EXPECT_EQ(stamps, expected);
    EXPECT_EQ(JsonNumber(run.out, "holes"), 1);
  }
}

TEST_F(Salvage, LostBeginningStartsAtTheNextIFrameAndKeepsTheTime) {
  // Header and the first seven frames are gone; with them the first I-frame's group.
  const ToolRun run = Run(std::string(m_ends[6], 'x') + m_whole.substr(m_ends[6]));
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(SavedStamps().front(), m_frames[10].time_stamp);
  EXPECT_EQ(ReadFrames(m_saved).size(), m_frames.size() - 10);
  EXPECT_EQ(JsonNumber(run.out, "lost_frames"), 3);
  EXPECT_EQ(RunTool({"verify", m_saved}).status, 0);
}

TEST_F(Salvage, TimesAndNamesOfTheHeaderAreKept) {
  std::string broken = m_whole.substr(0, m_ends[100]);
  std::fill(broken.begin() + static_cast<std::ptrdiff_t>(m_blocks[0] + 16),
            broken.begin() + static_cast<std::ptrdiff_t>(m_ends[29]), 'x');
  ASSERT_EQ(Run(broken).status, 0);
  CZebFileInfo info;
  ASSERT_EQ(info.Create(m_saved), 1);
  // 30 frames of 40 ms are missing at the beginning, 29 at the end.
  EXPECT_EQ(info.GetBeginTimeStamp(), kTestFirstStamp + 30 * 40);
  EXPECT_EQ(info.GetBeginTime().GetTime(), kTestBeginSeconds + 1);
  EXPECT_EQ(info.GetEndTime().GetTime(), kTestBeginSeconds + 1 + (70 * 40) / 1000);
  EXPECT_EQ(info.GetCameraName(), "gate");
  EXPECT_EQ(info.GetHostName(), "rec");
  EXPECT_EQ(info.GetCameraID().m_camera, 7);
  EXPECT_EQ(info.GetCameraID().m_board, 1);
  EXPECT_NE(info.IsRT8Port(), 0);
}

TEST_F(Salvage, WriterThatDiedInItsFirstBlockLosesNothing) {
  const std::vector<TestFrame> few(m_frames.begin(), m_frames.begin() + 8);
  const ToolRun run = Run(MakeRecording(few, false));
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(ReadFrames(m_saved), few);
  CZebFileInfo info;
  ASSERT_EQ(info.Create(m_saved), 1);
  EXPECT_EQ(info.GetBeginTime().GetTime(), kTestBeginSeconds);
}

TEST_F(Salvage, FramesLargerThanTheUsualBufferAreNotCut) {
  auto frames = MakeFrames(12, 2, 10);
  frames[3].video.assign(700000, 'v');
  frames[3].flags |= kFrameVoice;
  frames[3].speech.assign(100000, 's');
  const TempDir dir;
  std::string bytes = MakeRecording(MakeFrames(12, 2, 10), false);
  // The writer of the test has small buffers: put the large frame in by hand.
  const auto small = MakeFrames(12, 2, 10);
  const std::size_t at = FrameEnds(MakeRecording(small), small)[2];
  std::string large;
  for (const DWORD value : {frames[3].type | DWORD{frames[3].flags} << 16, frames[3].time_stamp,
                            DWORD{700000}, DWORD{100000}}) {
    large.append(4, '\0');
    PutDword(large, large.size() - 4, value);
  }
  bytes = bytes.substr(0, at) + large + frames[3].video + frames[3].speech +
          bytes.substr(at + small[3].FileBytes());
  ASSERT_EQ(Run(bytes).status, 0);
  const auto saved = RunTool({"info", m_saved, "--json"});
  EXPECT_EQ(saved.status, 0) << saved.out;
  EXPECT_EQ(JsonNumber(saved.out, "frames"), 12);
  EXPECT_TRUE(Contains(ReadWholeFile(m_saved), large + frames[3].video + frames[3].speech));
}

TEST_F(Salvage, CollectionOfSignsWithoutEndIsWalkedInProportion) {
  // Every offset of this tail could be the header of a frame: type 1, no flags, a length of 1.
  std::string tail;
  while (tail.size() < 400000) {
    tail.append(4, '\1');
  }
  const ToolRun run = Run(m_whole + tail);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(ReadFrames(m_saved), m_frames);
}

TEST_F(Salvage, InputIsNeverOverwritten) {
  WriteWholeFile(m_path, m_whole);
  const std::string link = m_dir.File("link.zebz");
  std::filesystem::create_hard_link(m_path, link);
  EXPECT_EQ(RunTool({"salvage", m_path, m_path}).status, 1);
  EXPECT_EQ(RunTool({"salvage", m_path, link}).status, 1);
  EXPECT_EQ(ReadWholeFile(m_path), m_whole);
}

}  // namespace
