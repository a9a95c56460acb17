// The recordings of a live camera: what stands in its files when frames go on while files are made,
// filled and finished, and when the disk refuses them.
#include <gtest/gtest.h>

#include <numeric>

#include "tests/support/faulty_file_system.h"
#include "tests/support/made_recording.h"
#include "tools/zebtool/console/console.h"
#include "tools/zebtool/live/camera_recorder.h"

using namespace zebx;
using namespace zebtool;

namespace {

constexpr int kGop = 10;

class CameraRecorderTest : public testing::Test {
 protected:
  void Make(CameraRecorder::Plan plan) {
    CameraRecorder::Door door;
    door.create = [this](RecordingKind) -> std::unique_ptr<CZebFile> {
      auto file = std::make_unique<CZebFile>();
      CZebFileInfo info = MakeInfo("file" + std::to_string(++m_created));
      info.SetBeginTime(CTime::GetCurrentTime());
      info.SetBeginTimeStamp(m_frames[m_next].time_stamp);
      if (file->Open(&info, kZebFileWrite) == 0) throw JobError("no room");
      return file;
    };
    door.replay = [this](CZebFile& file) { m_replay(file); };
    door.request_i_frame = [this] { ++m_requests; };
    door.report = [this](const std::string& trouble) { m_troubles.push_back(trouble); };
    m_recorder = std::make_unique<CameraRecorder>(plan, std::move(door));
  }

  // Lets the next frames come, up to `end`; those of `alarms` with an alarm.
  void TakeUntil(std::size_t end, std::vector<std::size_t> alarms = {}) {
    for (; m_next < end; ++m_next) {
      Fill(m_data, m_frames[m_next]);
      m_recorder->Take(m_data, std::find(alarms.begin(), alarms.end(), m_next) != alarms.end());
    }
  }

  // The numbers of the frames in all files, in order.
  std::vector<std::size_t> Recorded() const {
    std::vector<std::size_t> numbers;
    for (const LiveFile& file : m_recorder->Files()) {
      const std::vector<TestFrame> frames = ReadFrames(file.file.path);
      EXPECT_EQ(frames.size(), file.file.frames);
      EXPECT_TRUE(frames.empty() || frames.front().type == kIFrame);
      for (const TestFrame& frame : frames) {
        numbers.push_back((frame.time_stamp - kTestFirstStamp) / 40);
        EXPECT_EQ(frame, m_frames.at(numbers.back()));
      }
    }
    return numbers;
  }

  static std::vector<std::size_t> Range(std::size_t begin, std::size_t end) {
    std::vector<std::size_t> numbers(end - begin);
    std::iota(numbers.begin(), numbers.end(), begin);
    return numbers;
  }

