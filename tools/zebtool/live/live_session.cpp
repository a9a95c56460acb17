#include "tools/zebtool/live/live_session.h"

#include <algorithm>
#include <cstdlib>
#include <thread>
#include <utility>

#include "capture/video_data.h"
#include "capture/zebx.h"
#include "platform/os/clock.h"
#include "platform/os/files/directories.h"
#include "platform/os/windows/windows.h"
#include "record/mox_face.h"
#include "storage/dbs.h"
#include "tools/zebtool/console/stop_signals.h"
#include "tools/zebtool/console/text.h"
#include "tools/zebtool/media/png_file.h"
#include "tools/zebtool/screen/screen_picture.h"
#include "tools/zebtool/screen/status_marks.h"

using namespace zebx;

namespace zebtool {
namespace {

using namespace std::chrono_literals;

constexpr DWORD kUsualFrameSize = 135;
constexpr DWORD kUsualSpeed = 0;  // as many frames as the standard has
constexpr char kUsualPlan[] = "6:4";
constexpr char kPlanVariable[] = "ZEBX_DEVICES";
constexpr auto kTick = 20ms;
constexpr auto kLookEvery = 5s;

void PumpMessages() {
  os::Message message;
  while (os::PeekMessage(&message) != 0) os::DispatchMessage(message);
}

std::vector<zebdev::VirtualDevice> PlanOf(const LiveOptions& options) {
  if (options.devices) return *options.devices;
  const char* const variable = std::getenv(kPlanVariable);
  CString fault;
  auto plan = zebdev::ParseDevicePlan(variable == nullptr ? kUsualPlan : variable, &fault);
  if (!plan) {
    throw UsageError(std::string(kPlanVariable) +
                     " is no plan such as 6:8,10:4@/srv/clips: " + fault);
  }
  return std::move(*plan);
}

void RefuseMissingDirectory(const CString& directory) {
  if (!directory.empty() && os::IsDirectory(directory) == 0) {
    throw JobError("there is no directory '" + directory + "' with films; make it or leave it out");
  }
}

}  // namespace

LiveSession::DevicePlan::DevicePlan(const LiveOptions& options) {
  std::vector<zebdev::VirtualDevice> devices = PlanOf(options);
  RefuseMissingDirectory(options.device_directory);
  for (const zebdev::VirtualDevice& device : devices) RefuseMissingDirectory(device.m_directory);
  zebdev::SetDevicePlan(std::move(devices));
}

LiveSession::DevicePlan::~DevicePlan() {
  zebdev::SetDevicePlan({});
}

LiveSession::LiveSession(const LiveOptions& options, Console& console)
    : m_options(options), m_console(console), m_table(console), m_plan(options) {
  m_sink_before = SetErrorSink([this](const std::exception& error) {
    const std::lock_guard lock(m_mutex);
    m_told_by_library.emplace_back(error.what());
  });
  try {
    const bool has_database = !options.database.file.empty();
    if (has_database) m_use.emplace(options.database.file);
    m_library.emplace(
        [this](CTime day) {
          m_deleted_days.push_back(FormatDay(day));
          m_table.Wipe();
          if (!m_options.json) m_console.out << "deleted " << m_deleted_days.back() << std::endl;
        },
        LibraryArguments());
    if (has_database) m_database.emplace(options.database, *m_library);
    RegisterStatusMarks();
    OpenBoards();
    MakeCameras();
    OpenCameras();
  } catch (...) {
    Close();
    throw;
  }
}

LiveSession::~LiveSession() {
  Close();
}

CameraHost LiveSession::LibraryArguments() {
  return {&Notify, reinterpret_cast<std::uintptr_t>(this), m_options.device_directory};
}

// On the device's threads. Words carry addresses here.
// NOLINTBEGIN(performance-no-int-to-ptr)
DWORD LiveSession::Notify(DWORD code, std::uintptr_t user_data, std::uintptr_t first,
                          std::uintptr_t second) {
  auto& session = *reinterpret_cast<LiveSession*>(user_data);
  const auto find = [&](tag_ZEBCAMERAID id) -> LiveCamera* {
    const auto found = session.m_by_id.find({id.m_board, id.m_camera});
    return found == session.m_by_id.end() ? nullptr : found->second;
  };
  if (code == ZEBX_MSG_FRAME) {
    auto& frame = *reinterpret_cast<CVideoData*>(second);
    if (LiveCamera* const camera = find(*frame.GetCameraID())) camera->TakeFrame(frame);
  } else if (code == ZEBX_MSG_FACES && first > 0) {
    auto** const faces = reinterpret_cast<CMoxFace**>(second);
    if (LiveCamera* const camera = find(faces[0]->GetCameraID())) {
      camera->CountFaces(static_cast<DWORD>(first));
    }
    std::for_each_n(faces, first, [](CMoxFace* face) { delete face; });
    delete[] faces;
  }
  return 0;
}

// NOLINTEND(performance-no-int-to-ptr)

void LiveSession::OpenBoards() {
  const DWORD frame_size = m_options.frame_size.value_or(kUsualFrameSize);
  const DWORD speed = m_options.speed.value_or(kUsualSpeed);
  for (DWORD index = 0; index < zebxGetBoardNum(); ++index) {
    const auto board = static_cast<WORD>(index);
    if (zebxOpenBoard(board, frame_size, speed) != 0) {
      m_boards.push_back(board);
    } else {
      Report("board " + std::to_string(board) + " cannot be opened");
    }
  }
  if (m_boards.empty()) {
    throw JobError(
        "there is no device with cameras; --devices or ZEBX_DEVICES says which there are");
  }
}

void LiveSession::MakeCameras() {
  std::vector<LiveCamera::Identity> identities;
  for (const WORD board : m_boards) {
    const auto cameras = static_cast<WORD>(zebxGetCameraNum(board));
    for (WORD camera = 0; camera < cameras; ++camera) {
      const auto number = static_cast<DWORD>(identities.size() + 1);
      identities.push_back(
          {{board, camera}, number, NameOf(m_options, number), zebxGetBoardType(board)});
    }
  }
  const auto check = [&](const auto& numbered, const char* option) {
    if (!numbered.empty() && numbered.rbegin()->first > identities.size()) {
      throw UsageError(std::string(option) + " names camera " +
                       std::to_string(numbered.rbegin()->first) + ", but there are " +
                       std::to_string(identities.size()));
    }
  };
  check(m_options.names, "--name");
  check(m_options.masks, "--mask");
  m_grid = MakeWindowGrid(identities.size());
  for (const LiveCamera::Identity& who : identities) {
    auto camera = std::make_unique<LiveCamera>(who, SettingsOfCamera(who, m_cameras.size()));
    if (m_database) camera->SetRecorder(MakeRecorder(*camera));
    m_by_id[{who.id.m_board, who.id.m_camera}] = camera.get();
    m_cameras.push_back(std::move(camera));
  }
}

LiveCamera::Settings LiveSession::SettingsOfCamera(const LiveCamera::Identity& who,
                                                   std::size_t index) const {
  LiveCamera::Settings settings;
  settings.frame_size = tag_FRAMESIZE{m_options.frame_size.value_or(kUsualFrameSize)};
  settings.board_name = "Board " + std::to_string(who.id.m_board);
  settings.host_name = m_options.database.host;
  if (m_options.quality) settings.encoder.SetQuarity(*m_options.quality);
  if (m_options.sensitivity) settings.encoder.SetMoveSen(*m_options.sensitivity);
  settings.encoder.SetAlarmFrameNum(m_options.alarm_frames.value_or(1));
  const bool has_sound =
      zebxIsVoice(&who.id) != 0 || zebxIsAudioSupport(who.board_type, who.id.m_camera) != 0;
  settings.encoder.EnableAudio(has_sound && !m_options.is_silent ? 1 : 0);
  settings.masks = MasksOf(m_options, who.number);
  settings.window = m_grid.windows.at(index);
  return settings;
}

std::unique_ptr<CameraRecorder> LiveSession::MakeRecorder(LiveCamera& camera) {
  CameraRecorder::Plan plan;
  plan.records = m_options.records;
  plan.records_alarms = m_options.records_alarms;
  plan.minutes = m_options.minutes.value_or(0);
  const auto report = [this, &camera](const std::string& trouble) {
    Report("camera " + std::to_string(camera.Who().number) + ": " + trouble);
  };
  CameraRecorder::Door door;
  door.create = [this, &camera](RecordingKind kind) -> std::unique_ptr<CZebFile> {
    CZebFileInfo header = camera.MakeHeader();
    header.SetBeginTime(CTime::GetCurrentTime());
    header.SetEndTime(header.GetBeginTime());
    header.SetBeginTimeStamp(os::GetTickCount());
    // A file of this second is there: the next one has another name.
    if (ExistingRecording(*m_database, header, kind)) return nullptr;
    return CreateRecording(*m_database, header, kind);
  };
  door.replay = [&camera, report](CZebFile& file) {
    if (zebxGetAlarmData(&camera.Who().id, &file) == 0) report("there are no frames from before");
  };
  door.request_i_frame = [&camera] { camera.RequestIFrame(); };
  door.report = report;
  return std::make_unique<CameraRecorder>(plan, std::move(door));
}

void LiveSession::OpenCameras() {
  if (m_database) KeepUp();
  for (const auto& camera : m_cameras) {
    if (camera->Recorder() != nullptr) camera->Recorder()->Work();
    if (camera->Open() == 0) {
      Report("camera " + std::to_string(camera->Who().number) + " cannot be opened");
    }
  }
  if (zebxIsWork() == 0) throw JobError("no camera can be opened");
  zebxRefreshShow(&m_cameras.front()->Who().id);
  m_begin = m_end = SteadyClock::now();
}

void LiveSession::Run() {
  const auto elapsed = [&] { return SteadyClock::now() - m_begin; };
  while (!StopSignals::HasCome() &&
         !(m_options.seconds && elapsed() >= std::chrono::seconds(*m_options.seconds))) {
    PumpMessages();
    Work();
    if (!m_options.json && m_table.IsDue(elapsed())) m_table.Show(elapsed(), Statuses());
    std::this_thread::sleep_for(kTick);
  }
  m_end = SteadyClock::now();
}

void LiveSession::Work() {
  for (const auto& camera : m_cameras) {
    if (camera->Recorder() == nullptr) continue;
    camera->Recorder()->Work();
    camera->ShowState();
  }
  if (SteadyClock::now() >= m_next_look) KeepUp();
  ReportFromLibrary();
}

// What a recorder does once in a while: room on the disks, and surfaces that were lost.
void LiveSession::KeepUp() {
  m_next_look = SteadyClock::now() + kLookEvery;
  zebxCheckDrawSurface();
  if (!m_database || !IsWorkingDiskShort()) {
    m_is_short_of_room = false;
    return;
  }
  const std::string disk_before = m_database->WorkingDisk();
  try {
    MakeRoom();
    m_is_short_of_room = false;
  } catch (const JobError& error) {
    if (!std::exchange(m_is_short_of_room, true)) {
      Report(std::string(error.what()) + "; open files go on, and new ones have to wait");
    }
  }
  if (m_database->WorkingDisk() == disk_before) return;
  for (const auto& camera : m_cameras) camera->Recorder()->ChangeFile();
}

void LiveSession::Close() {
  if (std::exchange(m_is_closed, true)) return;
  m_table.Wipe();
  for (const auto& camera : m_cameras) {
    if (camera->Recorder() == nullptr) continue;
    camera->Recorder()->StopAlarms();
    camera->Recorder()->Work();
  }
  SaveSheet();
  for (const auto& camera : m_cameras) camera->Close();
  for (const auto& camera : m_cameras) {
    if (camera->Recorder() != nullptr) camera->Recorder()->Finish();
  }
  for (const WORD board : m_boards) zebxCloseBoard(board);
  ReportFromLibrary();
  SetErrorSink(m_sink_before);
}

void LiveSession::SaveSheet() {
  if (!m_options.sheet || m_cameras.empty() || zebxIsWork() == 0) return;
  std::vector<HWND> windows;
  for (const auto& camera : m_cameras) windows.push_back(camera->Window());
  const Existing existing = m_options.replaces_sheet ? Existing::kReplace : Existing::kRefuse;
  try {
    WritePng(*m_options.sheet, existing, PictureOfScreen(m_grid.screen, windows));
  } catch (const JobError& error) {
    Report(error.what());
  }
}

std::vector<CameraStatus> LiveSession::Statuses() const {
  std::vector<CameraStatus> statuses;
  for (const auto& camera : m_cameras) {
    statuses.push_back({camera->Who(), camera->GetFigures(), {}});
    if (camera->Recorder() != nullptr) statuses.back().recorder = camera->Recorder()->GetState();
  }
  return statuses;
}

std::string LiveSession::WorkingDisk() const {
  return m_database ? m_database->WorkingDisk() : std::string();
}

double LiveSession::Seconds() const {
  return std::chrono::duration<double>(m_end - m_begin).count();
}

void LiveSession::Report(const std::string& trouble) {
  m_table.Wipe();
  m_console.err << "zebtool: " << trouble << std::endl;
  m_troubles.push_back(trouble);
}

void LiveSession::ReportFromLibrary() {
  std::vector<std::string> told;
  {
    const std::lock_guard lock(m_mutex);
    told.swap(m_told_by_library);
  }
  for (const std::string& trouble : told) Report(trouble);
}

}  // namespace zebtool
