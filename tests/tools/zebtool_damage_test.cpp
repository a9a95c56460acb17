// Broken recordings: cut off at every byte, with every byte of the headers flipped, with chains
// that lead nowhere. Nothing may crash or hang, everything that is still there has to come back.
#include <gtest/gtest.h>

#include "tests/tools/tool_fixture.h"

using namespace zebx;

namespace {

class BrokenRecording : public testing::Test {
 protected:
  static ToolRun Verify() { return RunTool({"verify", "r"}); }

  // Runs everything that reads the file and expects a clean end, and of salvage what is whole.
  void Expect(const std::string& bytes, const std::vector<TestFrame>& frames) {
    m_disk.Put("r", bytes);
    m_disk.Put("saved", "");
    m_verified = Verify();
    EXPECT_EQ(RunTool({"info", "r", "--blocks", "--frames"}).status, m_verified.status);
    const ToolRun exported = RunTool({"export", "r", "-", "--frames", "2"});
    EXPECT_EQ(exported.status, 1);  // the bytes are no video
    EXPECT_FALSE(exported.err.empty());
    const ToolRun saved = RunTool({"salvage", "r", "saved"});
    EXPECT_EQ(saved.status, frames.empty() ? 1 : 0) << saved.err;
    ASSERT_EQ(ReadFrames("saved"), frames);
    EXPECT_EQ(RunTool({"verify", "saved"}).status, frames.empty() ? 1 : 0);
  }

  MemoryFileSystem m_disk;
  const std::vector<TestFrame> m_frames = MakeFrames(44);  // blocks of 18, 20 and 6
  const std::string m_whole = MakeRecording(m_frames);
  const std::vector<std::size_t> m_blocks = BlockOffsets(m_whole);
  const std::vector<std::size_t> m_ends = FrameEnds(m_whole, m_frames);
  ToolRun m_verified;
};

TEST_F(BrokenRecording, CutAtEveryByteKeepsEveryWholeFrame) {
  const std::vector<TestFrame> frames = MakeFrames(22, 1);  // blocks of 9, 10 and 3
  const auto ends = FrameEnds(MakeRecording(frames), frames);
  for (const bool finished : {true, false}) {
    const std::string whole = MakeRecording(frames, finished);
    // An empty block header at the end is all that a writer leaves that dies between two blocks:
    // nothing is missing then.
    const std::size_t between_blocks =
        finished ? std::string::npos : BlockOffsets(whole).back() + kBlockHeaderBytes;
    std::vector<TestFrame> expected;
    for (std::size_t length = 0; length < whole.size(); ++length) {
      SCOPED_TRACE("cut at " + std::to_string(length));
      const std::size_t next = expected.size();
      if (next < ends.size() && ends[next] == length) expected.push_back(frames[next]);
      ASSERT_NO_FATAL_FAILURE(Expect(whole.substr(0, length), expected));
      EXPECT_EQ(m_verified.status, length == between_blocks ? 0 : 1);
      if (length > m_blocks[0] + kBlockHeaderBytes && length != between_blocks) {
        EXPECT_TRUE(Contains(m_verified.out, "zebtool salvage")) << m_verified.out;
      }
    }
  }
}

TEST_F(BrokenRecording, EveryFlippedByteOfTheHeadersLosesNoFrame) {
  for (const bool finished : {true, false}) {
    const std::string whole = MakeRecording(m_frames, finished);
    const auto blocks = BlockOffsets(whole);
    for (std::size_t at = 0; at < blocks.back() + kBlockHeaderBytes; ++at) {
      const auto behind = std::upper_bound(blocks.begin(), blocks.end(), at);
      if (behind != blocks.begin() && at >= behind[-1] + kBlockHeaderBytes) continue;
      for (const int flip : {0x01, 0xFF}) {
        SCOPED_TRACE("byte " + std::to_string(at) + " flipped by " + std::to_string(flip));
        std::string broken = whole;
        broken[at] = static_cast<char>(broken[at] ^ flip);
        ASSERT_NO_FATAL_FAILURE(Expect(broken, m_frames));
      }
    }
  }
}

TEST_F(BrokenRecording, VerifyNamesTheDamagedFieldAndItsOffset) {
  struct {
    std::size_t at;
    std::size_t reported_at;
    const char* text;
  } const cases[] = {
      {1, 0, "XBEZ"},
      {4, 4, "version"},
      {8, 8, "header says"},
      {15, 12, "flags"},
      {22, 22, "frame size"},
      {35, 32, "begin time stamp"},
      {37, 36, "gmt"},
      {m_blocks[1], m_blocks[1], "points back"},
      {m_blocks[1] + 12, m_blocks[1], "stamped"},
      {m_blocks[2] + kBlockHeaderBytes, m_blocks[2] + kBlockHeaderBytes, "no I-frame"},
      {m_ends[2] + 10, m_ends[2], "frame 3 of block 0"},
      {m_ends[2] + 7, m_ends[2], "ms before the frame ahead"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.text);
    std::string broken = m_whole;
    broken[one.at] = static_cast<char>(broken[one.at] ^ 0xFF);
    m_disk.Put("r", broken);
    const ToolRun verified = Verify();
    EXPECT_EQ(verified.status, 1);
    EXPECT_TRUE(Contains(verified.out, one.text)) << verified.out;
    EXPECT_TRUE(Contains(verified.out, "at " + std::to_string(one.reported_at) + " (0x"))
        << verified.out;
  }
}

TEST_F(BrokenRecording, ChainThatLoopsOrPointsBackEnds) {
  for (const std::size_t target : {m_blocks[1], m_blocks[0], std::size_t{0}, m_blocks[1] + 8}) {
    SCOPED_TRACE(target);
    std::string broken = m_whole;
    broken.replace(m_blocks[1] + 4, 4, Little(target));
    Expect(broken, m_frames);
    EXPECT_EQ(m_verified.status, 1);
    EXPECT_TRUE(Contains(m_verified.out, "block 1")) << m_verified.out;
  }
}

TEST_F(BrokenRecording, LibrarysOwnOdditiesAreNoDamage) {
  // The stamp of the creation in the first block, as prepared blocks leave it.
  std::string odd = m_whole;
  odd.replace(m_blocks[0] + 12, 4, Little(1));
  m_disk.Put("r", odd);
  EXPECT_TRUE(Contains(Verify().out, "note at")) << Verify().out;
  EXPECT_EQ(Verify().status, 0);
  // A clip of it takes that stamp for its begin, and ends in the source's empty block.
  ASSERT_EQ(RunTool({"clip", "r", "saved", "--from-block", "0"}).status, 0);
  EXPECT_EQ(RunTool({"verify", "saved"}).status, 0) << RunTool({"verify", "saved"}).out;

  // A clock that was set while recording: begin and end time and the stamps do not agree.
  odd = m_whole;
  odd.replace(24, 8, Little(kTestBeginSeconds - 3600) + Little(kTestBeginSeconds - 3600 + 3));
  m_disk.Put("r", odd);
  EXPECT_EQ(Verify().status, 0) << Verify().out;
}

}  // namespace
