// Salvage: what is intact comes back, nothing is invented, and what it writes is whole.
#include "recovery/salvage.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "recovery/recording_check.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/made_recording.h"

namespace {

using zebx::SalvageReport;
using Frames = std::vector<TestFrame>;
using Result = SalvageReport::Result;

class Salvage : public testing::Test {
 protected:
  // What comes back of `bytes`; what was written is whole.
  Frames Run(const std::string& bytes) {
    m_disk.Put("r", bytes);
    m_report = zebx::SalvageRecording("r", "saved", true);
    EXPECT_EQ(m_disk.Get("r"), bytes);
    Frames frames;
    for (const auto& file : m_report.files) {
      EXPECT_TRUE(file.finished && zebx::CheckRecording(file.path).summary.IsWhole());
      const Frames more = ReadFrames(file.path);
      EXPECT_EQ(more.size(), file.frames);
      frames.insert(frames.end(), more.begin(), more.end());
    }
    return frames;
  }
  // The recording without some of its bytes, and without some of its frames.
  std::string Without(std::size_t begin, std::size_t end) const {
    return std::string(m_whole).replace(begin, end - begin, end - begin, '\xFF');
  }
  Frames WithoutFrames(std::size_t begin, std::size_t end) const {
    Frames frames = m_frames;
    frames.erase(frames.begin() + static_cast<std::ptrdiff_t>(begin),
                 frames.begin() + static_cast<std::ptrdiff_t>(end));
    return frames;
  }

  MemoryFileSystem m_disk;
  const Frames m_frames = MakeFrames(130, 5, 40);
  const std::string m_whole = MakeRecording(m_frames);
  const std::vector<std::size_t> m_ends = FrameEnds(m_whole, m_frames);
  const std::size_t m_first_block = DwordAt(m_whole, 8);
  SalvageReport m_report;
};

// Black pictures with silent sound: zeros and small numbers, in which a search finds headers.
Frames Black(Frames frames, const std::string& pattern) {
  for (TestFrame& frame : frames) {
    for (std::string* bytes : {&frame.video, &frame.speech}) {
      for (std::size_t i = 0; i < bytes->size(); ++i) (*bytes)[i] = pattern[i % pattern.size()];
    }
  }
  return frames;
}

// Recordings small enough to be damaged at every bit: of several blocks, with speech, and with
// payloads that look like headers.
std::vector<Frames> SmallRecordings() {
  return {MakeFrames(22, 1), Black(MakeFrames(9, 3, 60), Hex("00")),
          Black(MakeFrames(7, 3, 70), Hex("01000000 20000000"))};
}

// Recordings whose frames hold other recordings, or numbers that make frames of a fresh tick count.
std::vector<Frames> MisleadingRecordings() {
  Frames nested = MakeFrames(6);
  for (TestFrame& frame : nested) frame.video = MakeRecording(MakeFrames(20, 1));
  Frames wrapping = Black(MakeFrames(7, 3, 70), Hex("04000000 00000000 18000000 00000000"));
  for (TestFrame& frame : wrapping) {
    frame.flags &= static_cast<WORD>(~zebx::kFrameEncoderTypeMask);
    frame.time_stamp -= kTestFirstStamp + 80;
  }
  return {nested, wrapping};
}

// `saved` without the one frame in it that is none of `frames`, if there is one.
Frames WithoutStranger(Frames saved, const Frames& frames) {
  const auto stranger = std::ranges::find_if(
      saved, [&](const auto& frame) { return std::ranges::count(frames, frame) == 0; });
  if (stranger != saved.end()) saved.erase(stranger);
  return saved;
}

TEST_F(Salvage, AnyFlippedBitCostsAtMostTheFrameThatItHits) {
  for (const Frames& frames : SmallRecordings()) {
    const auto ends = FrameEnds(MakeRecording(frames), frames);
    for (const bool finished : {true, false}) {
      const std::string whole = MakeRecording(frames, finished);
      for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
        std::string broken = whole;
        broken[bit / 8] = static_cast<char>(broken[bit / 8] ^ 1 << bit % 8);
        const Frames saved = Run(broken);
        if (saved == frames) continue;
        const auto hit = std::ranges::upper_bound(ends, bit / 8) - ends.begin();
        Frames others = frames;
        ASSERT_LT(hit, std::ssize(others)) << "bit " << bit;
        others.erase(others.begin() + hit);
        ASSERT_EQ(WithoutStranger(saved, frames), others) << "bit " << bit << ' ' << finished;
      }
    }
  }
}

