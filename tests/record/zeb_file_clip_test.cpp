#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "platform/os/clock.h"
#include "tests/support/memory_file_system.h"
#include "tests/support/recording_fixture.h"

namespace {

class ZebFileClip : public testing::Test {
 protected:
  int OpenBlocks(const std::vector<int>& frames_of_blocks) {
    m_disk.Put("source", RawRecording(frames_of_blocks));
    m_source.Close();
    CZebFileInfo info = MakeInfo("source");
    return m_source.Open(&info, kZebFileRead);
  }

  const ScopedTimeZone m_zone{"EST5"};
  MemoryFileSystem m_disk;
  CZebFile m_source;
};

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
    ASSERT_EQ(m_source.ClipFile("clip", from, to, index), 1);
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
    EXPECT_EQ(m_source.ClipFile("none", from, to, index), 0);
  }
  EXPECT_FALSE(m_disk.Has("none"));
  EXPECT_EQ(m_source.ClipFile("", 0, 2, 0), 0);
  EXPECT_EQ(m_source.ClipFile("source", 0, 2, 0), 0);
  EXPECT_EQ(m_disk.Get("source"), RawRecording({3, 3, 3, 3, 0}));
  m_source.Close();
  EXPECT_EQ(m_source.ClipFile("none", 0, 2, 0), 0);
}

class AlarmPreview : public ZebFileClip {
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
    EXPECT_EQ(Preview(m_source, blocks), NumberedVideos(copied));
  }
}

TEST_F(AlarmPreview, CopiesTimesAndFramesAlsoFromARecordingThatGoesOn) {
  // It begins when the first block did, and ends now.
  ASSERT_EQ(OpenBlocks({60, 200, 0}), 1);
  EXPECT_EQ(Preview(m_source, 2).size(), 200U);
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
  EXPECT_EQ(m_source.AlarmPreviewData(nullptr, 0), 0);
  EXPECT_EQ(m_source.AlarmPreviewData(&target, 0), 1);
  EXPECT_EQ(m_source.AlarmPreviewData(&target, 1) + target.AlarmPreviewData(&m_source, 1), 0);
  CZebFileInfo info = MakeInfo("alarm");
  target.Open(&info, kZebFileWrite);
  WriteRun(target, {102, 1});  // more than one block already
  EXPECT_EQ(m_source.AlarmPreviewData(&target, 1) + target.AlarmPreviewData(&target, 1), 0);
}

}  // namespace
