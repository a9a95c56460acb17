// Checking recordings: every damage is found, named and placed, and what the library makes is none.
#include "recovery/recording_check.h"

#include <gtest/gtest.h>

#include "tests/support/made_recording.h"

namespace {

using Kind = zebx::Finding::Kind;
using Severity = zebx::Finding::Severity;

class RecordingCheck : public testing::Test {
 protected:
  zebx::RecordingCheck Check(const std::string& bytes) {
    m_disk.Put("r", bytes);
    return zebx::CheckRecording("r");
  }

  MemoryFileSystem m_disk;
  const std::vector<TestFrame> m_frames = MakeFrames(44);  // blocks of 18, 20 and 6
  const std::string m_whole = MakeRecording(m_frames);
  const std::vector<std::size_t> m_blocks = BlockOffsets(m_whole);
  const std::vector<std::size_t> m_ends = FrameEnds(m_whole, m_frames);
};

TEST_F(RecordingCheck, NamesTheDamagedFieldAndItsOffset) {
  const std::tuple<std::size_t, std::size_t, Kind> cases[] = {
      {1, 0, Kind::kNoMagic},
      {4, 4, Kind::kVersion},
      {8, 8, Kind::kHeaderSize},
      {15, 12, Kind::kUnknownFlags},
      {22, 22, Kind::kFrameSize},
      {27, 28, Kind::kEndBeforeBegin},
      {35, 32, Kind::kBeginTimeStamp},
      {37, 36, Kind::kGmt},
      {42, 40, Kind::kNameTooLong},
      {m_blocks[0] + 7, m_whole.size(), Kind::kCutBlock},
      {m_blocks[1], m_blocks[1], Kind::kPreviousLink},
      {m_blocks[1] + 10, m_blocks[1] + 10, Kind::kReservedField},
      {m_blocks[1] + 12, m_blocks[1], Kind::kBlockStamp},
      {m_blocks[2] + 16, m_blocks[2] + 16, Kind::kNoIFrame},
      {m_ends[2] + 10, m_ends[2], Kind::kFrameTooLong},
      {m_ends[2] + 7, m_ends[2], Kind::kStampGoesBack},
  };
  for (const auto& [at, reported_at, kind] : cases) {
    SCOPED_TRACE(NameOf(kind));
    std::string broken = m_whole;
    broken[at] = static_cast<char>(broken[at] ^ 0xFF);
    const zebx::RecordingCheck check = Check(broken);
    EXPECT_GT(check.summary.damages, 0U);
    EXPECT_TRUE(
        std::ranges::any_of(check.findings, [offset = reported_at, of = kind](const auto& finding) {
          return finding.kind == of && finding.offset == offset;
        }));
  }
}

TEST_F(RecordingCheck, ChainThatLoopsOrPointsBackEnds) {
  for (const std::size_t target : {m_blocks[1], m_blocks[0], std::size_t{0}, m_blocks[1] + 8}) {
    std::string broken = m_whole;
    broken.replace(m_blocks[1] + 4, 4, Little(target));
    const zebx::RecordingCheck check = Check(broken);
    ASSERT_EQ(check.findings.size(), 1U) << target;
    EXPECT_EQ(check.findings[0].kind, Kind::kNextLink);
    EXPECT_EQ(check.findings[0].block, 1);
  }
}

TEST_F(RecordingCheck, LibrarysOwnOdditiesAreNotes) {
  // The stamp of the creation in the first block, as prepared blocks leave it.
  std::string odd = m_whole;
  odd.replace(m_blocks[0] + 12, 4, Little(1));
  const zebx::RecordingCheck prepared = Check(odd);
  EXPECT_TRUE(prepared.summary.IsWhole());
  ASSERT_EQ(prepared.findings.size(), 1U);
  EXPECT_EQ(prepared.findings[0].severity, Severity::kNote);
  // A clip of it takes that stamp for its begin, and ends in the source's empty block.
  CZebFileInfo info = MakeInfo("r");
  CZebFile file;
  ASSERT_EQ(file.Open(&info, kZebFileRead), 1);
  ASSERT_EQ(file.ClipFile("clip", 0, 99, 0), 1);
  EXPECT_TRUE(zebx::CheckRecording("clip").summary.IsWhole());

  // A clock that was set while recording: begin and end time and the stamps do not agree.
  odd = m_whole;
  odd.replace(24, 8, Little(kTestBeginSeconds - 3600) + Little(kTestBeginSeconds - 3600 + 3));
  EXPECT_TRUE(Check(odd).summary.IsWhole());
}

// What a dead writer leaves is unfinished; bytes that it cannot have left are damage.
TEST_F(RecordingCheck, UnfinishedIsToldFromDamaged) {
  const std::string open = MakeRecording(m_frames, false);
  const std::pair<std::string, ULONGLONG> cases[] = {
      {open, 0},
      {open.substr(0, open.size() - 1), 0},
      {open + std::string(5000, '\0'), 0},
      {open + std::string(5000, '\xFF'), 1},
      {m_whole.substr(0, m_whole.size() - 1), 0},
      {m_whole + std::string(20, 'x'), 1},
  };
  for (const auto& [bytes, damages] : cases) {
    const zebx::CheckSummary summary = Check(bytes).summary;
    EXPECT_TRUE(summary.unfinished || damages > 0);
    EXPECT_EQ(summary.damages, damages) << bytes.size();
    EXPECT_EQ(summary.frames, bytes.size() == open.size() - 1 ? 43U : 44U);
  }
}

}  // namespace
