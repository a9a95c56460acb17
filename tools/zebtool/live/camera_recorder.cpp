#include "tools/zebtool/live/camera_recorder.h"

#include <algorithm>
#include <utility>

#include "tools/zebtool/console/console.h"
#include "tools/zebtool/console/text.h"

using namespace zebx;

namespace zebtool {

void CameraRecorder::Take(CZebFrameData& frame, bool is_alarm) {
  const std::lock_guard lock(m_mutex);
  if (m_stamps.empty()) m_stamps.resize(kRemembered);
  m_stamps[static_cast<std::size_t>(m_taken % kRemembered)] = frame.GetTimeStamp();
  if (m_plan.records) WriteRecording(frame);
  if (m_plan.records_alarms) TakeForAlarm(frame, is_alarm);
  ++m_taken;
}

// False when the file takes no more: it is retired then.
bool CameraRecorder::Write(OpenFile& to, CZebFrameData& frame) {
  const int result = to.file->WriteOneFrame(&frame);
  if (result == kFrameWritten) return true;
  ++m_lost;
  m_needs_i_frame = true;
  if (result == kFrameDropped) return true;  // until the next I-frame
  to.has_failed = result != kWriteFileFull;
  Retire(to);
  return false;
}

void CameraRecorder::WriteRecording(CZebFrameData& frame) {
  if (m_next.file != nullptr && (frame.IsIFrame() || m_recording.file == nullptr)) {
    Retire(m_recording);
    m_recording = std::exchange(m_next, {});
  }
  if (m_recording.file == nullptr) {
    ++m_lost;
  } else {
    Write(m_recording, frame);
  }
}

void CameraRecorder::TakeForAlarm(CZebFrameData& frame, bool is_alarm) {
  if (is_alarm) {
    m_last_alarm_stamp = frame.GetTimeStamp();
    if (m_step == AlarmStep::kNone && m_takes_alarms) m_step = AlarmStep::kWanted;
  }
  switch (m_step) {
    case AlarmStep::kNone:
      break;
    case AlarmStep::kWanted:
    case AlarmStep::kFilling:
      Keep(frame);
      break;
    case AlarmStep::kWriting:
      if (!Write(m_alarm, frame)) {
        m_step = AlarmStep::kNone;
      } else if (frame.GetTimeStamp() - m_last_alarm_stamp >= m_plan.quiet_ms) {
        Retire(m_alarm);
        m_step = AlarmStep::kNone;
      }
      break;
  }
}

// While the file is only wanted, the pre-alarm buffer has the oldest ones, too; once it is being
// filled, a gap shows when the kept frames follow.
void CameraRecorder::Keep(const CZebFrameData& frame) {
  if (m_kept.size() == kMostKept) m_kept.pop_front();
  auto copy = std::make_unique<CZebFrameData>(1, 1, 1);
  copy->Reserve(frame.GetHeader());
  *copy = frame;
  m_kept.push_back({m_taken, std::move(copy)});
}

void CameraRecorder::Retire(OpenFile& file) {
  if (file.file != nullptr) m_retired.push_back(std::exchange(file, {}));
}

void CameraRecorder::Work() {
  FinishRetired();
  if (m_plan.records && IsNextDue()) MakeNext();
  const auto step = [&] {
    const std::lock_guard lock(m_mutex);
    return m_step;
  };
  if (step() == AlarmStep::kWanted) MakeAlarmFile();
  if (step() == AlarmStep::kFilling) FillAlarmFile();
  bool needs_i_frame = false;
  {
    const std::lock_guard lock(m_mutex);
    needs_i_frame = std::exchange(m_needs_i_frame, false);
  }
  if (needs_i_frame) m_door.request_i_frame();
}

// Nothing when it has to be tried again: at once, or some time after a failure.
std::unique_ptr<CZebFile> CameraRecorder::Create(RecordingKind kind) {
  if (SteadyClock::now() < m_next_try) return nullptr;
  try {
    auto file = m_door.create(kind);
    m_is_refused = false;
    return file;
  } catch (const JobError& error) {
    m_next_try = SteadyClock::now() + m_plan.retry_after;
    if (!std::exchange(m_is_refused, true)) m_door.report(error.what());
    return nullptr;
  }
}

bool CameraRecorder::IsNextDue() {
  const std::lock_guard lock(m_mutex);
  if (m_next.file != nullptr) return false;
  if (m_recording.file == nullptr || m_is_change_wanted) return true;
  return m_recording.file->GetLength() >= m_plan.longest_bytes ||
         (m_plan.minutes != 0 &&
          SteadyClock::now() - m_recording.begin >= std::chrono::minutes(m_plan.minutes));
}

void CameraRecorder::MakeNext() {
  auto file = Create(RecordingKind::kVideo);
  if (file == nullptr) return;
  m_is_change_wanted = false;
  const std::lock_guard lock(m_mutex);
  m_next = {std::move(file), RecordingKind::kVideo, SteadyClock::now()};
  m_needs_i_frame = m_taken > 0;  // a channel begins with one
}

void CameraRecorder::MakeAlarmFile() {
  auto file = Create(RecordingKind::kAlarm);
  if (file == nullptr) return;
  m_filling = {std::move(file), RecordingKind::kAlarm, SteadyClock::now()};
  {
    const std::lock_guard lock(m_mutex);
    m_step = AlarmStep::kFilling;
    ++m_alarms;
  }
  m_door.replay(*m_filling.file);
  m_filling.pre_alarm_frames = static_cast<ULONGLONG>(m_filling.file->GetTotalFrame());
}

// The number of the last frame that the pre-alarm buffer gave: so many behind the first one of its
// block, whose stamp the file knows.
std::optional<ULONGLONG> CameraRecorder::LastReplayed(const CZebFile& file) const {
  if (file.GetTotalFrame() == 0) return std::nullopt;
  int block = 0;
  int frame = 0;
  file.GetFilePos(block, frame);
  const DWORD stamp = file.GetBlockTimeStamp(block);
  const std::lock_guard lock(m_mutex);
  const ULONGLONG oldest = m_taken - std::min<ULONGLONG>(m_taken, kRemembered);
  for (ULONGLONG number = m_taken; number-- > oldest;) {
    if (m_stamps[static_cast<std::size_t>(number % kRemembered)] == stamp) {
      return number + static_cast<ULONGLONG>(frame);
    }
  }
  return std::nullopt;
}

void CameraRecorder::FillAlarmFile() {
  const auto last = LastReplayed(*m_filling.file);
  std::optional<ULONGLONG> expected;
  if (last) expected = *last + 1;
  while (true) {
    std::deque<KeptFrame> frames;
    {
      const std::lock_guard lock(m_mutex);
      frames.swap(m_kept);
      if (frames.empty()) {
        m_alarm = std::exchange(m_filling, {});
        m_step = AlarmStep::kWriting;
        return;
      }
    }
    for (KeptFrame& kept : frames) {
      if (last && kept.number <= *last) continue;
      ULONGLONG missing = 0;
      if (expected && kept.number > *expected) missing = kept.number - *expected;
      expected = kept.number + 1;
      const std::lock_guard lock(m_mutex);
      m_lost += missing;
      if (!Write(m_filling, *kept.frame)) {
        m_step = AlarmStep::kNone;
        m_kept.clear();
        return;
      }
    }
  }
}

void CameraRecorder::FinishRetired() {
  std::vector<OpenFile> retired;
  {
    const std::lock_guard lock(m_mutex);
    retired.swap(m_retired);
  }
  for (OpenFile& file : retired) FinishFile(file);
}

void CameraRecorder::FinishFile(OpenFile& file) {
  LiveFile done;
  done.kind = file.kind;
  done.pre_alarm_frames = file.pre_alarm_frames;
  done.file.path = file.file->GetFileName();
  done.file.frames = static_cast<ULONGLONG>(file.file->GetTotalFrame());
  done.file.blocks = done.file.frames > 0 ? file.file->GetTotalBlock() : 0;
  if (file.has_failed) {
    m_next_try = SteadyClock::now() + m_plan.retry_after;
    m_door.report("cannot write '" + done.file.path + "': the disk is full or failing; the " +
                  Plural(done.file.frames, "frame") + " before are kept");
  }
  try {
    FinishRecording(std::move(file.file));
  } catch (const JobError& error) {
    m_door.report(error.what());
  }
  CZebFileInfo written;
  if (done.file.frames == 0) return;
  if (written.Create(done.file.path) != 0) done.file.bytes = written.GetLength();
  m_files.push_back(std::move(done));
}

void CameraRecorder::StopAlarms() {
  const std::lock_guard lock(m_mutex);
  m_takes_alarms = false;
}

void CameraRecorder::Finish() {
  {
    const std::lock_guard lock(m_mutex);
    for (OpenFile* file : {&m_recording, &m_next, &m_alarm}) Retire(*file);
  }
  FinishRetired();
}

CameraRecorder::State CameraRecorder::GetState() const {
  const std::lock_guard lock(m_mutex);
  const auto path = [](const OpenFile& file) {
    return file.file == nullptr ? std::string() : file.file->GetFileName();
  };
  return {path(m_recording), path(m_alarm), m_lost, m_alarms};
}

}  // namespace zebtool