  MemoryFileSystem m_disk;
  FaultyFileSystem m_faults;
  const std::vector<TestFrame> m_frames = MakeFrames(400, kGop, 50);
  std::size_t m_next = 0;
  int m_created = 0;
  int m_requests = 0;
  std::function<void(CZebFile&)> m_replay = [](CZebFile&) {};
  std::vector<std::string> m_troubles;
  CZebFrameData m_data;
  std::unique_ptr<CameraRecorder> m_recorder;
};

TEST_F(CameraRecorderTest, AlarmFileHasEveryFrameOnceWhateverThePreAlarmBufferHolds) {
  struct Case {
    const char* what;
    std::size_t buffer_begin, buffer_end;  // frames in the pre-alarm buffer; the alarm is at 25
    std::size_t taken_before;              // until the file is made
    std::size_t taken_meanwhile;           // until it has the buffer's frames
    std::vector<std::size_t> missing;
    ULONGLONG lost;
  };
  const Case cases[] = {
      {"without the alarm's frame", 10, 25, 26, 26, {}, 0},
      {"up to the last frame", 10, 28, 28, 33, {}, 0},
      {"longer than a block, up to a frame that came meanwhile", 0, 30, 28, 33, {}, 0},
      {"too few", 10, 23, 26, 26, {23, 24}, 2},
      {"empty: from the next I-frame on", 30, 30, 26, 27, {}, 5},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    m_next = 0;
    m_requests = 0;
    CameraRecorder::Plan plan;
    plan.records_alarms = true;
    plan.quiet_ms = 400;
    Make(plan);
    m_replay = [&](CZebFile& file) {
      for (std::size_t at = test.buffer_begin; at < test.buffer_end; ++at) {
        CZebFrameData data;
        Fill(data, m_frames[at]);
        file.WritePreAlarmFrame(&data);
      }
      TakeUntil(test.taken_meanwhile);
    };
    TakeUntil(test.taken_before, {25});
    m_recorder->Work();
    EXPECT_EQ(m_requests, test.buffer_begin == test.buffer_end ? 1 : 0);
    TakeUntil(100);
    m_recorder->Finish();
    ASSERT_EQ(m_recorder->Files().size(), 1U);
    EXPECT_EQ(m_recorder->Files()[0].pre_alarm_frames, test.buffer_end - test.buffer_begin);
    // Ends 400 ms after the alarm.
    auto expected = Range(test.buffer_begin, 36);
    std::erase_if(expected, [&](std::size_t number) {
      return std::find(test.missing.begin(), test.missing.end(), number) != test.missing.end();
    });
    EXPECT_EQ(Recorded(), expected);
    EXPECT_EQ(m_recorder->GetState().lost, test.lost);
  }
}

TEST_F(CameraRecorderTest, AlarmsThatFollowSoonStayInOneFile) {
  CameraRecorder::Plan plan;
  plan.records_alarms = true;
  plan.quiet_ms = 400;
  Make(plan);
  for (std::size_t end = 5; end <= 150; end += 5) {
    TakeUntil(end, {20, 28, 36, 90});
    m_recorder->Work();
  }
  EXPECT_EQ(m_recorder->GetState().alarms, 2U);
  m_recorder->StopAlarms();
  TakeUntil(160, {155});
  m_recorder->Work();
  m_recorder->Finish();
  EXPECT_EQ(m_recorder->Files().size(), 2U);
}

TEST_F(CameraRecorderTest, RecordingGoesOnInFurtherFilesWithoutLosingAFrame) {
  CameraRecorder::Plan plan;
  plan.records = true;
  plan.longest_bytes = 4000;
  Make(plan);
  m_recorder->Work();
  for (std::size_t end = 7; end <= 350; end += 7) {
    TakeUntil(end);
    if (end == 280) m_recorder->ChangeFile();
    m_recorder->Work();
  }
  m_recorder->Finish();
  EXPECT_GT(m_recorder->Files().size(), 4U);
  EXPECT_EQ(m_requests + 1, m_created);
  EXPECT_EQ(Recorded(), Range(0, 350));
  EXPECT_EQ(m_recorder->GetState().lost, 0U);
}

TEST_F(CameraRecorderTest, DiskThatRefusesAFrameCostsNoMoreThanIsSaid) {
  CameraRecorder::Plan plan;
  plan.records = plan.records_alarms = true;
  plan.retry_after = {};
  Make(plan);
  m_recorder->Work();
  TakeUntil(33, {32});
  m_recorder->Work();  // there is an alarm file now, with frames that wait for an I-frame
  m_faults.FailCall(FaultyFileSystem::kWrite, 1, 0, 2);  // a frame, and the end of its file
  TakeUntil(36);
  m_recorder->Work();
  TakeUntil(60);
  m_recorder->Work();
  m_faults.FailCall(FaultyFileSystem::kOpen, 1);  // of the next file
  m_recorder->ChangeFile();
  m_recorder->Work();
  m_faults.FailCall(FaultyFileSystem::kOpen, 1);  // and again, which is known
  m_recorder->Work();
  TakeUntil(80);
  m_recorder->Work();
  TakeUntil(100);
  m_recorder->Finish();
  EXPECT_EQ(m_recorder->GetState().lost, 7U + 8U);  // of the recording, and of the alarm file
  EXPECT_EQ(m_troubles.size(), 3U) << testing::PrintToString(m_troubles);
  std::size_t recorded = 0;
  for (const LiveFile& file : m_recorder->Files()) {
    if (file.kind == RecordingKind::kVideo) recorded += file.file.frames;
  }
  EXPECT_EQ(recorded, 100U - 7U);  // from the refused frame to the next I-frame
}

}  // namespace