TEST_F(Salvage, CutAnywhereEveryWholeFrameComesBackAndNoOther) {
  std::vector<Frames> recordings = SmallRecordings();
  std::ranges::move(MisleadingRecordings(), std::back_inserter(recordings));
  for (const Frames& frames : recordings) {
    const auto ends = FrameEnds(MakeRecording(frames), frames);
    for (const bool finished : {true, false}) {
      const std::string whole = MakeRecording(frames, finished);
      Frames expected;
      for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::size_t next = expected.size();
        if (next < ends.size() && ends[next] == length) expected.push_back(frames[next]);
        ASSERT_EQ(Run(whole.substr(0, length)), expected) << "cut at " << length;
        ASSERT_EQ(m_report.result, expected.empty() ? Result::kNothingToSave : Result::kSaved);
      }
    }
  }
}

TEST_F(Salvage, FrameWithAWrongLengthIsLostAloneAndNamedOrRestored) {
  for (const DWORD length : {0U, 3U, 39U, 200U, 70000U, 0x7FFFFFFFU}) {
    SCOPED_TRACE(length);
    std::string broken = m_whole;
    broken.replace(m_ends[9] + 8, 4, Little(length));
    Frames saved = Run(broken);
    // A length that is too small leaves a frame that ends early, which only a decoder can tell.
    std::erase_if(saved,
                  [&](const auto& one) { return one.time_stamp == m_frames[10].time_stamp; });
    EXPECT_EQ(saved, WithoutFrames(10, 11));
    EXPECT_EQ(m_report.hole_count, 1U);
  }
  std::string broken = m_whole;
  broken.replace(m_ends[9] + 8, 4, Little(m_frames[10].video.size() ^ 2));
  EXPECT_EQ(Run(broken), m_frames);
  ASSERT_EQ(m_report.restored.size(), 1U);
  EXPECT_EQ(m_report.restored[0].offset, m_ends[9]);
}

// Of a block that was never closed, where only the signs of frames lead on.
TEST_F(Salvage, StampOutOfOrderIsReplacedButNeitherAGapOfDaysNorAStepBackForGood) {
  constexpr DWORD kTwelveDays = 12U * 24 * 60 * 60 * 1000;
  Frames frames(m_frames.begin(), m_frames.begin() + 20);
  frames[10].time_stamp += kTwelveDays;
  const Frames saved = Run(MakeRecording(frames, false));
  frames[10].time_stamp = frames[9].time_stamp;
  EXPECT_EQ(saved, frames);
  ASSERT_EQ(m_report.restored.size(), 1U);
  EXPECT_EQ(m_report.restored[0].offset, m_ends[9]);
  EXPECT_EQ(m_report.restored[0].what, zebx::RestoredFrame::What::kTimeStamp);

  for (std::size_t i = 10; i < frames.size(); ++i) frames[i].time_stamp += kTwelveDays;
  EXPECT_EQ(Run(MakeRecording(frames, false)), frames);
  EXPECT_EQ(m_report.hole_count + m_report.restored_count, 0U);

  // Those that step back for good go on in a further file.
  for (std::size_t i = 10; i < frames.size(); ++i) frames[i].time_stamp -= kTwelveDays + 300;
  EXPECT_EQ(Run(MakeRecording(frames, false)), frames);
  ASSERT_EQ(m_report.files.size(), 2U);
  EXPECT_EQ(m_report.files[1].path, "saved_2");
}

