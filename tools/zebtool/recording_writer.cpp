#include "tools/zebtool/recording_writer.h"

#include <utility>

#include "platform/framework/error_report.h"
#include "platform/framework/file_exception.h"
#include "record/zeb_frame_data.h"
#include "tools/zebtool/console.h"
#include "tools/zebtool/text.h"

using namespace zebx;

namespace zebtool {
namespace {

constexpr std::string_view kExtension = ".zebz";

// Files side by side under names of the caller's choice.
class PathPlace final : public RecordingPlace {
 public:
  explicit PathPlace(std::string path) : m_path(std::move(path)) {}

  std::unique_ptr<CZebFile> Create(CZebFileInfo& header, std::size_t number) override {
    const std::string path = PathOf(number);
    header.SetFileName(path);
    auto file = std::make_unique<CZebFile>();
    if (file->Open(&header, kZebFileWrite) == 0) {
      throw JobError("cannot create '" + path + "'; is its directory there and may it be written?");
    }
    return file;
  }

 private:
  std::string PathOf(std::size_t number) const {
    if (number == 1) return m_path;
    const bool has_extension = m_path.ends_with(kExtension);
    const std::size_t stem = m_path.size() - (has_extension ? kExtension.size() : 0);
    return m_path.substr(0, stem) + '_' + std::to_string(number) + m_path.substr(stem);
  }

  std::string m_path;
};

}  // namespace

RecordingPlace::~RecordingPlace() = default;

void RecordingPlace::Close(std::unique_ptr<CZebFile> file) {
  file->Close();
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

RecordingWriter::RecordingWriter(const CZebFileInfo& header, const std::string& path, CTime begin,
                                 DWORD first_stamp)
    : RecordingWriter(header, std::make_unique<PathPlace>(path), begin, first_stamp) {}

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
  WrittenFile& file = m_files.back();
  if (result != kFrameWritten) {
    throw JobError("cannot write '" + file.path + "': the disk is full or failing; the " +
                   Plural(file.frames, "frame") + " before stay there");
  }
  // The writer takes this machine's hours with the first frame.
  if (file.frames == 0 && m_gmt) m_file->SetGmt(*m_gmt);
  ++file.frames;
  return true;
}

void RecordingWriter::CloseFile() {
  WrittenFile& file = m_files.back();
  file.blocks = file.frames > 0 ? m_file->GetTotalBlock() : 0;
  try {
    m_place->Close(std::move(m_file));
  } catch (const CFileException& failure) {
    throw JobError("cannot finish '" + file.path + "': " + failure.what());
  }
  CZebFileInfo written;
  if (written.Create(file.path) != 0) file.bytes = written.GetLength();
}

void RecordingWriter::Finish() {
  if (m_file != nullptr) CloseFile();
}

}  // namespace zebtool
