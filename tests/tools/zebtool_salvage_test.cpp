// Salvage from the middle of damage: what is intact comes back, what is lost is named.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/tools/tool_fixture.h"

namespace {

class Salvage : public testing::Test {
 protected:
  // What comes back of `bytes`.
  std::vector<TestFrame> Run(const std::string& bytes) {
    m_disk.Put("r", bytes);
    m_run = RunTool({"salvage", "r", "saved", "--json"});
    EXPECT_EQ(m_run.status, 0) << m_run.err;
    EXPECT_EQ(m_disk.Get("r"), bytes);
    return ReadFrames("saved");
  }
  // The recording without some of its bytes, and without some of its frames.
  std::string Without(std::size_t begin, std::size_t end, char filler = 'x') const {
    std::string bytes = m_whole;
    return bytes.replace(begin, end - begin, end - begin, filler);
  }
  std::vector<TestFrame> WithoutFrames(std::size_t begin, std::size_t end) const {
    std::vector<TestFrame> frames = m_frames;
    frames.erase(frames.begin() + static_cast<std::ptrdiff_t>(begin),
                 frames.begin() + static_cast<std::ptrdiff_t>(end));
    return frames;
  }

  MemoryFileSystem m_disk;
  const std::vector<TestFrame> m_frames = MakeFrames(130, 5, 40);
  const std::string m_whole = MakeRecording(m_frames);
  const std::vector<std::size_t> m_ends = FrameEnds(m_whole, m_frames);
  const std::size_t m_first_block = DwordAt(m_whole, 8);
  ToolRun m_run;
};

TEST_F(Salvage, HoleAnywhereCostsOnlyTheFramesItTouches) {
  for (const char filler : {'\0', '\xFF', 'x'}) {
    for (std::size_t begin = m_first_block + 300; begin + 400 < m_whole.size(); begin += 97) {
      SCOPED_TRACE("hole at " + std::to_string(begin));
      const std::size_t end = begin + 230;
      const auto saved = Run(Without(begin, end, filler));
      std::size_t found = 0;
      std::size_t untouched = 0;
      for (std::size_t i = 0; i < m_frames.size(); ++i) {
        const std::size_t header_bytes = m_frames[i].speech.empty() ? 12 : 16;
        const std::size_t body_bytes = m_frames[i].video.size() + m_frames[i].speech.size();
        if (m_ends[i] > begin && m_ends[i] - body_bytes - header_bytes < end) continue;
        ++untouched;
        found += std::count(saved.begin(), saved.end(), m_frames[i]) == 1 ? 1 : 0;
      }
      EXPECT_EQ(found, untouched);
      // A frame whose header is whole but whose bytes are not may be among them.
      EXPECT_LE(saved.size(), untouched + 6);
    }
  }
}

TEST_F(Salvage, FrameWithAWrongLengthIsLostAloneAndNamed) {
  for (const DWORD length : {0U, 3U, 39U, 43U, 200U, 70000U, 0x7FFFFFFFU}) {
    SCOPED_TRACE(length);
    std::string broken = m_whole;
    broken.replace(m_ends[9] + 8, 4, Little(length));
    auto saved = Run(broken);
    // A length that is too small leaves a frame that ends early, which only a decoder can tell.
    std::erase_if(saved,
                  [&](const auto& one) { return one.time_stamp == m_frames[10].time_stamp; });
    EXPECT_EQ(saved, WithoutFrames(10, 11));
    EXPECT_EQ(JsonNumber(m_run.out, "holes"), 1);
  }
}

// Of a block that was never closed, where only the signs of frames lead on.
TEST_F(Salvage, FrameOutOfTimeIsLostAloneAndAGapOfDaysIsKept) {
  constexpr DWORD kTwelveDays = 12U * 24 * 60 * 60 * 1000;
  std::vector<TestFrame> frames(m_frames.begin(), m_frames.begin() + 20);
  frames[10].time_stamp += kTwelveDays;
  const auto saved = Run(MakeRecording(frames, false));
  frames.erase(frames.begin() + 10);
  EXPECT_EQ(saved, frames);
  EXPECT_EQ(JsonNumber(m_run.out, "holes"), 1);

  for (std::size_t i = 10; i < frames.size(); ++i) frames[i].time_stamp += kTwelveDays;
  EXPECT_EQ(Run(MakeRecording(frames, false)), frames);
  EXPECT_EQ(JsonNumber(m_run.out, "holes"), 0);
}

TEST_F(Salvage, LostBeginningStartsAtTheNextIFrame) {
  // Header and the first seven frames are gone; with them the first I-frame's group.
  EXPECT_EQ(Run(Without(0, m_ends[6])), WithoutFrames(0, 10));
  EXPECT_EQ(JsonNumber(m_run.out, "lost_frames"), 3);
}

TEST_F(Salvage, TimesAndNamesOfTheHeaderAreKept) {
  // 30 frames of 40 ms are missing at the beginning, 29 at the end.
  Run(Without(m_first_block + 16, m_ends[29]).substr(0, m_ends[100]));
  EXPECT_EQ(ParseRecording(m_disk.Get("saved")).m_header,
            std::to_string(kTestBeginSeconds + 1) + "-" + std::to_string(kTestBeginSeconds + 3) +
                ", stamp 6200, gmt 0, flags 4");
  EXPECT_EQ(m_disk.Get("saved").substr(40, 22), m_whole.substr(40, 22));
}

TEST_F(Salvage, FramesLargerThanTheUsualBufferAreNotCut) {
  // The writer of the test has small buffers: put the large frame in by hand.
  const std::vector<TestFrame> few(m_frames.begin(), m_frames.begin() + 8);
  TestFrame large{1, 0xC020, few[3].time_stamp, std::string(700000, 'v'), std::string(99999, 's')};
  std::string bytes = MakeRecording(few, false);
  bytes.replace(m_ends[2], m_ends[3] - m_ends[2],
                Hex("0100 20C0") + Little(large.time_stamp) + Little(700000) + Little(99999) +
                    large.video + large.speech);
  Run(bytes);
  EXPECT_TRUE(Contains(m_disk.Get("saved"), bytes.substr(m_first_block + 16)));
  EXPECT_EQ(ParseRecording(m_disk.Get("saved")).m_videos.size(), 8U);
}

TEST_F(Salvage, CollectionOfSignsWithoutEndIsWalkedInProportion) {
  // Every offset of this tail could be the header of a frame.
  EXPECT_EQ(Run(m_whole + std::string(400000, '\1')), m_frames);
}

}  // namespace