// What stands where the chain leads may be no block header.
TEST_F(Salvage, BlockHeaderThatIsMissingCostsNoFrameAndNoOtherBlock) {
  const std::size_t second = BlockOffsets(m_whole)[1];
  std::string without = m_whole;
  EXPECT_EQ(Run(without.erase(second, 16)), m_frames);
  EXPECT_EQ(Run(Without(second, second + 16)), m_frames);
  const auto frames = std::ranges::upper_bound(m_ends, second) - m_ends.begin();
  for (std::size_t begin = m_first_block; begin + 20 < second; begin += 3) {
    std::string broken = Without(m_first_block - 20, m_first_block + 13);
    const Frames saved = Run(broken.replace(begin, 20, 20, '\xFF'));
    const Frames expected(m_frames.begin() + frames, m_frames.end());
    ASSERT_GE(saved.size(), expected.size()) << begin;
    EXPECT_TRUE(std::equal(expected.rbegin(), expected.rend(), saved.rbegin())) << begin;
  }
}

TEST_F(Salvage, TakesNoFileOfOthersAndLeavesNoneThatItDoesNotName) {
  m_disk.Put("r", m_whole);
  m_disk.Put("saved", "foreign");
  m_disk.Put("saved.recovery1", "foreign");
  const auto before = m_disk.Everything();
  EXPECT_EQ(zebx::SalvageRecording("r", "saved").result, Result::kExists);
  EXPECT_EQ(m_disk.Everything(), before);
  for (std::uint64_t room = 0; room < m_whole.size(); room += 400) {
    FaultyFileSystem full;
    full.FillDiskAfter(room);
    const SalvageReport report = zebx::SalvageRecording("r", "saved", true);
    EXPECT_EQ(report.result, Result::kNotWritten);
    full.Heal();
    auto after = m_disk.Everything();
    for (const auto& file : report.files) {
      EXPECT_FALSE(file.finished);
      EXPECT_EQ(after.erase(file.path), 1U);
      zebx::CurrentFileSystem().DeleteFile(file.path, nullptr);
    }
    EXPECT_EQ(after, before);
  }
}

TEST_F(Salvage, LostBeginningStartsAtTheNextIFrameWithTheTimesAndNamesOfTheHeader) {
  // Header and the first seven frames are gone; with them the first I-frame's group.
  EXPECT_EQ(Run(Without(0, m_ends[6])), WithoutFrames(0, 10));
  EXPECT_EQ(m_report.lost_frames, 3U);
  // 30 frames of 40 ms are missing at the beginning, 29 at the end.
  Run(Without(m_first_block + 16, m_ends[29]).substr(0, m_ends[100]));
  EXPECT_EQ(ParseRecording(m_disk.Get("saved")).m_header,
            std::to_string(kTestBeginSeconds + 1) + "-" + std::to_string(kTestBeginSeconds + 3) +
                ", stamp 6200, gmt 0, flags 4");
  EXPECT_EQ(m_disk.Get("saved").substr(40, 22), m_whole.substr(40, 22));
}

TEST_F(Salvage, FramesLargerThanTheUsualBufferAreNotCut) {
  // The writer of the test has small buffers: put the large frame in by hand.
  const Frames few(m_frames.begin(), m_frames.begin() + 8);
  std::string bytes = MakeRecording(few, false);
  bytes.replace(m_ends[2], m_ends[3] - m_ends[2],
                Hex("0100 20C0") + Little(few[3].time_stamp) + Little(700000) + Little(99999) +
                    std::string(700000, 'v') + std::string(99999, 's'));
  Run(bytes);
  EXPECT_NE(m_disk.Get("saved").find(bytes.substr(m_first_block + 16)), std::string::npos);
  EXPECT_EQ(ParseRecording(m_disk.Get("saved")).m_videos.size(), 8U);
}

TEST_F(Salvage, CollectionOfSignsWithoutEndIsWalkedInProportion) {
  // Every offset of this tail could be the header of a frame.
  EXPECT_EQ(Run(m_whole + std::string(400000, '\1')), m_frames);
}

}  // namespace
