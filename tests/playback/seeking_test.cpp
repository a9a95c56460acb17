#include "playback/seeking.h"

#include <gtest/gtest.h>

#include <limits>

#include "capture/video_data.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/made_recording.h"

using namespace zebx;

namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

std::vector<std::string> g_decoded;

}  // namespace

extern "C" int __wrap_nxcDecodeVideo(NxcHandle, WORD, const BYTE* data, DWORD length) {
  g_decoded.emplace_back(data, data + length);
  return 0;
}

namespace {

struct Playing {
  Playing() {
    CZebFileInfo info = MakeInfo("played");
    EXPECT_EQ(m_file.Open(&info, kZebFileRead), 1);
  }
  void Read(int frames) {
    while (frames-- > 0) EXPECT_EQ(m_file.ReadOneFrame(&m_frame, -1, 0), 1);
  }
  FramePosition Position() {
    FramePosition position;
    m_file.GetFilePos(position.m_block, position.m_frame);
    return position;
  }

  CZebFile m_file;
  CVideoData m_frame{{}, 352, 288};
};

std::string TextOf(FramePosition position) {
  return std::to_string(position.m_block) + "/" + std::to_string(position.m_frame);
}

TEST(Seeking, DecodesUpToTheFrameBeforeTheIndex) {
  MemoryFileSystem disk;
  std::string bytes = RawRecording({4, 1, 3, 0});
  bytes[kBlockHeaderBytes + 52 + kFrameHeaderBytes + NumberedVideo(0).size() + 2] = kFrameVideoLost;
  disk.Put("played", bytes);
  const struct {
    FramePosition target;
    int shown;  // -1: the seek fails
    std::vector<int> decoded;
  } cases[] = {
      {{0, 0}, 0, {}},           {{0, -1}, 0, {}},           {{0, 1}, 0, {}},
      {{2, kMin}, 5, {}},        {{0, 2}, 1, {0}},           {{0, 4}, 3, {0, 2}},
      {{0, 6}, 5, {0, 2, 3, 4}}, {{2, 3}, 7, {5, 6}},        {{3, 0}, -1, {}},
      {{9, 0}, -1, {}},          {{2, kMax}, -1, {5, 6, 7}},
  };
  for (const auto& [target, shown, decoded] : cases) {
    SCOPED_TRACE(TextOf(target));
    Playing playing;
    g_decoded.clear();
    ASSERT_EQ(SeekTo(playing.m_frame, playing.m_file, nullptr, target), shown >= 0);
    EXPECT_TRUE(shown < 0 || VideoOf(playing.m_frame) == NumberedVideo(shown));
    EXPECT_EQ(g_decoded, NumberedVideos(decoded));
  }
}

// Frames 0 to 3, 4, and 5 to 7 are a block each. Reading is one frame ahead of the one shown.
TEST(Seeking, StepsBackByWhereReadingStands) {
  MemoryFileSystem disk;
  disk.Put("played", RawRecording({4, 1, 3, 0}));
  // Frame 4 follows itself: next to it, position 1 says that it is the last of its block, not that
  // it is the only one.
  const int frames_before[] = {-1, 0, 1, 2, 4, 4, 5};
  for (int shown = 0; shown < 7; ++shown) {
    SCOPED_TRACE(shown);
    Playing playing;
    playing.Read(shown + 2);
    const auto seek = StepBack(playing.m_file);
    ASSERT_EQ(seek.has_value(), frames_before[shown] >= 0);
    if (!seek) continue;
    EXPECT_TRUE(SeekTo(playing.m_frame, playing.m_file, nullptr, *seek));
    EXPECT_EQ(VideoOf(playing.m_frame), NumberedVideo(frames_before[shown]));
  }
}

// A frame a second in blocks of 9, 10 and 6, closed three seconds behind the last one.
class TimeSearching : public testing::Test {
 protected:
  void SetUp() override {
    CZebFileInfo info = MakeInfo("played");
    m_written.Open(&info, kZebFileWrite);
    for (int second = 0; second < 25; ++second, m_clock.Advance(1000)) {
      WriteRun(m_written, {1, 1, kEncoderTypeRT8Port, second, kTestFirstStamp + second * 1000U, 0});
    }
    m_clock.Advance(2000);
  }

  // The seek, whether the mode ends, and where reading stands then.
  static std::string Find(DWORD second, DWORD begin = 0) {
    Playing playing;
    playing.Read(3);
    return Find(playing, second, begin);
  }
  static std::string Find(Playing& playing, DWORD second, DWORD begin = 0) {
    const TimeSearch found = FindTime(playing.m_frame, playing.m_file, Time(begin), Time(second));
    return std::to_string(found.m_result) + ", " + TextOf(found.m_seek.value_or(FramePosition())) +
           (found.m_ends_mode ? " ends, " : ", ") + TextOf(playing.Position());
  }
  static CTime Time(DWORD second) { return CTime(kTestBeginSeconds + second); }

  const MemoryFileSystem m_disk;
  os::SteppedClock m_clock{kTestBeginSeconds, kTestFirstStamp};
  CZebFile m_written;
};

TEST_F(TimeSearching, ReadsTheBlockThatTheTimeIsInAndNoOther) {
  EXPECT_EQ(Find(18), "1, 1/9 ends, 1/10") << "while the file is written";
  EXPECT_EQ(Find(19), "0, -1/-1, 0/3") << "in the block being written";
  m_written.Close();
  EXPECT_EQ(Find(-1), "1, 0/0 ends, 0/3") << "before the file";
  EXPECT_EQ(Find(-50, -100), "1, 0/0, 0/3") << "before the first block";
  EXPECT_EQ(Find(0), "1, 0/0 ends, 0/1");
  EXPECT_EQ(Find(4), "1, 0/4 ends, 0/5");
  EXPECT_EQ(Find(9), "1, 1/0 ends, 1/1");
  EXPECT_EQ(Find(20), "1, 2/1 ends, 2/2");
  EXPECT_EQ(Find(26), "1, 2/6 ends, 2/6") << "behind the last frame";
  EXPECT_EQ(Find(27), "0, -1/-1, 0/3") << "when the file was closed";
}

TEST_F(TimeSearching, GoesBackWhenAReadFails) {
  m_written.Close();
  FaultyFileSystem disk;
  for (const std::uint64_t read : {1, 4}) {
    Playing playing;
    playing.Read(3);
    disk.FailCall(FaultyFileSystem::kRead, read);
    EXPECT_EQ(Find(playing, 12).substr(0, 8), "0, 0/3, ") << read;
  }
}

TEST(FrameIntervals, FollowStampsAndSpeed) {
  const struct {
    DWORD before, now;
    int speed;
    DWORD interval;
  } cases[] = {
      {1000, 1040, 0, 40},
      {1000, 1040, 1, 20},
      {1000, 1040, 3, 6},
      {1000, 1040, -1, 80},
      {0xFFFFFFF0, 0x18, 0, 40},
      {1040, 1000, 0, 0},
      {1040, 1000, -5, 0},
      {0, 0x80000000, -1, 0},
      {0, 0x7FFFFFFF, -2, 0xFFFFFFFF},
      {0, 0x7FFFFFFF, kMin, 0xFFFFFFFF},
      {0, 0x7FFFFFFF, kMax, 0},
      {7, 7, kMin, 0},
  };
  for (const auto& [before, now, speed, interval] : cases) {
    EXPECT_EQ(FrameInterval(before, now, speed), interval) << before << ' ' << now << ' ' << speed;
  }
}

}  // namespace
