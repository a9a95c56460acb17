#include "tools/zebtool/recordings/recording_writer.h"

#include <utility>

#include "platform/framework/error_report.h"
#include "platform/framework/file_exception.h"
#include "record/zeb_frame_data.h"
#include "tools/zebtool/console/console.h"
#include "tools/zebtool/console/text.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::string_view kExtension = ".zebz";

// Files side by side under names of the caller's choice.
class PathPlace final : public RecordingPlace {
 public:
  PathPlace(std::string path, Existing existing) : m_path(std::move(path)), m_existing(existing) {}

  std::unique_ptr<CZebFile> Create(CZebFileInfo& header, std::size_t number) override {
    m_output.emplace(PathOf(number), m_existing);
    header.SetFileName(m_output->TemporaryPath());
    auto file = std::make_unique<CZebFile>();
    if (file->Open(&header, kZebFileWrite) == 0) {
      throw JobError("cannot create '" + m_output->TemporaryPath() + "'");
    }
    return file;
  }

  void Keep() override { m_output->KeepUnfinished(); }

  std::string Close(std::unique_ptr<CZebFile> file, bool whole) override {
    const bool has_frames = file->GetTotalFrame() > 0;
    file->Close();
    if (!whole) return m_output->TemporaryPath();
    if (has_frames) m_output->Finish();
    return m_output->Path();
  }

 private:
  std::string PathOf(std::size_t number) const {
    if (number == 1) return m_path;
    const bool has_extension = m_path.ends_with(kExtension);
    const std::size_t stem = m_path.size() - (has_extension ? kExtension.size() : 0);
    return m_path.substr(0, stem) + '_' + std::to_string(number) + m_path.substr(stem);
  }

  std::string m_path;
  Existing m_existing;
  std::optional<OutputFile> m_output;  // the file in work
};

}  // namespace

RecordingPlace::~RecordingPlace() = default;

std::string RecordingPlace::Close(std::unique_ptr<CZebFile> file, bool) {
  std::string path = file->GetFileName();
  file->Close();
  return path;
}

bool RecordingPlace::IsFileDue(ULONGLONG) {
  return false;
}

RecordingWriter::RecordingWriter(const CZebFileInfo& header, std::unique_ptr<RecordingPlace> place,
                                 CTime begin, DWORD first_stamp)
    : m_header(header),
      m_place(std::move(place)),
      m_last_stamp(first_stamp),
      m_clock(begin.GetTime(), first_stamp) {
  m_header.SetBeginTimeStamp(first_stamp);
  OpenFile();
}

RecordingWriter::RecordingWriter(const CZebFileInfo& header, const std::string& path,
                                 Existing existing, CTime begin, DWORD first_stamp)
    : RecordingWriter(header, std::make_unique<PathPlace>(path, existing), begin, first_stamp) {}

RecordingWriter::~RecordingWriter() = default;

void RecordingWriter::OpenFile() {
  m_header.SetBeginTime(CTime::GetCurrentTime());
  m_header.SetEndTime(m_header.GetBeginTime());
  m_file = m_place->Create(m_header, m_files.size() + 1);
  m_files.push_back({m_header.GetFileName(), 0, 0, 0});
}

void RecordingWriter::StepClock(DWORD time_stamp) {
  m_elapsed_ms += static_cast<LONG>(time_stamp - m_last_stamp);
  m_last_stamp = time_stamp;
  m_clock.MoveTo(ElapsedMs());
}

bool RecordingWriter::Append(CZebFrameData& frame) {
  StepClock(frame.GetTimeStamp());
  if (m_file != nullptr && m_place->IsFileDue(ElapsedMs())) CloseFile();
  if (m_file == nullptr) OpenFile();
  int result = m_file->WriteOneFrame(&frame);
  if (result == kWriteFileFull) {
    CloseFile();
    OpenFile();
    result = m_file->WriteOneFrame(&frame);
  }
  if (result == kFrameDropped) return false;
  if (result != kFrameWritten) FailAtWriting();
  WrittenFile& file = m_files.back();
  // The writer takes this machine's hours with the first frame.
  if (file.frames == 0 && m_gmt) m_file->SetGmt(*m_gmt);
  if (++file.frames == 1) m_place->Keep();
  return true;
}

void RecordingWriter::FailAtWriting() {
  m_is_failing = true;
  const WrittenFile& file = m_files.back();
  throw JobError(
      "cannot write '" + file.path + "': the disk is full or failing" +
      (file.frames == 0 ? "" : "; 'zebtool salvage' makes a whole recording of what is there"));
}

void RecordingWriter::CloseFile() {
  WrittenFile& file = m_files.back();
  file.blocks = file.frames > 0 ? m_file->GetTotalBlock() : 0;
  try {
    file.path = m_place->Close(std::move(m_file), !m_is_failing);
  } catch (const CFileException& failure) {
    throw JobError("cannot finish '" + file.path +
                   "', which 'zebtool salvage' makes whole: " + failure.what());
  }
  CZebFileInfo written;
  if (written.Create(file.path) != 0) file.bytes = written.GetLength();
}

void RecordingWriter::Finish() {
  if (m_file != nullptr) CloseFile();
}

}  // namespace zebtool
