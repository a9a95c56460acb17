// What is left of a recording when its bytes or its disk are bad.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/os/clock.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"
#include "tests/support/temp_dir.h"

using namespace zebx;

namespace {

bool StartsWith(const std::vector<std::string>& all, const std::vector<std::string>& start) {
  return start.size() <= all.size() && std::equal(start.begin(), start.end(), all.begin());
}

TEST(DamagedRecording, CutAnywhereKeepsTheBlocksBeforeTheCut) {
  MemoryFileSystem disk;
  const std::string whole = RawRecording({3, 2, 0});  // blocks at 52, 131 and 189
  for (std::size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    disk.Put("r", whole.substr(0, size));
    const auto videos = ReadVideos("r");
    EXPECT_EQ(videos.empty(), size < 52 + 16);
    std::vector<int> complete;
    if (size >= 131) complete = {0, 1, 2};
    if (size >= 189) complete = {0, 1, 2, 3, 4};
    EXPECT_TRUE(StartsWith(videos, NumberedVideos(complete)));
    CZebFileInfo info = MakeInfo("r");
    CZebFile file;
    if (file.Open(&info, kZebFileRead) == 1) file.ClipFile("clip", 0, 9, 0);
    EXPECT_TRUE(StartsWith(videos, ReadVideos("clip")));
  }
}

// A recording on a disk that fails, written as a host would: a refused frame is lost, the next ones
// are tried, and the file is closed in the end.
class FailingDisk : public testing::Test {
 protected:
  // True when Close came through.
  bool Record(bool heal_before_close = false) {
    m_memory.Put("r", "");
    CZebFileInfo info = MakeInfo("r");
    CZebFile file;
    file.Open(&info, kZebFileWrite);
    m_written = NumberedVideos(WriteRun(file, {45, 2, 2}));
    EXPECT_EQ(file.GetTotalFrame(), static_cast<int>(m_written.size()));
    // A block is finished when the next one has a frame.
    m_finished = file.GetFrameIndexOfBlock(file.GetTotalBlock() - 1 - file.IsNextIFrame());
    if (heal_before_close) m_disk.Heal();
    try {
      file.Close();
    } catch (const CFileException&) {
      return false;
    }
    return true;
  }
  // Every frame that was taken is read, in a file without a fault, when Close came through;
  // otherwise at least those of finished blocks, and no others in any case.
  void ExpectWhatWasWritten(bool closed) {
    m_disk.Heal();
    const auto videos = ReadVideos("r");
    EXPECT_TRUE(StartsWith(m_written, videos)) << videos.size() << " of " << m_written.size();
    EXPECT_GE(static_cast<int>(videos.size()), m_finished);
    if (!closed || m_written.empty()) return;
    const ParsedRecording parsed = ParseRecording(m_memory.Get("r"));
    EXPECT_EQ(parsed.m_fault, "");
    EXPECT_EQ(parsed.m_videos, m_written);
  }

  const os::SteppedClock m_clock{1000000000, 1};
  MemoryFileSystem m_memory;
  FaultyFileSystem m_disk;
  std::vector<std::string> m_written;
  int m_finished = 0;
};

// A run of writes is refused, whole or torn, the host goes on, and the power is cut a little later.
TEST_F(FailingDisk, RefusedWritesAndAPowerCutInventNothingAndKeepFinishedBlocks) {
  int recordings = 0;
  for (const std::size_t prefix_bytes : {0U, 9U, 30U}) {
    for (const std::uint64_t writes : {1U, 2U, 4U}) {
      for (std::uint64_t later = 0; later <= 13 && !HasFailure(); ++later) {
        bool refused = true;
        for (std::uint64_t n = 1; refused; ++n, ++recordings) {
          SCOPED_TRACE(testing::Message() << n << ", " << writes << ", cut after " << later);
          const std::uint64_t failures = m_disk.Failures();
          m_disk.FailCall(FaultyFileSystem::kWrite, n, prefix_bytes, writes);
          m_disk.CutPowerAfter(later);
          Record();
          refused = m_disk.Failures() > failures;
          ExpectWhatWasWritten(false);
        }
      }
    }
  }
  EXPECT_GT(recordings, 5000);
}

TEST_F(FailingDisk, AnyCallMayFailAndADiskMayBeFull) {
  for (const std::size_t prefix_bytes : {0U, 5U}) {
    const std::uint64_t before = m_disk.Failures();
    for (std::uint64_t n = 1; m_disk.Failures() == before + n - 1; ++n) {
      SCOPED_TRACE(n);
      m_disk.FailCall(FaultyFileSystem::kAnyCall, n, prefix_bytes);
      ExpectWhatWasWritten(Record());
    }
    EXPECT_GT(m_disk.Failures() - before, 50U);
  }
  for (std::uint64_t free_bytes = 0; free_bytes < 1500; free_bytes += 7) {
    SCOPED_TRACE(free_bytes);
    for (const bool heal_before_close : {true, false}) {
      m_disk.FillDiskAfter(free_bytes);
      ExpectWhatWasWritten(Record(heal_before_close));
    }
  }
}

TEST(FailingDiskOfClips, LeavesNoneThatIsNotWhole) {
  const TempDir directory;
  CZebFileInfo info = MakeInfo(directory.File("r.zebz"));
  WriteWholeFile(info.GetFileName(), RawRecording({2, 2, 0}));
  const std::string clip = directory.File("clip.zebz");
  FaultyFileSystem disk;
  bool made = false;
  for (std::uint64_t n = 1; !made; ++n) {
    SCOPED_TRACE(n);
    CZebFile source;
    ASSERT_EQ(source.Open(&info, kZebFileRead), 1);
    disk.FailCall(FaultyFileSystem::kAnyCall, n);
    try {
      made = source.ClipFile(clip, 0, 1, 1) == 1;
    } catch (const CFileException&) {
    }
    disk.Heal();
    EXPECT_EQ(std::filesystem::exists(clip), made);
    CZebFrameData frame(64, 64, 64);
    EXPECT_EQ(source.ReadOneFrame(&frame, -1, 0), 1);
  }
  EXPECT_EQ(ParseRecording(ReadWholeFile(clip)).m_blocks, "2@1000 1@1080 0@1080");
  EXPECT_GT(disk.Failures(), 10U);
}

}  // namespace
