#include "tools/zebtool/recording_writer.h"

#include <algorithm>

#include "platform/framework/error_report.h"
#include "platform/framework/file_exception.h"
#include "record/zeb_frame_data.h"
#include "tools/zebtool/console.h"
#include "tools/zebtool/text.h"

namespace zebtool {
namespace {

constexpr std::string_view kExtension = ".zebz";

}  // namespace

RecordingWriter::RecordingWriter(const CZebFileInfo& header, const std::string& path, CTime begin,
                                 DWORD first_stamp)
    : m_header(header),
      m_path(path),
      m_last_stamp(first_stamp),
      m_clock(begin.GetTime(), first_stamp) {
  m_header.SetBeginTimeStamp(first_stamp);
  OpenFile(path);
}

RecordingWriter::~RecordingWriter() = default;

void RecordingWriter::OpenFile(const std::string& path) {
  m_header.SetFileName(path);
  m_header.SetBeginTime(CTime::GetCurrentTime());
  m_header.SetEndTime(m_header.GetBeginTime());
  m_file = std::make_unique<CZebFile>();
  if (m_file->Open(&m_header, kZebFileWrite) == 0) {
    throw JobError("cannot create '" + path + "'; is its directory there and may it be written?");
  }
  m_files.push_back({path, 0, 0, 0});
}

std::string RecordingWriter::FurtherPath() const {
  const bool has_extension = m_path.ends_with(kExtension);
  const std::size_t stem = m_path.size() - (has_extension ? kExtension.size() : 0);
  return m_path.substr(0, stem) + '_' + std::to_string(m_files.size() + 1) + m_path.substr(stem);
}

void RecordingWriter::StepClock(DWORD time_stamp) {
  m_elapsed_ms += static_cast<LONG>(time_stamp - m_last_stamp);
  m_last_stamp = time_stamp;
  m_clock.MoveTo(static_cast<ULONGLONG>(std::max<LONGLONG>(m_elapsed_ms, 0)));
}

bool RecordingWriter::Append(CZebFrameData& frame) {
  StepClock(frame.GetTimeStamp());
  int result = m_file->WriteOneFrame(&frame);
  if (result == kWriteFileFull) {
    CloseFile();
    OpenFile(FurtherPath());
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
    m_file->Close();
  } catch (const CFileException& failure) {
    throw JobError("cannot finish '" + file.path + "': " + failure.what());
  }
  CZebFileInfo written;
  if (written.Create(file.path) != 0) file.bytes = written.GetLength();
}

void RecordingWriter::Finish() {
  CloseFile();
}

}  // namespace zebtool
