#include "recovery/salvage_output.h"

#include <limits>
#include <utility>

#include "platform/framework/file.h"
#include "platform/framework/file_system.h"
#include "record/zeb_frame_data.h"
#include "recovery/temporary_file.h"

namespace zebx {
namespace {

constexpr std::string_view kExtension = ".zebz";

}  // namespace

SalvageOutput::SalvageOutput(const CZebFileInfo& header, CString output, bool replace)
    : m_header(header), m_output(std::move(output)), m_replace(replace) {}

SalvageOutput::~SalvageOutput() {
  Abandon();
}

SalvageOutput::Answer SalvageOutput::Append(CZebFrameData& frame, CTime begin) {
  if (std::exchange(m_ends_file, false) && !CloseFile()) {
    return Answer::kFailed;
  }
  const DWORD stamp = frame.GetTimeStamp();
  // Twice, when the file in work is full.
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (m_file == nullptr) {
      if (!frame.IsIFrame()) return Answer::kWantsIFrame;
      if (!OpenFile(begin, stamp)) return Answer::kFailed;
    }
    m_file->SetEndTime(m_begin + (stamp - m_begin_stamp) / 1000);
    const int result = m_file->WritePreAlarmFrame(&frame);
    if (result == kFrameWritten) {
      m_last_stamp = stamp;
      ++m_files.back().frames;
      return Answer::kWritten;
    }
    if (result != kWriteFileFull) {
      m_failure = "cannot write '" + m_files.back().path + "': the disk is full or failing";
      return Answer::kFailed;
    }
    if (!CloseFile()) return Answer::kFailed;
  }
  return Answer::kFailed;
}

bool SalvageOutput::OpenFile(CTime begin, DWORD first_stamp) {
  const CString path = PathOf(m_files.size() + 1);
  if (!m_replace && CurrentFileSystem().LinkStatus(path)) {
    m_is_in_the_way = true;
    m_failure = "'" + path + "' exists already";
    return false;
  }
  try {
    const auto temporary = MakeTemporaryFile(path);
    if (!temporary) {
      m_failure = "too many temporary files are left beside '" + path + "'";
      return false;
    }
    m_files.push_back({*temporary});
  } catch (const CFileException& failure) {
    m_failure = failure.what();
    return false;
  }
  CZebFileInfo header = m_header;
  header.SetFileName(m_files.back().path);
  header.SetBeginTime(begin);
  header.SetGmt(m_header.GetGmt());
  header.SetBeginTimeStamp(first_stamp);
  m_begin = begin;
  m_last_stamp = m_begin_stamp = first_stamp;
  m_file = std::make_unique<CZebFile>();
  if (m_file->Open(&header, kZebFileWrite) != 0) return true;
  m_file.reset();
  m_failure = "cannot write '" + m_files.back().path + "'";
  return false;
}

bool SalvageOutput::CloseFile() {
  if (m_file == nullptr) return true;
  SalvagedFile& entry = m_files.back();
  entry.blocks = m_file->GetTotalBlock();
  // The times of a header have 32 bits, as a reader's arithmetic with stamps has.
  const DWORD duration_s = (m_last_stamp - m_begin_stamp) / 1000;
  if (duration_s > std::numeric_limits<DWORD>::max() - m_begin.GetTime()) {
    m_begin = CTime(std::numeric_limits<DWORD>::max() - duration_s);
    m_file->SetBeginTime(m_begin);
    m_file->SetGmt(m_header.GetGmt());
  }
  m_file->SetEndTime(m_begin + duration_s);
  try {
    const auto file = std::move(m_file);
    file->Close();
  } catch (const CFileException& failure) {
    m_failure = "cannot finish '" + entry.path + "': " + failure.what();
    return false;
  }
  CZebFileInfo written;
  if (written.Create(entry.path) != 0) entry.bytes = written.GetLength();
  return true;
}

bool SalvageOutput::GiveNames() {
  for (std::size_t i = 0; i < m_files.size(); ++i) {
    const CString path = PathOf(i + 1);
    const bool is_ours = !m_replace && MakeNewFile(path);
    if (!m_replace && !is_ours) {
      m_failure = "'" + path + "' has come into existence meanwhile; what was saved is in '" +
                  m_files[i].path + "'";
      return false;
    }
    try {
      CurrentFileSystem().Replace(path, m_files[i].path);
    } catch (const CFileException& failure) {
      m_failure = "cannot give '" + m_files[i].path + "' its name: " + failure.what();
      if (is_ours) CurrentFileSystem().DeleteFile(path, nullptr);
      return false;
    }
    m_files[i].path = path;
    m_files[i].finished = true;
  }
  return true;
}

void SalvageOutput::Abandon() {
  if (m_file == nullptr) return;
  try {
    std::exchange(m_file, nullptr)->Close();
  } catch (const CFileException&) {
    // The failure before this one is told.
  }
}

void SalvageOutput::Discard() {
  Abandon();
  for (const SalvagedFile& entry : m_files) {
    if (!entry.finished) CurrentFileSystem().DeleteFile(entry.path, nullptr);
  }
  m_files.clear();
}

CString SalvageOutput::PathOf(std::size_t number) const {
  if (number == 1) return m_output;
  const bool has_extension = m_output.ends_with(kExtension);
  const std::size_t stem = m_output.size() - (has_extension ? kExtension.size() : 0);
  return m_output.substr(0, stem) + '_' + std::to_string(number) + m_output.substr(stem);
}

}  // namespace zebx
