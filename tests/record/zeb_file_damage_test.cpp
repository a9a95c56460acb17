// What is left of a recording when its bytes or its disk are bad.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/framework/error_report.h"
#include "platform/os/clock.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_exercise.h"
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
    ExerciseRecording("r");
  }
}

TEST(DamagedRecording, AnyByteMayBeAnything) {
  MemoryFileSystem disk;
  const std::string whole = RawRecording({3, 0, 2, 0});
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const int flip : {0x01, 0x10, 0x80, 0xFF}) {
      std::string bytes = whole;
      bytes[at] = static_cast<char>(bytes[at] ^ flip);
      disk.Put("r", bytes);
      ExerciseRecording("r");
    }
  }
}

// One recording on a disk that fails, written as a host would: a refused frame is lost, the next
// ones are tried, and the file is closed in the end.
class FailingDisk : public testing::Test {
 protected:
  void SetUp() override {
    SetErrorSink([](const std::exception&) {});
  }
  void TearDown() override { SetErrorSink({}); }

  // True when Open and Close came through.
  bool Record(bool heal_before_close) {
    std::filesystem::remove(m_path);
    CZebFileInfo info = MakeInfo(m_path);
    CZebFile file;
    m_written.clear();
    if (file.Open(&info, kZebFileWrite) == 0) return false;
    m_written = WriteRun(file, {.m_frames = 21, .m_gop = 1, .m_encoder_type = 2});
    EXPECT_EQ(file.GetTotalFrame(), static_cast<int>(m_written.size()));
    if (heal_before_close) m_disk.Heal();
    try {
      file.Close();
    } catch (const CFileException&) {
      return false;
    }
    return true;
  }
  void ExpectWhole() {
    const ParsedRecording parsed = ParseRecording(ReadWholeFile(m_path));
    EXPECT_EQ(parsed.m_fault, "");
    EXPECT_EQ(parsed.m_videos, NumberedVideos(m_written));
    // A refused I-frame does not count towards the next block.
    EXPECT_TRUE(m_written.size() < 10 || parsed.m_blocks.starts_with("9@")) << parsed.m_blocks;
  }

  const os::SteppedClock m_clock{1000000000, 1};
  const TempDir m_directory;
  const std::string m_path = m_directory.File("r.zebz");
  FaultyFileSystem m_disk;
  std::vector<int> m_written;
};

TEST_F(FailingDisk, AnyCallMayFailWhileWriting) {
  for (const std::size_t prefix_bytes : {0U, 5U}) {
    const std::uint64_t before = m_disk.Failures();
    for (std::uint64_t n = 1; m_disk.Failures() == before + n - 1; ++n) {
      SCOPED_TRACE(n);
      m_disk.FailCall(FaultyFileSystem::kAnyCall, n, prefix_bytes);
      const bool opened_and_closed = Record(false);
      m_disk.Heal();
      if (opened_and_closed) {
        ExpectWhole();
      } else if (!m_written.empty()) {
        // Closing failed: all but the last block is there.
        const auto videos = ReadVideos(m_path);
        EXPECT_GE(videos.size(), 19U);
        EXPECT_TRUE(StartsWith(NumberedVideos(m_written), videos));
      }
    }
  }
  EXPECT_GT(m_disk.Failures(), 2U * 30);
}

TEST_F(FailingDisk, AFullDiskLosesNothingThatWasWritten) {
  for (std::uint64_t free_bytes = 0; free_bytes < 900; free_bytes += 7) {
    SCOPED_TRACE(free_bytes);
    m_disk.FillDiskAfter(free_bytes);
    if (Record(true) && !m_written.empty()) ExpectWhole();
    m_disk.FillDiskAfter(free_bytes);
    if (Record(false)) continue;
    m_disk.Heal();
    const auto videos = ReadVideos(m_path);
    EXPECT_TRUE(StartsWith(NumberedVideos(m_written), videos));
    EXPECT_GE(videos.size(), m_written.size() / 10 * 9);
  }
}

TEST_F(FailingDisk, AnyCallMayFailWhileClipping) {
  ASSERT_TRUE(Record(false));
  const std::string clip = m_directory.File("clip.zebz");
  bool made = false;
  for (std::uint64_t n = 1; !made; ++n) {
    SCOPED_TRACE(n);
    CZebFileInfo info = MakeInfo(m_path);
    CZebFile source;
    ASSERT_EQ(source.Open(&info, kZebFileRead), 1);
    m_disk.FailCall(FaultyFileSystem::kAnyCall, n);
    try {
      made = source.ClipFile(clip, 0, 2, 1) == 1;
    } catch (const CFileException&) {
    }
    m_disk.Heal();
    EXPECT_EQ(m_disk.Failures(), made ? n - 1 : n);
    CZebFrameData frame(64, 64, 64);
    EXPECT_EQ(source.ReadOneFrame(&frame, -1, 0), 1);
  }
  EXPECT_EQ(ParseRecording(ReadWholeFile(clip)).m_fault, "");
  EXPECT_GT(m_disk.Failures(), 10U);
}

}  // namespace
