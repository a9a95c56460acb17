#include "storage/found_file.h"

#include <utility>

#include "image/image.h"
#include "platform/framework/directory_listing.h"
#include "platform/framework/file.h"
#include "record/mox_file.h"
#include "storage/disk_path.h"

namespace zebx {
namespace {

constexpr std::string_view kAlarmLog = "alarmlog.alg";
constexpr std::string_view kUserLog = "userlog.ulg";

}  // namespace

FoundFile::FoundFile(DirectoryHandle& directory, const CString& directory_path, const CString& name)
    : m_directory(directory), m_name(name), m_path(PathInside(directory_path, name)) {}

std::unique_ptr<CZebFileInfo> FoundFile::ReadRecording() const {
  CFile file;
  file.Attach(m_directory.Open(m_name, {.m_read = true, .m_brief = true}), CString());
  auto header = std::make_unique<CZebFileInfo>();
  return header->Create(file, m_path) != 0 ? std::move(header) : nullptr;
}

std::unique_ptr<CZebFileInfo> FoundFile::ReadPicture() const {
  CImage image;
  if (image.LoadImageAs(kImageBmp, m_path) == 0 || image.GetHostName().empty()) return nullptr;
  auto header = std::make_unique<CZebFileInfo>();
  header->SetHostName(image.GetHostName());
  header->SetBeginTime(CTime(image.GetTimeStamp()));
  header->SetBoardName(image.GetBoardName());
  header->SetCameraName(image.GetCameraName());
  header->SetGmt(image.GetGmt());
  header->SetFileName(m_path);
  header->SetLength(image.GetLength());
  header->SetHeight(image.GetImageHeight());
  header->SetWidth(image.GetImageWidth());
  return header;
}

std::unique_ptr<CZebFileInfo> FoundFile::ReadFaces() const {
  CMoxFile file;
  if (file.Open(m_path.c_str(), 0) == 0 || file.GetHostName().empty()) return nullptr;
  auto header = std::make_unique<CZebFileInfo>();
  header->SetHostName(file.GetHostName());
  header->SetBeginTime(CTime(file.GetStartTime()));
  header->SetEndTime(CTime(file.GetEndTime()));
  header->SetBoardName(file.GetBoardName());
  header->SetCameraName(file.GetCameraName());
  header->SetGmt(file.GetGmt());
  header->SetFileName(m_path);
  const auto status = CurrentFileSystem().Status(m_path);
  header->SetLength(static_cast<DWORD>(status ? status->m_length : 0));
  header->SetHeight(static_cast<DWORD>(file.GetImageSize().cy));
  header->SetWidth(static_cast<DWORD>(file.GetImageSize().cx));
  header->SetCameraID({file.GetBoardIndex(), file.GetCameraIndex()});
  return header;
}

std::unique_ptr<CZebFileInfo> FoundFile::ReadLog() const {
  const CString name = MakeLower(m_name);
  if (name != kAlarmLog && name != kUserLog) return nullptr;
  auto header = std::make_unique<CZebFileInfo>();
  header->SetFileName(m_path);
  const auto status = CurrentFileSystem().Status(m_path);
  header->SetBeginTime(CTime(status ? status->m_write_time : 0));
  return header;
}

}  // namespace zebx
