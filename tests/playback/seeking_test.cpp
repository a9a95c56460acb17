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
  explicit Playing(int frames = 0) {
    CZebFileInfo info = MakeInfo("played");
    EXPECT_EQ(m_file.Open(&info, kZebFileRead), 1);
    while (frames-- > 0) EXPECT_EQ(m_file.ReadOneFrame(&m_frame, -1, 0), 1);
  }
  // The frame that a seek ends at; empty when it fails.
  std::string Seek(FramePosition target) {
    return SeekTo(m_frame, m_file, nullptr, target) ? VideoOf(m_frame) : "";
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
  const std::size_t second_frame = bytes.find(NumberedVideo(1)) - kFrameHeaderBytes;
  bytes[second_frame + 2] = kFrameVideoLost;
  disk.Put("played", bytes);
  const struct {
    FramePosition target;
    int shown;  // -1: the seek fails
    std::vector<int> decoded;
  } cases[] = {
      {{0, 0}, 0, {}},    {{0, -1}, 0, {}},           {{0, 1}, 0, {}},
      {{0, 2}, 1, {0}},   {{0, 4}, 3, {0, 2}},        {{0, 6}, 5, {0, 2, 3, 4}},
      {{2, kMin}, 5, {}}, {{2, kMax}, -1, {5, 6, 7}}, {{3, 0}, -1, {}},
  };
  for (const auto& [target, shown, decoded] : cases) {
    SCOPED_TRACE(TextOf(target));
    g_decoded.clear();
    EXPECT_EQ(Playing().Seek(target), shown < 0 ? "" : NumberedVideo(shown));
    EXPECT_EQ(g_decoded, NumberedVideos(decoded));
  }
}

// Frames 0 to 3, 4, and 5 to 7 are a block each. Reading is one frame ahead of the one shown. Frame
// 4 comes before itself: the position behind it tells that it is the last of its block, and not
// that it is the only one.
TEST(Seeking, StepsBackByWhereReadingStands) {
  MemoryFileSystem disk;
  disk.Put("played", RawRecording({4, 1, 3, 0}));
  EXPECT_EQ(StepBack(Playing(2).m_file), std::nullopt) << "the first frame is shown";
  const int before[] = {0, 1, 2, 4, 4, 5};
  for (int shown = 1; shown < 7; ++shown) {
    Playing playing(shown + 2);
    EXPECT_EQ(playing.Seek(StepBack(playing.m_file).value()), NumberedVideo(before[shown - 1]));
  }
}

// A frame a second in blocks of 9, 10 and 6, closed three seconds behind the last one.
class SearchByTime : public testing::Test {
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
  static std::string Find(DWORD second, DWORD begin = 0, FaultyFileSystem* disk = nullptr) {
    Playing playing(3);
    if (disk != nullptr) disk->FailCall(FaultyFileSystem::kRead, 1);
    const auto found = FindTime(playing.m_frame, playing.m_file, CTime(kTestBeginSeconds + begin),
                                CTime(kTestBeginSeconds + second));
    FramePosition at;
    playing.m_file.GetFilePos(at.m_block, at.m_frame);
    return std::to_string(found.m_result) + ", " + TextOf(found.m_seek.value_or(FramePosition())) +
           (found.m_ends_mode ? " ends, " : ", ") + TextOf(at);
  }

  const MemoryFileSystem m_disk;
  os::SteppedClock m_clock{kTestBeginSeconds, kTestFirstStamp};
  CZebFile m_written;
};

TEST_F(SearchByTime, ReadsTheBlockThatTheTimeIsInAndNoOther) {
  EXPECT_EQ(Find(18), "1, 1/9 ends, 1/10") << "while the file is written";
  EXPECT_EQ(Find(19), "0, -1/-1, 0/3") << "in the block being written";
  m_written.Close();
  EXPECT_EQ(Find(-1), "1, 0/0 ends, 0/3") << "before the file";
  EXPECT_EQ(Find(-50, -100), "1, 0/0, 0/3") << "before the first block";
  EXPECT_EQ(Find(0), "1, 0/0 ends, 0/1");
  EXPECT_EQ(Find(9), "1, 1/0 ends, 1/1");
  EXPECT_EQ(Find(20), "1, 2/1 ends, 2/2");
  EXPECT_EQ(Find(26), "1, 2/6 ends, 2/6") << "behind the last frame";
  EXPECT_EQ(Find(27), "0, -1/-1, 0/3") << "when the file was closed";
  FaultyFileSystem disk;
  EXPECT_EQ(Find(12, 0, &disk), "0, 0/3, 0/3") << "back to where it was";
}

TEST(FrameIntervals, FollowStampsAndSpeed) {
  const DWORD cases[][4] = {
      {1000, 1040, 0, 40},
      {1000, 1040, 3, 6},
      {1000, 1040, -1U, 80},
      {0xFFFFFFF0, 0x18, 1, 20},
      {1040, 1000, -5U, 0},
      {0, 0x80000000, 0, 0},
      {0, 0x7FFFFFFF, -2U, 0xFFFFFFFF},
      {0, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF},
      {0, 0x7FFFFFFF, kMax, 0},
  };
  for (const auto& [before, now, speed, interval] : cases) {
    EXPECT_EQ(FrameInterval(before, now, static_cast<int>(speed)), interval) << now << ' ' << speed;
  }
}

}  // namespace
