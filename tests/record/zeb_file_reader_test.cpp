#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "platform/framework/error_report.h"
#include "platform/os/clock.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"

using namespace zebx;

namespace {

class ZebFileReader : public testing::Test {
 protected:
  int OpenBytes(const std::string& bytes) {
    m_file.Close();
    m_disk.Put("r.zebz", bytes);
    m_info = MakeInfo("r.zebz");
    return m_file.Open(&m_info, kZebFileRead);
  }
  int OpenBlocks(const std::vector<int>& frames_of_blocks) {
    return OpenBytes(RawRecording(frames_of_blocks));
  }
  // What a read yields: the frame's bytes with the place it was found at; "-" for the result 0.
  std::string Read(int block = -1, int index = 0) {
    if (m_file.ReadOneFrame(&m_frame, block, index) == 0) return "-";
    return VideoOf(m_frame) + " at " + std::to_string(m_frame.GetBlockIndex()) + ":" +
           std::to_string(m_frame.GetFrameIndex());
  }
  std::string Position() const {
    int block = -7;
    int index = -7;
    const int result = m_file.GetFilePos(block, index);
    return std::to_string(block) + ":" + std::to_string(index) + (result == 1 ? "" : " end");
  }

  MemoryFileSystem m_disk;
  CZebFileInfo m_info;
  CZebFile m_file;
  CZebFrameData m_frame{64, 64, 64};
};

TEST_F(ZebFileReader, ReadsFramesInOrderAndAtRandom) {
  ASSERT_EQ(OpenBlocks({3, 0, 2, 1, 0}), 1);
  EXPECT_EQ(Position(), "0:0");
  const std::tuple<int, int, const char*, const char*, const char*> cases[] = {
      {-1, 9, "picture 1 at 0:1", "0:2", "picture 2 at 0:2"},
      {0, 0, "picture 0 at 0:0", "0:1", "picture 1 at 0:1"},
      {0, 2, "picture 2 at 0:2", "0:3", "picture 3 at 2:0"},
      {0, 500, "picture 3 at 2:0", "2:1", "picture 4 at 2:1"},  // not 500 frames on
      {1, 0, "picture 3 at 2:0", "2:1", "picture 4 at 2:1"},
      {2, 1, "picture 4 at 2:1", "2:2", "picture 5 at 3:0"},
      {3, 0, "picture 5 at 3:0", "3:1 end", "-"},
      {3, 1, "-", "0:1", "picture 1 at 0:1"},  // a read that fails does not move
      {4, 0, "-", "0:1", "picture 1 at 0:1"},
      {5, 0, "-", "0:1", "picture 1 at 0:1"},
      {0, -1, "-", "0:1", "picture 1 at 0:1"},
  };
  for (const auto& [block, index, found, position, next] : cases) {
    SCOPED_TRACE(std::to_string(block) + ":" + std::to_string(index));
    Read(0, 0);
    EXPECT_EQ(Read(block, index), found);
    EXPECT_EQ(Position(), position);
    EXPECT_EQ(Read(), next);
  }
}

TEST_F(ZebFileReader, AnswersQuestionsAboutBlocks) {
  ASSERT_EQ(OpenBlocks({120, 130, 0}), 1);
  EXPECT_EQ(m_file.GetTotalBlock(), 3);
  EXPECT_EQ(m_file.GetTotalFrame(), 250);
  EXPECT_EQ(m_file.GetFrameIndex(1, 5), 125);
  const std::array<DWORD, 4> cases[] = {{0, 120, 1000, 1000000000},
                                        {1, 130, 5800, 1000000004},
                                        {2, 0, 11000, 1000000010},
                                        {3, 0, 0xFFFFFFFF, 0},
                                        {0xFFFFFFFF, 0, 0xFFFFFFFF, 0}};
  for (const auto& [number, frames, stamp, time] : cases) {
    const int block = static_cast<int>(number);
    EXPECT_EQ(m_file.GetFrameNumOfBlock(block), static_cast<int>(frames));
    EXPECT_EQ(m_file.GetBlockTimeStamp(block), stamp);
    EXPECT_EQ(m_file.GetBlockTime(block).GetTime(), time);
  }
  const struct : CZebFile {
    int GetFrameNumOfBlock(int block) const override { return block; }
  } derived;  // its blocks are counted also behind those of the file
  EXPECT_EQ(derived.GetFrameIndexOfBlock(5), 10);
  m_file.Close();
  EXPECT_EQ(m_file.GetTotalBlock() + m_file.GetTotalFrame() + m_file.GetFrameNumOfBlock(0), 0);
  EXPECT_EQ(Position() + Read(0, 0), "0:0 end-");
}

TEST_F(ZebFileReader, OpenHandsTheHeaderOverAndRefusesWhatHoldsNoFrames) {
  const std::string whole = RawRecording({1, 0});
  for (const auto& bytes : {RawRecording({0}), RawRecording({0, 0}), std::string(), "x" + whole}) {
    EXPECT_EQ(OpenBytes(bytes), 0);
  }
  CZebFileInfo missing = MakeInfo("missing");
  EXPECT_EQ(m_file.Open(nullptr, kZebFileRead) + m_file.Open(&missing, kZebFileRead), 0);
  EXPECT_EQ(OpenBytes(whole), 1);  // none of that is held against the object
  EXPECT_EQ(m_info.GetEndTime().GetTime(), 1000000060U);
  EXPECT_EQ(m_info.GetLength(), whole.size());
  EXPECT_EQ(m_file.Open(&m_info, kZebFileRead), 0);  // busy
}

TEST_F(ZebFileReader, DamagedChainsEndAndCountsAreBounded) {
  std::string greedy = RawRecording({2, 2, 0});
  greedy.replace(52 + 8, 2, "\xff\xff");
  ASSERT_EQ(OpenBytes(greedy), 1);
  EXPECT_LE(m_file.GetFrameNumOfBlock(0), 42 / 12);  // no more than there is room for
  for (const DWORD next : {52U, 0U, 110U, 125U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
    std::string bytes = RawRecording({2, 2, 0});  // blocks at 52, 110 and 168
    bytes.replace(110 + 4, 4, Little(next));
    ASSERT_EQ(OpenBytes(bytes), 1);
    EXPECT_EQ(m_file.GetTotalBlock(), 2) << next;
    m_frame.CreateBuffer(next == 0 ? 1 : 64, 1);  // a frame that does not fit is no end either
    for (int i = 0; i < 4; ++i) EXPECT_EQ(Read().starts_with("picture"), next != 0);
    EXPECT_EQ(Read() + Position(), "-1:2 end");
  }
}

TEST_F(ZebFileReader, ReadsARecordingThatIsBeingWritten) {
  os::SteppedClock clock(1000000060, 0);
  m_info = MakeInfo("w.zebz");
  CZebFile writer;
  ASSERT_EQ(writer.Open(&m_info, kZebFileWrite), 1);
  WriteRun(writer, {101, 1});
  EXPECT_EQ(ReadVideos("w.zebz").size(), 0U);
  WriteRun(writer, {.m_frames = 1, .m_first_number = 101});
  clock.Advance(5000);
  WriteRun(writer, {.m_frames = 5, .m_first_number = 102});
  ASSERT_EQ(m_file.Open(&m_info, kZebFileRead), 1);
  EXPECT_EQ(m_info.GetEndTime().GetTime(), 1000000060U);  // of the block before
  EXPECT_EQ(m_file.GetTotalBlock(), 2);
  WriteRun(writer, {.m_frames = 100, .m_first_number = 107});
  writer.Close();
  for (int i = 0; i < 101; ++i) EXPECT_EQ(Read(), NumberedVideo(i) + " at 0:" + std::to_string(i));
  EXPECT_EQ(Read(), "-");
  EXPECT_EQ(ReadVideos("w.zebz").size(), 207U);
}

TEST_F(ZebFileReader, ReportsDiskErrorsAndGoesOnBehindThem) {
  m_disk.Put("r", RawRecording({2, 1, 0}));
  int reports = 0, failed_opens = 0, failed_reads = 0;
  SetErrorSink([&](const std::exception&) { ++reports; });
  FaultyFileSystem disk;
  m_info.SetFileName("r");
  for (std::uint64_t n = 1; disk.Failures() == n - 1; ++n) {
    m_file.Close();
    disk.FailCall(FaultyFileSystem::kAnyCall & ~FaultyFileSystem::kClose, n);
    for (; m_file.Open(&m_info, kZebFileRead) == 0; ++failed_opens) ASSERT_LT(failed_opens, 20);
    for (int i = 0; i < 3; ++i) {
      for (; m_file.ReadOneFrame(&m_frame, -1, 0) == 0; ++failed_reads) ASSERT_LT(failed_reads, 10);
      EXPECT_EQ(VideoOf(m_frame), NumberedVideo(i)) << n;
    }
    EXPECT_EQ(Read(), "-");
  }
  m_file.Close();
  SetErrorSink({});
  EXPECT_GT(failed_opens, 4);
  EXPECT_GE(failed_reads, 6);
  EXPECT_EQ(reports, failed_opens - 1 + failed_reads);  // a file that does not open is no error
}

}  // namespace
