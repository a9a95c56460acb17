// Reading recordings, cutting clips out of them, and copying their ends into alarm files.
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
    int block = -7, index = -7;
    const int result = m_file.GetFilePos(block, index);
    return std::to_string(block) + ":" + std::to_string(index) + (result == 1 ? "" : " end");
  }

  const ScopedTimeZone m_zone{"EST5"};
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
  EXPECT_EQ(m_file.GetFrameIndex(7, 5), 255) << "behind the last block";
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
  FaultyFileSystem disk;
  SetErrorSink([&](const std::exception&) { ++reports; });
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
  EXPECT_GT(failed_opens, 4);
  EXPECT_GE(failed_reads, 6);
  EXPECT_EQ(reports, failed_opens - 1 + failed_reads);  // a file that does not open is no error
}

using ZebFileClip = ZebFileReader;

TEST_F(ZebFileClip, CutsBlocksOutAndRelinksThem) {
  ASSERT_EQ(OpenBlocks({30, 30, 30, 30, 0}), 1);  // a block lasts 1.2 s
  const std::tuple<int, int, int, const char*, const char*> cases[] = {
      {0, 2, 5, "30@1000 30@2200 5@3400 0@3560", "1000000000-1000000002, stamp 1000"},
      {1, 1, 30, "30@2200 0@3360", "1000000001-1000000002, stamp 2200"},
      {2, 2, 1, "1@3400 0@3400", "1000000002-1000000002, stamp 3400"},
      // An empty last block needs no other to end the file.
      {1, 3, -4, "30@2200 30@3400 0@4600", "1000000001-1000000003, stamp 2200"},
      // Beyond the end: all whole blocks, all frames.
      {2, 9, 7, "30@3400 30@4600 0@5800", "1000000002-1000000004, stamp 3400"},
      {3, 3, 0x7FFFFFFF, "30@4600 0@5760", "1000000003-1000000004, stamp 4600"},
  };
  for (const auto& [from, to, index, blocks, header] : cases) {
    ASSERT_EQ(m_file.ClipFile("clip", from, to, index), 1);
    const ParsedRecording parsed = ParseRecording(m_disk.Get("clip"));
    EXPECT_EQ(parsed.m_blocks, blocks);
    EXPECT_EQ(parsed.m_header, std::string(header) + ", gmt 5, flags 2");
    for (std::size_t i = 0; i < parsed.m_videos.size(); ++i) {
      EXPECT_EQ(parsed.m_videos[i], NumberedVideo(30 * from + static_cast<int>(i)));
    }
  }
}

TEST_F(ZebFileClip, RefusesWhatLeavesNothingToCopy) {
  ASSERT_EQ(OpenBlocks({3, 3, 3, 3, 0}), 1);
  constexpr std::array<int, 3> kCases[] = {{3, 3, 0}, {5, 9, 9},  {4, 9, 9},
                                           {2, 1, 3}, {-1, 2, 0}, {0, -1, 2}};
  for (const auto& [from, to, index] : kCases) {
    EXPECT_EQ(m_file.ClipFile("none", from, to, index), 0);
  }
  EXPECT_EQ(m_file.ClipFile("", 0, 2, 0) + m_file.ClipFile("r.zebz", 0, 2, 0), 0);
  EXPECT_EQ(m_disk.Get("r.zebz"), RawRecording({3, 3, 3, 3, 0}));
  m_file.Close();
  EXPECT_EQ(m_file.ClipFile("none", 0, 2, 0), 0);
  EXPECT_FALSE(m_disk.Has("none"));
}

class AlarmPreview : public ZebFileReader {
 protected:
  // The numbers of the frames that land in the alarm file; empty when the answer is 0.
  std::vector<std::string> Preview(CZebFile& source, DWORD blocks) {
    CZebFileInfo info = MakeInfo("alarm");
    CZebFile target;
    EXPECT_EQ(target.Open(&info, kZebFileWrite), 1);
    if (source.AlarmPreviewData(&target, blocks) == 0) return {};
    target.Close();
    m_alarm = ParseRecording(m_disk.Get("alarm"));
    EXPECT_EQ(m_alarm.m_fault, "");
    return m_alarm.m_videos;
  }

  os::SteppedClock m_clock{1000000100, 99};
  ParsedRecording m_alarm;
};

TEST_F(AlarmPreview, ChoosesTheBlockToStartAt) {
  const std::tuple<std::vector<int>, DWORD, std::vector<int>> cases[] = {
      {{1, 1, 1, 1}, 2, {2, 3}}, {{1, 1, 1, 1}, 9, {0, 1, 2, 3}},
      {{1, 1, 0, 1}, 2, {1, 2}},  // the block before
      {{1, 0, 0, 0, 1}, 3, {}},   // the block behind, or none
      {{0, 1}, 5, {}},           {{1, 0, 0}, 1, {}},
  };
  for (const auto& [frames_of_blocks, blocks, copied] : cases) {
    SCOPED_TRACE(testing::PrintToString(frames_of_blocks) + std::to_string(blocks));
    ASSERT_EQ(OpenBlocks(frames_of_blocks), 1);
    EXPECT_EQ(Preview(m_file, blocks), NumberedVideos(copied));
  }
}

TEST_F(AlarmPreview, CopiesTimesAndFramesAlsoFromARecordingThatGoesOn) {
  // It begins when the first block did, and ends now.
  ASSERT_EQ(OpenBlocks({60, 200, 0}), 1);
  EXPECT_EQ(Preview(m_file, 2).size(), 200U);
  EXPECT_EQ(m_alarm.m_header, "1000000002-1000000100, stamp 3400, gmt 5, flags 0");

  CZebFileInfo info = MakeInfo("recording");
  CZebFile recording;
  ASSERT_EQ(recording.Open(&info, kZebFileWrite), 1);
  EXPECT_TRUE(Preview(recording, 1).empty());  // nothing written, the file is closed
  WriteRun(recording, {104, 1});
  EXPECT_EQ(Preview(recording, 1), NumberedVideos({101, 102, 103}));
  CZebFrameData big(640, 480, 65536);
  FillFrame(big, 0, 9000, std::string(500000, 'B'), "speech");
  ASSERT_EQ(recording.WriteOneFrame(&big), 1);
  EXPECT_EQ(Preview(recording, 1).back(), std::string(500000, 'B'));
}

TEST_F(AlarmPreview, RefusesFilesItCannotCopyBetween) {
  ASSERT_EQ(OpenBlocks({1, 1, 0}), 1);
  CZebFile target;
  EXPECT_EQ(m_file.AlarmPreviewData(nullptr, 0), 0);
  EXPECT_EQ(m_file.AlarmPreviewData(&target, 0), 1);
  EXPECT_EQ(m_file.AlarmPreviewData(&target, 1) + target.AlarmPreviewData(&m_file, 1), 0);
  CZebFileInfo info = MakeInfo("alarm");
  target.Open(&info, kZebFileWrite);
  WriteRun(target, {102, 1});  // more than one block already
  EXPECT_EQ(m_file.AlarmPreviewData(&target, 1) + target.AlarmPreviewData(&target, 1), 0);
}

}  // namespace
